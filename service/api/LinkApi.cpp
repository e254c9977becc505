#include "api/Api.h"
#include "objects/Link.h"

#include <utility>

using namespace sonolet::service;

sp_link* sp_link_create_from_string(const char* link) {
    return ask<sp_link*>(link, nullptr, [&](const char&) -> sp_link* {
        std::optional<LinkTarget> target = LinkTarget::parse(link);
        return target ? Link::to(std::move(*target)).detach() : nullptr;
    });
}

// NOLINTNEXTLINE(readability-identifier-naming): as declared
sp_link* sp_link_create_from_track(sp_track* track, int offset_ms) {
    return ask<sp_link*>(track, nullptr, [&](Track& from) {
        return Link::to(LinkTarget::track(from.id(), offset_ms)).detach();
    });
}

int sp_link_as_string(sp_link* link, char* buffer, int size) {
    return ask(link, -1, [&](Link& from) {
        return copyText(from.where().asString(), buffer, size < 0 ? 0 : size);
    });
}

sp_linktype sp_link_type(sp_link* link) {
    return link == nullptr ? SP_LINKTYPE_INVALID : link->where().type;
}

sp_track* sp_link_as_track(sp_link* link) {
    return ask<sp_track*>(link, nullptr, [](Link& from) { return from.track(currentLibrary()); });
}

sp_album* sp_link_as_album(sp_link* link) {
    return ask<sp_album*>(link, nullptr, [](Link& from) { return from.album(currentLibrary()); });
}

sp_artist* sp_link_as_artist(sp_link* link) {
    return ask<sp_artist*>(link, nullptr, [](Link& from) { return from.artist(currentLibrary()); });
}

sp_error sp_link_add_ref(sp_link* link) {
    return addRef(link);
}

sp_error sp_link_release(sp_link* link) {
    return release(link);
}
