#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_ROWS_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_ROWS_H

#include "store/Id.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the tables of the lists hold, as values.
namespace sonolet::service {

enum class ListKind { playlist = 0, starred = 1, inbox = 2, container = 3 };

struct ListRow {
    std::int64_t id = 0;
    Id link;
    std::int64_t ownerId = 0;
    std::string owner;  // canonical name
    ListKind kind = ListKind::playlist;
    std::string name;
    std::string description;
    std::string image;  // 20 bytes or none
    bool collaborative = false;
    bool published = true;

    bool mayBeChangedBy(std::int64_t account) const {
        return account == ownerId || (collaborative && kind == ListKind::playlist);
    }
};

enum class EntryKind { item = 0, folderStart = 1, folderEnd = 2 };

struct ListEntry {
    std::int64_t id = 0;
    EntryKind kind = EntryKind::item;
    Id item;  // a track's id; in a container a playlist's, or what the two ends of a folder share
    std::string creator;
    std::int64_t created = 0;  // seconds since 1970
    bool seen = true;
    std::optional<std::string> text;  // a track's message, a folder's name
};

// What is to be put into a list.
struct NewEntry {
    EntryKind kind = EntryKind::item;
    Id item;
    std::optional<std::string> text;
};

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
    std::int64_t id = 0;  // grows with every change
    Id link;
    ListKind listKind = ListKind::playlist;
    std::string owner;
    ListChangeKind kind = ListChangeKind::added;
    std::vector<std::int64_t> numbers;
};

}  // namespace sonolet::service

#endif
