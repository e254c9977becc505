#ifndef SONOLET_TRACK_H
#define SONOLET_TRACK_H

#include "Handle.h"
#include "Object.h"

// A track of the catalogue, as script sees it. Made by Factory.
class Track final : public Object {
public:
    // The constructor object of the root.
    Track();
    Track(sp_session* librarySession,
          sp_track* track,
          const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: a new wrapper for the track that a link names.
    static void create(jspp::function_context& context);

    // Borrowed. Throws when the wrapper has none.
    sp_track* getHandle() const { return handle.get(); }

private:
    void album(jspp::function_context& context) const;
    void index(jspp::function_context& context) const;
    void isPlaceholder(jspp::function_context& context) const;
    void popularity(jspp::function_context& context) const;
    void name(jspp::function_context& context) const;
    void isLocal(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void numArtists(jspp::function_context& context) const;
    void setStarred(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void disc(jspp::function_context& context) const;
    void error(jspp::function_context& context) const;
    void duration(jspp::function_context& context) const;
    void getAvailability(jspp::function_context& context) const;
    void isStarred(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_track> handle;
};

#endif
