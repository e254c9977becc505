#include "server/ListSync.h"

#include "accounts/ListItems.h"

#include <algorithm>
#include <utility>

namespace sonolet::service {

namespace {

// The version of a list of which only a part may have been sent.
constexpr char unfinished[] = "unfinished";

constexpr int mostRefusals = 3;

// Some name a list of someone else "[owner] name".
std::string nameOf(const PlaylistItem& item, bool isOwn) {
    const std::string prefix = '[' + item.owner + "] ";
    return !isOwn && item.name.compare(0, prefix.size(), prefix) == 0
               ? item.name.substr(prefix.size())
               : item.name;
}

}  // namespace

ListSync::ListSync(Subsonic& client,
                   const std::string& storeFile,
                   const Kept& kept,
                   Account account,
                   Log logLine,
                   const StopFlag& stopFlag)
    : server(client), user(std::move(account)), log(std::move(logLine)), stop(stopFlag),
      lockFile(storeFile + ".lock"), accounts(kept.accounts, Accounts::First::nobody),
      lists(accounts.connection()), links(storeFile), sender(client, links),
      writer(kept.catalogue, links),
      container(lists.ofAccount(user.id, ListKind::container).value()),
      starred(lists.ofAccount(user.id, ListKind::starred).value()) {}

bool ListSync::hasChanges() {
    return !refusals.empty() || lists.log().newest() != seen;
}

void ListSync::run(FileLock::Wait wait) {
    const FileLock lock(lockFile, wait);
    if (!lock.isHeld()) {
        return;
    }
    const std::int64_t newest = lists.log().newest();
    agreePlaylists();
    agreeStars();
    seen = newest;
}

void ListSync::sayOnce(const std::string& line) {
    if (said.insert(line).second) {
        log(line);
    }
}

template <typename Action>
void ListSync::orRefused(const Id& list, Action action) {
    try {
        action();
        refusals.erase(list);
    } catch (const ServerError& error) {
        if (error.code() < 0) {
            throw;  // it has not come to that
        }
        sayOnce(std::string("A list is not changed: ") + error.what());
        ++refusals[list];
    }
}

bool ListSync::isGivenUp(const Id& list) {
    const auto refused = refusals.find(list);
    return refused != refusals.end() && refused->second >= mostRefusals;
}

// ---- Playlists ----

bool ListSync::isOwn(const PlaylistItem& item) const {
    return item.owner.empty() || normalised(item.owner) == user.name;
}

ListSync::Base ListSync::stateOf(const ListRow& row) {
    return {row.name, row.description, row.published, {}, itemsOf(lists.entries(row))};
}

bool ListSync::isChanged(const ListRow& row, const Base& base) {
    return row.name != base.name || row.description != base.comment ||
           row.published != base.isPublic || itemsOf(lists.entries(row)) != base.songs;
}

ListSync::Ids ListSync::linksOf(const std::vector<SongItem>& songs) {
    Ids ids;
    ids.reserve(songs.size());
    for (const SongItem& song : songs) {
        ids.push_back(links.link(SP_LINKTYPE_TRACK, song.id));
    }
    return ids;
}

void ListSync::agreePlaylists() {
    const std::vector<PlaylistItem> all =
        readPlaylists(server.call("getPlaylists")["playlists"]["playlist"]);
    std::set<Id> there;
    std::size_t number = 0;
    ++turn;
    for (const PlaylistItem& item : all) {
        if (stop) {
            return;
        }
        if (!isOwn(item) && !Accounts::canBeName(item.owner)) {
            sayOnce("The playlist \"" + item.name +
                    "\" belongs to nobody who can have a name here");
            continue;
        }
        Meeting meeting{links.listOf(item.id), item, item.version, isOwn(item)};
        there.insert(meeting.link);
        const bool isTurn = !item.tellsChanges && number++ == turn % all.size();
        orRefused(meeting.link, [&] { agree(std::move(meeting), isTurn); });
    }
    for (const Id& link : links.bases(user.name)) {
        if (there.count(link) == 0 && link != starred.link) {
            lose(link);
        }
    }
    for (const ListEntry& entry : lists.entries(container)) {
        const std::optional<ListRow> row =
            entry.kind == EntryKind::item ? lists.find(entry.item) : std::nullopt;
        if (!stop && row && row->ownerId == user.id && there.count(row->link) == 0 &&
            !isGivenUp(row->link)) {
            orRefused(row->link, [&] { publish(*row, all); });
        }
    }
}

void ListSync::agree(Meeting meeting, bool readAnyway) {
    const std::optional<Base> base = links.base(user.name, meeting.link);
    const std::optional<ListRow> row = lists.find(meeting.link);
    const bool isSame = base && base->name == nameOf(meeting.theirs, meeting.isOwn) &&
                        base->comment == meeting.theirs.comment &&
                        base->isPublic == meeting.theirs.isPublic &&
                        base->version == meeting.version;
    if (base && row && !lists.contains(container, meeting.link)) {
        if (!meeting.isOwn) {
            return;  // it is not wanted here
        }
        if (isSame || base->version.empty()) {
            server.call("deletePlaylist", {{"id", meeting.theirs.id}});
            links.forgetBase(user.name, meeting.link);
            return;
        }
        log("The playlist \"" + meeting.theirs.name + "\" has changed since it was removed here");
    }
    meeting.wasThere = row && lists.contains(container, meeting.link);
    if (isSame && meeting.wasThere && !readAnyway && !(hasChanges() && isChanged(*row, *base))) {
        return;
    }
    try {
        meeting.theirs =
            readPlaylist(server.call("getPlaylist", {{"id", meeting.theirs.id}})["playlist"]);
    } catch (const ServerError& error) {
        constexpr int gone = 70;
        if (error.code() != gone) {
            throw;
        }
        return;  // deleted since the overview was given
    }
    merge(meeting, base);
}

void ListSync::merge(const Meeting& meeting, std::optional<Base> base) {
    const PlaylistItem& theirs = meeting.theirs;
    const std::string theirName = nameOf(theirs, meeting.isOwn);
    writer.write({{}, {}, theirs.songs});
    const Ids theirSongs = linksOf(theirs.songs);
    const std::int64_t owner = meeting.isOwn ? user.id : accounts.admit(theirs.owner).id;
    Base agreed;
    bool isWhole = true;
    bool isRemoved = false;
    lists.together([&] {
        std::optional<ListRow> row = lists.find(meeting.link);
        isRemoved = meeting.wasThere && !(row && lists.contains(container, meeting.link));
        if (isRemoved) {
            return;  // while the server was asked; the next pass tells it
        }
        if (!row) {
            row = lists.create(owner, theirName, meeting.link);
        }
        if (!lists.contains(container, meeting.link)) {
            lists.insert(container, 0, {{EntryKind::item, meeting.link, std::nullopt}}, user.name);
        }
        const Base mine = stateOf(*row);
        if (!base || !meeting.isOwn || isGivenUp(meeting.link)) {
            base = mine;  // nothing of it was changed here
        }
        isWhole = base->version != unfinished;
        agreed.name = mine.name != base->name ? mine.name : theirName;
        agreed.comment = mine.comment != base->comment ? mine.comment : theirs.comment;
        agreed.isPublic = mine.isPublic != base->isPublic ? mine.isPublic : theirs.isPublic;
        agreed.songs = isWhole ? mergedItems(base->songs, mine.songs, theirSongs) : mine.songs;
        if (agreed.name != mine.name) {
            lists.rename(*row, agreed.name);
        }
        if (agreed.comment != mine.comment) {
            lists.describe(*row, agreed.comment);
        }
        if (agreed.isPublic != mine.isPublic) {
            lists.share(*row, agreed.isPublic, row->collaborative);
        }
        if (agreed.songs != mine.songs) {
            setItems(lists, *row, agreed.songs, row->owner);
        }
    });
    if (isRemoved) {
        return;
    }
    const bool isSent = agreed.name != theirName || agreed.comment != theirs.comment ||
                        agreed.isPublic != theirs.isPublic || agreed.songs != theirSongs;
    if (isSent && meeting.isOwn) {
        // First what would be missed most.
        if (agreed.songs != theirSongs) {
            base->version = unfinished;
            links.setBase(user.name, meeting.link, *base);
            sender.songs(theirs.id, theirSongs, agreed.songs);
            base->songs = agreed.songs;
            base->version.clear();
            links.setBase(user.name, meeting.link, *base);
        }
        sender.about(theirs, agreed);
    }
    agreed.version = isSent ? std::string() : meeting.version;
    links.setBase(user.name, meeting.link, agreed);
}

// One that was made here, or that the server has lost while it was changed here.
void ListSync::publish(const ListRow& row, const std::vector<PlaylistItem>& known) {
    Meeting meeting{row.link, {}, {}, true};
    meeting.theirs = readPlaylist(server.call("createPlaylist", {{"name", row.name}})["playlist"]);
    if (meeting.theirs.id.empty()) {
        // Older servers do not tell which one it is.
        for (const PlaylistItem& item :
             readPlaylists(server.call("getPlaylists")["playlists"]["playlist"])) {
            const bool wasThere =
                std::any_of(known.begin(), known.end(),
                            [&](const PlaylistItem& before) { return before.id == item.id; });
            if (!wasThere && item.name == row.name && isOwn(item)) {
                meeting.theirs = item;
            }
        }
    }
    if (meeting.theirs.id.empty()) {
        constexpr int unnamed = 0;
        throw ServerError(SP_ERROR_OTHER_TRANSIENT,
                          "the server does not tell which playlist it has made", false, unnamed);
    }
    links.setListId(row.link, meeting.theirs.id);
    // All that it is here is a change.
    links.setBase(user.name, row.link, {{}, {}, !row.published, {}, {}});
    agree(std::move(meeting), true);
}

void ListSync::lose(const Id& link) {
    const std::optional<Base> base = links.base(user.name, link);
    lists.together([&] {
        const std::optional<ListRow> row = lists.find(link);
        if (!row || !base || !lists.contains(container, link)) {
            return;
        }
        if (row->ownerId == user.id && isChanged(*row, *base)) {
            log("The playlist \"" + row->name +
                "\" is gone from the server, and changed here: " + "it is made again");
        } else {
            lists.removeItems(container, {link});
        }
    });
    links.forgetBase(user.name, link);
}

// ---- Stars ----

void ListSync::agreeStars() {
    std::vector<SongItem> songs = readSongs(server.call("getStarred2")["starred2"]["song"]);
    std::stable_sort(songs.begin(), songs.end(), [](const SongItem& left, const SongItem& right) {
        return left.starred < right.starred;
    });
    const Ids theirs = linksOf(songs);
    std::optional<Base> base = links.base(user.name, starred.link);
    if (base && base->songs == theirs && !hasChanges()) {
        return;
    }
    writer.write({{}, {}, songs});
    Base agreed;
    orRefused(starred.link, [&] {
        lists.together([&] {
            const Ids mine = itemsOf(lists.entries(starred));
            const Ids before = isGivenUp(starred.link) ? mine : base.value_or(Base()).songs;
            agreed.songs = mergedItems(before, mine, theirs);
            lists.removeItems(starred, itemsWithout(mine, agreed.songs));
            std::vector<NewEntry> fresh;
            for (const Id& song : itemsWithout(agreed.songs, mine)) {
                fresh.push_back({EntryKind::item, song, std::nullopt});
            }
            lists.insert(starred, 0, fresh, user.name);
        });
        sender.stars(theirs, agreed.songs);
        // In the server's order, in which it is compared with the next answer.
        Ids kept = itemsWithout(theirs, itemsWithout(theirs, agreed.songs));
        const Ids added = itemsWithout(agreed.songs, theirs);
        kept.insert(kept.end(), added.begin(), added.end());
        agreed.songs = std::move(kept);
        if (!base || base->songs != agreed.songs) {
            links.setBase(user.name, starred.link, agreed);
        }
    });
}

}  // namespace sonolet::service
