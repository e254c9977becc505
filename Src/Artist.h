#ifndef SONOLET_ARTIST_H
#define SONOLET_ARTIST_H

#include "Wrapper.h"

// An artist of the catalogue, as script sees it. Made by Factory. Script thread; each member asks
// libspotify anew.
class Artist final : public Wrapper<sp_artist> {
public:
    // The constructor object of the root.
    Artist();
    Artist(sp_session* librarySession,
           sp_artist* artist,
           const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: a new wrapper for the artist that a link names. Throws when the text is no link of an
    // artist.
    static void create(jspp::function_context& context);
};

#endif
