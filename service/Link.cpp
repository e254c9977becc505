#include "Link.h"

#include "Album.h"
#include "Artist.h"
#include "Library.h"
#include "Track.h"

namespace sonolet::service {

Link::~Link() = default;

bool Link::turnTo(const std::shared_ptr<Library>& library, sp_linktype type) {
    if (target.type != type || library == nullptr) {
        return false;
    }
    if (resolvedIn != library) {
        trackHandle = {};
        albumHandle = {};
        artistHandle = {};
        resolvedIn = library;
    }
    return true;
}

sp_track* Link::track(const std::shared_ptr<Library>& library) {
    if (!turnTo(library, SP_LINKTYPE_TRACK)) {
        return nullptr;
    }
    if (!trackHandle) {
        trackHandle = library->track(target.id);
    }
    return trackHandle.get();
}

sp_album* Link::album(const std::shared_ptr<Library>& library) {
    if (!turnTo(library, SP_LINKTYPE_ALBUM)) {
        return nullptr;
    }
    if (!albumHandle) {
        albumHandle = library->album(target.id);
    }
    return albumHandle.get();
}

sp_artist* Link::artist(const std::shared_ptr<Library>& library) {
    if (!turnTo(library, SP_LINKTYPE_ARTIST)) {
        return nullptr;
    }
    if (!artistHandle) {
        artistHandle = library->artist(target.id);
    }
    return artistHandle.get();
}

}  // namespace sonolet::service
