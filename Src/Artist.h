#ifndef SONOLET_ARTIST_H
#define SONOLET_ARTIST_H

#include "Handle.h"
#include "Object.h"

// An artist of the catalogue, as script sees it. Made by Factory.
class Artist final : public Object {
public:
    // The constructor object of the root.
    Artist();
    Artist(sp_session* librarySession,
           sp_artist* artist,
           const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: a new wrapper for the artist that a link names.
    static void create(jspp::function_context& context);

    // Borrowed. Throws when the wrapper has none.
    sp_artist* getHandle() const { return handle.get(); }

private:
    void name(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void portrait(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_artist> handle;
};

#endif
