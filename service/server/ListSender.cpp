#include "server/ListSender.h"

#include "accounts/ListItems.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace sonolet::service {

namespace {

// As many ids as every server takes in one address.
constexpr std::size_t idsAtOnce = 50;

}  // namespace

void ListSender::about(const PlaylistItem& theirs, const ServerStore::Base& agreed) {
    Subsonic::Parameters changes = {{"playlistId", theirs.id}};
    if (agreed.name != theirs.name) {
        changes.emplace_back("name", agreed.name);
    }
    if (agreed.comment != theirs.comment) {
        changes.emplace_back("comment", agreed.comment);
    }
    if (agreed.isPublic != theirs.isPublic) {
        changes.emplace_back("public", agreed.isPublic ? "true" : "false");
    }
    if (changes.size() == 1) {
        return;
    }
    try {
        server.call("updatePlaylist", changes);
    } catch (const ServerError& error) {
        if (error.code() != 0 || !agreed.songs.empty()) {
            throw;
        }
        // A server that fails with a list that never had a song: it takes one that has none now.
        server.call("createPlaylist", {changes.front()});
        server.call("updatePlaylist", changes);
    }
}

// Removing and adding are never in one request: servers differ in which they do first.
void ListSender::songs(const std::string& id, const Ids& from, const Ids& to) {
    ItemNumbers numbers;
    const std::vector<std::size_t> before = numbers.of(from);
    const std::vector<std::size_t> after = numbers.of(to);
    const std::set<std::size_t> wanted(after.begin(), after.end());
    std::vector<std::string> gone;
    std::vector<std::size_t> stay;
    for (std::size_t place = before.size(); place-- > 0;) {
        if (wanted.count(before[place]) == 0) {
            gone.push_back(std::to_string(place));  // the last first: others keep their places
        } else {
            stay.push_back(before[place]);
        }
    }
    std::reverse(stay.begin(), stay.end());
    std::vector<std::string> come = idsOf(to);
    const Subsonic::Parameters list = {{"playlistId", id}};
    const bool isOrderSame =
        stay.size() <= after.size() && std::equal(stay.begin(), stay.end(), after.begin());
    if (isOrderSame) {
        inParts("updatePlaylist", list, "songIndexToRemove", gone);
        come.erase(come.begin(), come.begin() + static_cast<std::ptrdiff_t>(stay.size()));
    } else {
        const auto end =
            come.begin() + static_cast<std::ptrdiff_t>(std::min(come.size(), idsAtOnce));
        inParts("createPlaylist", list, "songId", {come.begin(), end});
        come.erase(come.begin(), end);
    }
    inParts("updatePlaylist", list, "songIdToAdd", come);
}

void ListSender::stars(const Ids& from, const Ids& to) {
    inParts("star", {}, "id", idsOf(itemsWithout(to, from)));
    inParts("unstar", {}, "id", idsOf(itemsWithout(from, to)));
}

void ListSender::inParts(const char* method,
                         const Subsonic::Parameters& first,
                         const char* name,
                         const std::vector<std::string>& values) {
    for (std::size_t done = 0; done < values.size(); done += idsAtOnce) {
        Subsonic::Parameters parameters = first;
        for (std::size_t place = done; place < std::min(done + idsAtOnce, values.size()); ++place) {
            parameters.emplace_back(name, values[place]);
        }
        server.call(method, parameters);
    }
}

std::vector<std::string> ListSender::idsOf(const Ids& tracks) {
    std::vector<std::string> ids;
    ids.reserve(tracks.size());
    for (const Id& track : tracks) {
        ids.push_back(links.serverId(SP_LINKTYPE_TRACK, track));
    }
    return ids;
}

}  // namespace sonolet::service
