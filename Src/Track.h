#ifndef SONOLET_TRACK_H
#define SONOLET_TRACK_H

#include "Wrapper.h"

// A track of the catalogue, as script sees it. Made by Factory. Script thread; each member asks
// libspotify anew.
class Track final : public Wrapper<sp_track> {
public:
    // The constructor object of the root.
    Track();
    Track(sp_session* librarySession,
          sp_track* track,
          const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: a new wrapper for the track that a link names. Throws when the text is no link of a
    // track.
    static void create(jspp::function_context& context);

private:
    // (on): nothing; the star is seen through every wrapper of the track.
    void setStarred(jspp::function_context& context) const;
};

#endif
