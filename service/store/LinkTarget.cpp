#include "store/LinkTarget.h"

#include "store/GlibText.h"

#include <glib.h>

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
        if (!g_ascii_isdigit(text[place])) {
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
               return g_ascii_isdigit(character) || (character >= 'a' && character <= 'f');
           });
}

// Takes the text up to the next ':' off the front.
std::string_view takePart(std::string_view& rest) {
    const std::size_t colon = rest.find(':');
    const std::string_view part = rest.substr(0, colon);
    rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    return part;
}

// A name in a link: what would end it there is written as "%" and two digits.
std::string written(std::string_view name) {
    return GlibText(g_uri_escape_string(std::string(name).c_str(), nullptr, TRUE)).get();
}

std::string unwritten(std::string_view name) {
    const GlibText plain(g_uri_unescape_segment(name.data(), name.data() + name.size(), nullptr));
    return normalised(plain == nullptr ? name : plain.get());
}

// What follows "spotify:user:".
void parseUserLink(std::string_view rest, LinkTarget& target) {
    const bool more = rest.find(':') != std::string_view::npos;
    const std::string_view name = takePart(rest);
    if (!isName(name)) {
        return;
    }
    target.user = unwritten(name);
    if (!more) {
        target.type = SP_LINKTYPE_PROFILE;
    } else if (rest == "starred") {
        target.type = SP_LINKTYPE_STARRED;
    } else if (takePart(rest) == "playlist") {
        if (const std::optional<Id> id = Id::fromText(rest)) {
            target.id = *id;
            target.type = SP_LINKTYPE_PLAYLIST;
        }
    }
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
        parseUserLink(rest, target);
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

LinkTarget LinkTarget::playlist(std::string_view user, const Id& id) {
    LinkTarget target;
    target.type = SP_LINKTYPE_PLAYLIST;
    target.id = id;
    target.user = user;
    target.text = std::string(scheme) + "user:" + written(user) + ":playlist:" + id.text();
    return target;
}

LinkTarget LinkTarget::starred(std::string_view user) {
    LinkTarget target;
    target.type = SP_LINKTYPE_STARRED;
    target.user = user;
    target.text = std::string(scheme) + "user:" + written(user) + ":starred";
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

}  // namespace sonolet::service
