#ifndef SONOLET_SERVICE_QUERIES_SEARCH_H
#define SONOLET_SERVICE_QUERIES_SEARCH_H

#include "lists/Playlists.h"
#include "queries/Query.h"

#include <memory>
#include <string>
#include <vector>

namespace sonolet::service {

// A search for words. It finds by the worker's connection and shows handles of the library; what
// was wrong with the question is an error, finding nothing is none.
//
// Threads: as for Query. Ownership: the handles and texts that it hands out are its own and live as
// long as it does.
class Search : public QueryFor<sp_search> {
public:
    // The playlists make handles of those that are found.
    Search(SearchRequest searchRequest,
           std::shared_ptr<Playlists> sessionPlaylists,
           Callback* completion,
           void* completionData);
    ~Search() override;

    // SP_ERROR_INVALID_INDATA for a page with a negative number.
    sp_error find(Answers& answers) override;

    // As it was typed.
    const std::string& query() const { return request.text; }

    // Empty, 0 or NULL until it is loaded. Indexes outside give NULL. Counts and indexes are of the
    // page that was asked for.
    const std::string& didYouMean() const { return meant; }
    int trackCount() const { return size(tracks); }
    int albumCount() const { return size(albums); }
    int artistCount() const { return size(artists); }
    sp_track* track(int index) const { return at(tracks, index); }
    sp_album* album(int index) const { return at(albums, index); }
    sp_artist* artist(int index) const { return at(artists, index); }
    // A playlist as it was found; its handle says what it is now.
    struct FoundList {
        Ref<sp_playlist> handle;
        std::string name;
        std::string uri;
        // Empty: it has none.
        std::string imageUri;
    };
    int playlistCount() const { return size(playlists); }
    // NULL for an index outside; borrowed, as long as the search lives.
    const FoundList* playlist(int index) const;
    // On all pages, whatever page was asked for.
    int totalTracks() const { return totals.tracks; }
    int totalAlbums() const { return totals.albums; }
    int totalArtists() const { return totals.artists; }
    int totalPlaylists() const { return totals.playlists; }

protected:
    void take(Library& library) override;

private:
    // Constant after construction.
    const SearchRequest request;
    const std::shared_ptr<Playlists> lists;

    // The worker's until it is taken.
    SearchAnswer found;

    std::vector<Ref<sp_track>> tracks;
    std::vector<Ref<sp_album>> albums;
    std::vector<Ref<sp_artist>> artists;
    std::vector<FoundList> playlists;
    struct {
        int tracks = 0;
        int albums = 0;
        int artists = 0;
        int playlists = 0;
    } totals;
    std::string meant;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_search final : sonolet::service::Search {  // NOLINT(readability-identifier-naming)
    using Search::Search;
};

#endif
