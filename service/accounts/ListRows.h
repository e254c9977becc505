#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_ROWS_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_ROWS_H

#include "store/Id.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the tables of the lists hold, as values. The numbers of the enumerations are in files: they
// stay what they are.
namespace sonolet::service {

// Every account has one of each but of playlists, of which it has any number.
enum class ListKind { playlist = 0, starred = 1, inbox = 2, container = 3 };

// A list as it was when it was read; what others change since is in the log.
struct ListRow {
    std::int64_t id = 0;
    Id link;
    std::int64_t ownerId = 0;
    // Canonical.
    std::string owner;
    ListKind kind = ListKind::playlist;
    std::string name;
    std::string description;
    // 20 bytes of an image id, or none.
    std::string image;
    bool collaborative = false;
    // Others see it in its owner's container. Who has the link may read it in any case.
    bool published = true;

    // Its owner may, and everybody else if it is a collaborative playlist.
    bool mayBeChangedBy(std::int64_t account) const {
        return account == ownerId || (collaborative && kind == ListKind::playlist);
    }
};

// In a list of tracks all are items; a container has folders as two entries around what is in them.
enum class EntryKind { item = 0, folderStart = 1, folderEnd = 2 };

// A place in a list. Its id is good for as long as the log tells of it, wherever it moves.
struct ListEntry {
    std::int64_t id = 0;
    EntryKind kind = EntryKind::item;
    // A track's id; in a container a playlist's, or what the two ends of a folder share.
    Id item;
    std::string creator;
    // Seconds since 1970.
    std::int64_t created = 0;
    bool seen = true;
    // A track's message, a folder's name.
    std::optional<std::string> text;
};

// What is to be put into a list.
struct NewEntry {
    EntryKind kind = EntryKind::item;
    Id item;
    std::optional<std::string> text;
};

// What has happened; the comment tells which numbers go with it.
enum class ListChangeKind {
    added = 0,       // the entry they stand before or 0, then the entries
    removed = 1,     // the entries
    moved = 2,       // the entry they stand before now or 0, then the entries
    renamed = 3,     // nothing
    described = 4,   // nothing
    pictured = 5,    // nothing
    shared = 6,      // nothing: who may see or change the list
    seen = 7,        // the entry
    messaged = 8,    // the entry
    subscribed = 9,  // nothing: other followers
};

// A line of the log: what has happened to a list, in terms of entries, since their places are not
// the same for everyone at the same time.
struct ListChange {
    // Grows with every change of any list.
    std::int64_t id = 0;
    Id link;
    ListKind listKind = ListKind::playlist;
    std::string owner;
    ListChangeKind kind = ListChangeKind::added;
    std::vector<std::int64_t> numbers;
};

}  // namespace sonolet::service

#endif
