#include "Link.h"

#include "Album.h"
#include "Artist.h"
#include "Library.h"
#include "Track.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::string_view scheme = "spotify:";
constexpr int msPerSecond = 1000;
constexpr std::size_t imageDigits = 40;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// "m:ss" in milliseconds.
std::optional<int> parseOffset(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || colon > 5 || text.size() != colon + 3) {
        return std::nullopt;
    }
    int minutes = 0;
    int seconds = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (place == colon) {
            continue;
        }
        if (!isDigit(text[place])) {
            return std::nullopt;
        }
        int& number = place < colon ? minutes : seconds;
        number = number * 10 + (text[place] - '0');
    }
    const long long milliseconds = (minutes * 60LL + seconds) * msPerSecond;
    if (seconds > 59 || milliseconds > INT_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(milliseconds);
}

// A user's name or a query as it stands in a link: anything but separators and white space.
bool isName(std::string_view text) {
    return !text.empty() && std::none_of(text.begin(), text.end(), [](char character) {
        return character == ':' || character == '#' || character == '/' ||
               static_cast<unsigned char>(character) <= ' ' || character == 0x7f;
    });
}

bool isImage(std::string_view text) {
    return text.size() == imageDigits && std::all_of(text.begin(), text.end(), [](char character) {
               return isDigit(character) || (character >= 'a' && character <= 'f');
           });
}

// Takes the text up to the next ':' off the front.
std::string_view takePart(std::string_view& rest) {
    const std::size_t colon = rest.find(':');
    const std::string_view part = rest.substr(0, colon);
    rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    return part;
}

// What follows "spotify:user:".
sp_linktype userLinkType(std::string_view rest) {
    const bool more = rest.find(':') != std::string_view::npos;
    if (!isName(takePart(rest))) {
        return SP_LINKTYPE_INVALID;
    }
    if (!more) {
        return SP_LINKTYPE_PROFILE;
    }
    if (rest == "starred") {
        return SP_LINKTYPE_STARRED;
    }
    return takePart(rest) == "playlist" && Id::fromText(rest) ? SP_LINKTYPE_PLAYLIST
                                                              : SP_LINKTYPE_INVALID;
}

}  // namespace

std::optional<LinkTarget> LinkTarget::parse(std::string_view link) {
    LinkTarget target;
    std::string_view rest = link;
    if (rest.substr(0, scheme.size()) != scheme) {
        return std::nullopt;
    }
    if (const std::size_t hash = rest.find('#'); hash != std::string_view::npos) {
        const std::optional<int> offset = parseOffset(rest.substr(hash + 1));
        if (!offset) {
            return std::nullopt;
        }
        target.offsetMs = *offset;
        rest = rest.substr(0, hash);
        if (rest.substr(scheme.size()).substr(0, 6) != "track:") {
            return std::nullopt;
        }
    }
    target.text = rest;
    rest.remove_prefix(scheme.size());
    const std::string_view kind = takePart(rest);
    static constexpr std::array<std::pair<std::string_view, sp_linktype>, 3> objects = {
        {{"track", SP_LINKTYPE_TRACK},
         {"album", SP_LINKTYPE_ALBUM},
         {"artist", SP_LINKTYPE_ARTIST}}};
    for (const auto& [name, type] : objects) {
        if (kind == name) {
            const std::optional<Id> id = Id::fromText(rest);
            if (!id) {
                return std::nullopt;
            }
            target.type = type;
            target.id = *id;
            return target;
        }
    }
    if (kind == "user") {
        target.type = userLinkType(rest);
    } else if (kind == "search" && isName(rest)) {
        target.type = SP_LINKTYPE_SEARCH;
    } else if (kind == "image" && isImage(rest)) {
        target.type = SP_LINKTYPE_IMAGE;
    }
    return target.type == SP_LINKTYPE_INVALID ? std::nullopt : std::optional<LinkTarget>(target);
}

LinkTarget LinkTarget::track(const Id& id, int offsetMs) {
    LinkTarget target;
    target.type = SP_LINKTYPE_TRACK;
    target.id = id;
    target.offsetMs = std::max(0, offsetMs);
    target.text = std::string(scheme) + "track:" + id.text();
    return target;
}

std::string LinkTarget::asString() const {
    const int seconds = offsetMs / msPerSecond;
    if (seconds == 0) {
        return text;
    }
    char offset[24];
    std::snprintf(offset, sizeof(offset), "#%d:%02d", seconds / 60, seconds % 60);
    return text + offset;
}

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
