#include "queries/Toplistbrowse.h"

#include "objects/Album.h"
#include "objects/Artist.h"
#include "objects/Track.h"

#include <utility>

namespace sonolet::service {

namespace {

bool isCountry(int region) {
    const auto isLetter = [](int code) { return code >= 'A' && code <= 'Z'; };
    return isLetter(region >> 8) && isLetter(region & 0xff);
}

}  // namespace

Toplistbrowse::Toplistbrowse(sp_toplisttype listType,
                             int listRegion,
                             std::string listUser,
                             std::string homeCountry,
                             Callback* completion,
                             void* completionData)
    : QueryFor(completion, completionData), type(listType), region(listRegion),
      user(std::move(listUser)), home(std::move(homeCountry)) {}

Toplistbrowse::~Toplistbrowse() = default;

sp_error Toplistbrowse::find(Answers& answers) {
    ToplistScope scope;
    scope.home = home;
    if (region == SP_TOPLIST_REGION_USER) {
        if (user.empty()) {
            return SP_ERROR_PERMISSION_DENIED;
        }
        scope.user = normalised(user);
        if (!answers.hasUser(*scope.user)) {
            return SP_ERROR_NO_SUCH_USER;
        }
    } else if (isCountry(region)) {
        scope.country =
            std::string{static_cast<char>(region >> 8), static_cast<char>(region & 0xff)};
    } else if (region != SP_TOPLIST_REGION_EVERYWHERE) {
        return SP_ERROR_INVALID_INDATA;
    }
    if (type < SP_TOPLIST_TYPE_ARTISTS || type > SP_TOPLIST_TYPE_TRACKS) {
        return SP_ERROR_INVALID_INDATA;
    }
    found = answers.top(type, scope);
    return SP_ERROR_OK;
}

void Toplistbrowse::take(Library& library) {
    for (const Id& id : std::exchange(found, {})) {
        if (type == SP_TOPLIST_TYPE_ARTISTS) {
            artists.push_back(library.artist(id));
        } else if (type == SP_TOPLIST_TYPE_ALBUMS) {
            albums.push_back(library.album(id));
        } else {
            tracks.push_back(library.track(id));
        }
    }
}

}  // namespace sonolet::service
