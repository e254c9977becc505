#ifndef SONOLET_TOPLISTBROWSE_H
#define SONOLET_TOPLISTBROWSE_H

#include "Handle.h"
#include "Object.h"

// What is played most, everywhere, in a country or by a user. Made by Factory.
class Toplistbrowse final : public Object {
public:
    // The constructor object of the root.
    Toplistbrowse();
    Toplistbrowse(sp_session* librarySession,
                  sp_toplistbrowse* browse,
                  const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: asks for a top list, and calls a function with it.
    static void create(jspp::function_context& context);

private:
    void isLoaded(jspp::function_context& context) const;
    void error(jspp::function_context& context) const;
    void numArtists(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void numAlbums(jspp::function_context& context) const;
    void album(jspp::function_context& context) const;
    void numTracks(jspp::function_context& context) const;
    void track(jspp::function_context& context) const;
    void release(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_toplistbrowse> handle;
};

#endif
