#include "queries/Search.h"

#include "lists/Playlist.h"
#include "objects/Album.h"
#include "objects/Artist.h"
#include "objects/Track.h"

#include <utility>

namespace sonolet::service {

Search::Search(SearchRequest searchRequest,
               std::shared_ptr<Playlists> sessionPlaylists,
               Callback* completion,
               void* completionData)
    : QueryFor(completion, completionData), request(std::move(searchRequest)),
      lists(std::move(sessionPlaylists)) {}

Search::~Search() = default;

sp_error Search::find(Answers& answers) {
    for (const Page& page : {request.tracks, request.albums, request.artists, request.playlists}) {
        if (page.offset < 0 || page.count < 0) {
            return SP_ERROR_INVALID_INDATA;
        }
    }
    found = answers.search(request);
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
    for (FoundPlaylist& list : found.playlists.lists) {
        playlists.push_back(
            {lists->playlist(list.link), std::move(list.name),
             LinkTarget::playlist(list.owner, list.link).asString(),
             list.image.empty() ? std::string() : "spotify:image:" + hex(list.image)});
    }
    totals = {found.tracks.total, found.albums.total, found.artists.total, found.playlists.total};
    meant = std::move(found.didYouMean);
    found = SearchAnswer();
}

const Search::FoundList* Search::playlist(int index) const {
    return index < 0 || index >= playlistCount() ? nullptr
                                                 : &playlists[static_cast<std::size_t>(index)];
}

}  // namespace sonolet::service
