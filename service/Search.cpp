#include "Search.h"

#include "Album.h"
#include "Artist.h"
#include "Track.h"

#include <utility>

namespace sonolet::service {

Search::Search(SearchRequest searchRequest, Callback* completion, void* completionData)
    : QueryFor(completion, completionData), request(std::move(searchRequest)) {}

Search::~Search() = default;

sp_error Search::find(QueryStore& store) {
    for (const Page& page : {request.tracks, request.albums, request.artists}) {
        if (page.offset < 0 || page.count < 0) {
            return SP_ERROR_INVALID_INDATA;
        }
    }
    found = store.index.search(request);
    return SP_ERROR_OK;
}

void Search::take(Library& library) {
    for (const Id& id : found.tracks.ids) {
        tracks.push_back(library.track(id));
    }
    for (const Id& id : found.albums.ids) {
        albums.push_back(library.album(id));
    }
    for (const Id& id : found.artists.ids) {
        artists.push_back(library.artist(id));
    }
    totals = {found.tracks.total, found.albums.total, found.artists.total};
    meant = std::move(found.didYouMean);
    found = SearchAnswer();
}

}  // namespace sonolet::service
