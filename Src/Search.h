#ifndef SONOLET_SEARCH_H
#define SONOLET_SEARCH_H

#include "Handle.h"
#include "Object.h"

// A search of the catalogue, as script sees it. Made by Factory.
class Search final : public Object {
public:
    // The constructor object of the root.
    Search();
    Search(sp_session* librarySession,
           sp_search* search,
           const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: starts a search, and calls a function with its result.
    static void create(jspp::function_context& context);

private:
    void album(jspp::function_context& context) const;
    void totalAlbums(jspp::function_context& context) const;
    void numAlbums(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void track(jspp::function_context& context) const;
    void numArtists(jspp::function_context& context) const;
    void numTracks(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void didYouMean(jspp::function_context& context) const;
    void totalArtists(jspp::function_context& context) const;
    void totalTracks(jspp::function_context& context) const;
    void totalPlaylists(jspp::function_context& context) const;
    void error(jspp::function_context& context) const;
    void query(jspp::function_context& context) const;
    void numPlaylists(jspp::function_context& context) const;
    void playlistName(jspp::function_context& context) const;
    void playlistUri(jspp::function_context& context) const;
    void playlistImageUri(jspp::function_context& context) const;
    void playlist(jspp::function_context& context) const;
    void release(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_search> handle;
};

#endif
