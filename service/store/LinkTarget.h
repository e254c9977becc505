#ifndef SONOLET_SERVICE_STORE_LINK_TARGET_H
#define SONOLET_SERVICE_STORE_LINK_TARGET_H

#include "store/Id.h"

#include "libspotify/api.h"

#include <optional>
#include <string>
#include <string_view>

namespace sonolet::service {

// What a link says. Only links that mean something exist.
//
// A link is "spotify:" and parts with ":" between them; in a name "%" and two digits are a byte.
// There is one canonical text for each meaning, whichever of the accepted spellings it came from.
struct LinkTarget {
    sp_linktype type = SP_LINKTYPE_INVALID;
    Id id;             // of tracks, albums, artists and playlists
    std::string user;  // of playlists and starred lists: the owner's canonical name
    int offsetMs = 0;  // of tracks; a link tells whole seconds
    std::string text;  // the canonical text, without the offset

    // Any bytes; nothing for what is no link.
    static std::optional<LinkTarget> parse(std::string_view link);
    // The three make what parse() makes of their texts, but that `offsetMs` keeps its part of a
    // second; less than 0 is 0.
    static LinkTarget track(const Id& id, int offsetMs);
    static LinkTarget playlist(std::string_view user, const Id& id);
    static LinkTarget starred(std::string_view user);

    // The canonical text, with the offset if there is one.
    std::string asString() const;
};

}  // namespace sonolet::service

#endif
