#include "queries/Albumbrowse.h"

#include "objects/Album.h"
#include "objects/Track.h"

#include <utility>

namespace sonolet::service {

Albumbrowse::Albumbrowse(Ref<sp_album> browsedAlbum, Callback* completion, void* completionData)
    : QueryFor(completion, completionData), browsed(std::move(browsedAlbum)), link(browsed->id()) {}

Albumbrowse::~Albumbrowse() = default;

sp_error Albumbrowse::find(Answers& answers) {
    found = answers.album(link);
    return found ? SP_ERROR_OK : SP_ERROR_OTHER_PERMANENT;
}

void Albumbrowse::take(Library& library) {
    artistHandle = library.artist(found->artist);
    for (const Id& id : found->tracks) {
        tracks.push_back(library.track(id));
    }
    copyrights = std::move(found->copyrights);
    found.reset();
}

const char* Albumbrowse::copyright(int index) const {
    return index < 0 || index >= copyrightCount() ? nullptr : copyrights[index].c_str();
}

}  // namespace sonolet::service
