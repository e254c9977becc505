#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_LOG_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_LOG_H

#include "accounts/ListRows.h"
#include "store/Database.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace sonolet::service {

// Shows all statements of a connection one state of the database while this lives; inside a
// transaction it is a part of that.
class ReadMoment final {
public:
    explicit ReadMoment(Database& readDatabase);
    ~ReadMoment();
    ReadMoment(const ReadMoment&) = delete;
    ReadMoment& operator=(const ReadMoment&) = delete;

private:
    Database& database;
    const bool nested;
};

// The log of what has happened to the lists, from which every session learns of the changes of the
// others. It reaches back some ten thousand changes; entries that went away stay as long as it
// tells of them.
//
// Threads: as its database's. Errors: DatabaseError.
class ListLog final {
public:
    // The tables are there; `sharedDatabase` outlives the log.
    explicit ListLog(Database& sharedDatabase);

    // 0: nothing has ever happened.
    std::int64_t newest();
    // Of all lists, the oldest first; nothing when the log does not reach back as far. Who gets
    // nothing reads the lists anew and goes on from newest(), both at one moment.
    std::optional<std::vector<ListChange>> since(std::int64_t change);

    // Inside a transaction. The new line's number.
    std::int64_t
    note(const ListRow& list, ListChangeKind kind, const std::vector<std::int64_t>& numbers = {});

private:
    Database& database;

    Statement findBounds;
    Statement listChanges;
    Statement insertChange;
    Statement pruneChanges;
    Statement pruneEntries;
};

}  // namespace sonolet::service

#endif
