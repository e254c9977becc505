#ifndef SONOLET_ARTISTBROWSE_H
#define SONOLET_ARTISTBROWSE_H

#include "Handle.h"
#include "Object.h"

// What is known of an artist: albums and most played tracks. Made by Factory.
class Artistbrowse final : public Object {
public:
    // The constructor object of the root.
    Artistbrowse();
    Artistbrowse(sp_session* librarySession,
                 sp_artistbrowse* browse,
                 const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: browses an artist, and calls a function with the result.
    static void create(jspp::function_context& context);

private:
    void album(jspp::function_context& context) const;
    void numAlbums(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void error(jspp::function_context& context) const;
    void numTophitTracks(jspp::function_context& context) const;
    void tophitTrack(jspp::function_context& context) const;
    void release(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_artistbrowse> handle;
};

#endif
