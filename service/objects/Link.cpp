#include "objects/Link.h"

#include "objects/Album.h"
#include "objects/Artist.h"
#include "objects/Library.h"
#include "objects/Shelf.h"
#include "objects/Track.h"

#include <string>

namespace sonolet::service {

namespace {

// Never freed: links outlive sessions.
Shelf<std::string, sp_link>& shelf() {
    static Shelf<std::string, sp_link>& links = *new Shelf<std::string, sp_link>;
    return links;
}

}  // namespace

Ref<sp_link> Link::to(LinkTarget target) {
    const std::string key = target.text + '#' + std::to_string(target.offsetMs);
    return shelf().get(key, [&] { return new sp_link(std::move(target), key); });
}

Link::~Link() {
    shelf().forget(key, this);
}

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
