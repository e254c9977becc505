#ifndef SONOLET_SEARCH_H
#define SONOLET_SEARCH_H

#include "Wrapper.h"

// A search of the catalogue, as script sees it: what was found, as far as it was asked for, and how
// much there is. Made by Factory. Script thread; empty until libspotify has answered.
class Search final : public Wrapper<sp_search> {
public:
    // The constructor object of the root.
    Search();
    Search(sp_session* librarySession,
           sp_search* search,
           const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: starts a search, and calls a function with its result. (text, eight numbers: from
    // where and how many tracks, albums, artists, playlists, type, function). Answers the search at
    // once, not loaded yet. Throws when libspotify refuses.
    static void create(jspp::function_context& context);
};

#endif
