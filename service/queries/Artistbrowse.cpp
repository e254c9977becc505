#include "queries/Artistbrowse.h"

#include "objects/Album.h"
#include "objects/Track.h"

#include <utility>

namespace sonolet::service {

Artistbrowse::Artistbrowse(Ref<sp_artist> browsedArtist,
                           sp_artistbrowse_type browseType,
                           Callback* completion,
                           void* completionData)
    : QueryFor(completion, completionData), browsed(std::move(browsedArtist)), link(browsed->id()),
      type(browseType) {}

Artistbrowse::~Artistbrowse() = default;

sp_error Artistbrowse::find(Answers& answers) {
    if (type < SP_ARTISTBROWSE_FULL || type > SP_ARTISTBROWSE_NO_ALBUMS) {
        return SP_ERROR_INVALID_INDATA;
    }
    found =
        answers.artist(link, type != SP_ARTISTBROWSE_NO_ALBUMS, type != SP_ARTISTBROWSE_NO_TRACKS);
    return found ? SP_ERROR_OK : SP_ERROR_OTHER_PERMANENT;
}

void Artistbrowse::take(Library& library) {
    for (const Id& id : found->albums) {
        albums.push_back(library.album(id));
    }
    for (const Id& id : found->topTracks) {
        topTracks.push_back(library.track(id));
    }
    found.reset();
}

}  // namespace sonolet::service
