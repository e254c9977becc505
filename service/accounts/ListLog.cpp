#include "accounts/ListLog.h"

#include <cstdlib>
#include <string>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::int64_t keptChanges = 10000;
constexpr std::int64_t pruneEvery = 256;

std::string joined(const std::vector<std::int64_t>& numbers) {
    std::string text;
    for (const std::int64_t number : numbers) {
        text += std::to_string(number);
        text += ' ';
    }
    return text;
}

std::vector<std::int64_t> split(const std::string& text) {
    std::vector<std::int64_t> numbers;
    const char* place = text.c_str();
    for (char* end = nullptr;; place = end) {
        const std::int64_t number = std::strtoll(place, &end, 10);
        if (end == place) {
            return numbers;
        }
        numbers.push_back(number);
    }
}

}  // namespace

ReadMoment::ReadMoment(Database& readDatabase)
    : database(readDatabase), nested(sqlite3_get_autocommit(readDatabase.handle()) == 0) {
    if (!nested) {
        database.execute("BEGIN");
    }
}

ReadMoment::~ReadMoment() {
    if (!nested) {
        // Nothing was written that could fail to be.
        sqlite3_exec(database.handle(), "COMMIT", nullptr, nullptr, nullptr);
    }
}

ListLog::ListLog(Database& sharedDatabase)
    : database(sharedDatabase), findBounds(database,
                                           "SELECT IFNULL((SELECT MIN(id) FROM list_changes), 1),"
                                           " IFNULL((SELECT MAX(id) FROM list_changes), 0)"),
      listChanges(database,
                  "SELECT c.id, l.link, l.kind, a.name, c.kind, c.numbers FROM list_changes c"
                  " JOIN lists l ON l.id = c.list_id JOIN accounts a ON a.id = l.owner_id"
                  " WHERE c.id > ?1 ORDER BY c.id"),
      insertChange(database, "INSERT INTO list_changes(list_id, kind, numbers) VALUES(?1, ?2, ?3)"),
      pruneChanges(database, "DELETE FROM list_changes WHERE id <= ?1"),
      pruneEntries(database, "DELETE FROM list_entries WHERE removed <= ?1") {}

std::int64_t ListLog::newest() {
    Cursor row = findBounds.run();
    return row.next() ? row.integer(1) : 0;
}

std::optional<std::vector<ListChange>> ListLog::since(std::int64_t change) {
    const ReadMoment moment(database);
    if (Cursor row = findBounds.run(); row.next() && row.integer(0) > change + 1) {
        return std::nullopt;
    }
    std::vector<ListChange> changes;
    for (Cursor row = listChanges.run(change); row.next();) {
        ListChange next;
        next.id = row.integer(0);
        next.link = row.id(1).value_or(Id());
        next.listKind = static_cast<ListKind>(row.integer(2));
        next.owner = row.text(3);
        next.kind = static_cast<ListChangeKind>(row.integer(4));
        next.numbers = split(row.text(5));
        changes.push_back(std::move(next));
    }
    return changes;
}

std::int64_t
ListLog::note(const ListRow& list, ListChangeKind kind, const std::vector<std::int64_t>& numbers) {
    insertChange.execute(list.id, static_cast<int>(kind), joined(numbers));
    const std::int64_t change = sqlite3_last_insert_rowid(database.handle());
    if (change % pruneEvery == 0) {
        pruneChanges.execute(change - keptChanges);
        pruneEntries.execute(change - keptChanges);
    }
    return change;
}

}  // namespace sonolet::service
