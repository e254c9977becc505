#include "accounts/ListStore.h"

#include <unordered_set>
#include <utility>

namespace sonolet::service {

#define LIST_COLUMNS                                                                               \
    "SELECT l.id, l.link, l.owner_id, a.name, l.kind, l.name, l.description, l.image,"             \
    " l.collaborative, l.published FROM lists l JOIN accounts a ON a.id = l.owner_id "
#define ENTRY_COLUMNS "SELECT e.id, e.kind, e.item, e.creator, e.created, e.seen, e.text"

ListStore::ListStore(Database& sharedDatabase)
    : database(sharedDatabase), changes(sharedDatabase), order(sharedDatabase),
      findList(database, LIST_COLUMNS "WHERE l.link = ?1"),
      findOfUser(database, LIST_COLUMNS "WHERE a.name = ?1 AND l.kind = ?2"),
      findOfAccount(database, LIST_COLUMNS "WHERE l.owner_id = ?1 AND l.kind = ?2"),
      listEntries(database,
                  ENTRY_COLUMNS " FROM list_entries e WHERE e.list_id = ?1 AND e.removed IS NULL"
                                " ORDER BY e.rank"),
      findEntry(database, ENTRY_COLUMNS " FROM list_entries e WHERE e.id = ?1"),
      listPublished(database,
                    ENTRY_COLUMNS " FROM list_entries e JOIN lists l ON l.link = e.item"
                                  " WHERE e.list_id = ?1 AND e.removed IS NULL AND e.kind = 0"
                                  " AND l.owner_id = ?2 AND l.kind = 0 AND l.published"
                                  " ORDER BY e.rank"),
      findItem(database,
               "SELECT id FROM list_entries WHERE item = ?2 AND list_id = ?1 AND removed IS NULL"),
      listSubscribers(database,
                      "SELECT DISTINCT a.name FROM list_entries e JOIN lists l ON l.id = e.list_id"
                      " JOIN accounts a ON a.id = l.owner_id WHERE e.item = ?1 AND e.removed IS"
                      " NULL AND e.kind = 0 AND l.kind = 3 AND l.owner_id != ?2 ORDER BY a.name"),
      listFollowers(database,
                    "SELECT c.owner_id, e.id FROM lists l JOIN list_entries e ON e.item = l.link"
                    " JOIN lists c ON c.id = e.list_id WHERE l.owner_id = ?1 AND c.owner_id != ?1"
                    " AND c.kind = 3 AND e.removed IS NULL AND e.kind = 0"),
      insertList(database,
                 "INSERT INTO lists(link, owner_id, kind, name)"
                 " VALUES(coalesce(?3, randomblob(16)), ?1, 0, ?2) RETURNING link"),
      insertEntry(database,
                  "INSERT INTO list_entries(list_id, rank, kind, item, creator, created, seen,"
                  " text) VALUES(?1, ?2, ?3, ?4, ?5, strftime('%s', 'now'), ?6, ?7)"),
      removeEntry(database,
                  "UPDATE list_entries SET removed = ?3 WHERE id = ?2 AND list_id = ?1"
                  " AND removed IS NULL RETURNING item"),
      updateName(database, "UPDATE lists SET name = ?2 WHERE id = ?1"),
      updateDescription(database, "UPDATE lists SET description = ?2 WHERE id = ?1"),
      updateImage(database, "UPDATE lists SET image = ?2 WHERE id = ?1"),
      updateShare(database, "UPDATE lists SET published = ?2, collaborative = ?3 WHERE id = ?1"),
      updateSeen(database, "UPDATE list_entries SET seen = ?3 WHERE id = ?2 AND list_id = ?1"),
      updateText(database, "UPDATE list_entries SET text = ?3 WHERE id = ?2 AND list_id = ?1"),
      listSources(database,
                  "SELECT link, source, source_digest FROM lists WHERE source IS NOT NULL"
                  " ORDER BY source"),
      findSource(database, "SELECT link, source, source_digest FROM lists WHERE source = ?1"),
      updateSource(database, "UPDATE lists SET source = ?2, source_digest = ?3 WHERE id = ?1") {}

ListStore::Scope::Scope(ListStore& changedStore)
    : store(changedStore), outermost(!changedStore.transaction) {
    if (outermost) {
        store.transaction.emplace(store.database);
    }
}

ListStore::Scope::~Scope() {
    if (outermost) {
        store.transaction.reset();
    }
}

void ListStore::Scope::commit() const {
    if (outermost) {
        store.transaction->commit();
    }
}

ListRow ListStore::readList(const Cursor& row) {
    ListRow list;
    list.id = row.integer(0);
    list.link = row.id(1).value_or(Id());
    list.ownerId = row.integer(2);
    list.owner = row.text(3);
    list.kind = static_cast<ListKind>(row.integer(4));
    list.name = row.text(5);
    list.description = row.text(6);
    list.image = row.text(7);
    list.collaborative = row.integer(8) != 0;
    list.published = row.integer(9) != 0;
    return list;
}

ListEntry ListStore::readEntry(const Cursor& row) {
    ListEntry entry;
    entry.id = row.integer(0);
    entry.kind = static_cast<EntryKind>(row.integer(1));
    entry.item = row.id(2).value_or(Id());
    entry.creator = row.text(3);
    entry.created = row.integer(4);
    entry.seen = row.integer(5) != 0;
    if (!row.isNull(6)) {
        entry.text = row.text(6);
    }
    return entry;
}

std::optional<ListRow> ListStore::find(const Id& link) {
    Cursor row = findList.run(link);
    return row.next() ? std::optional<ListRow>(readList(row)) : std::nullopt;
}

std::optional<ListRow> ListStore::ofUser(std::string_view canonicalName, ListKind kind) {
    Cursor row = findOfUser.run(canonicalName, static_cast<int>(kind));
    return row.next() ? std::optional<ListRow>(readList(row)) : std::nullopt;
}

std::optional<ListRow> ListStore::ofAccount(std::int64_t account, ListKind kind) {
    Cursor row = findOfAccount.run(account, static_cast<int>(kind));
    return row.next() ? std::optional<ListRow>(readList(row)) : std::nullopt;
}

std::vector<ListEntry> ListStore::entries(const ListRow& list) {
    std::vector<ListEntry> found;
    for (Cursor row = listEntries.run(list.id); row.next();) {
        found.push_back(readEntry(row));
    }
    return found;
}

std::optional<ListEntry> ListStore::entry(std::int64_t id) {
    Cursor row = findEntry.run(id);
    return row.next() ? std::optional<ListEntry>(readEntry(row)) : std::nullopt;
}

std::vector<ListEntry> ListStore::published(const ListRow& container) {
    std::vector<ListEntry> found;
    for (Cursor row = listPublished.run(container.id, container.ownerId); row.next();) {
        found.push_back(readEntry(row));
    }
    return found;
}

bool ListStore::contains(const ListRow& list, const Id& item) {
    return findItem.run(list.id, item).next();
}

std::vector<std::string> ListStore::subscribers(const ListRow& list) {
    std::vector<std::string> names;
    for (Cursor row = listSubscribers.run(list.link, list.ownerId); row.next();) {
        names.push_back(row.text(0));
    }
    return names;
}

void ListStore::noteSubscribers(const ListRow& container, const Id& playlist) {
    if (container.kind != ListKind::container) {
        return;
    }
    const std::optional<ListRow> followed = find(playlist);
    if (followed && followed->ownerId != container.ownerId) {
        changes.note(*followed, ListChangeKind::subscribed);
    }
}

// ---- Changes ----

ListRow
ListStore::create(std::int64_t owner, std::string_view name, const std::optional<Id>& link) {
    std::optional<ListRow> made;
    together([&] {
        Cursor row = insertList.run(owner, name, link);
        if (row.next()) {
            made = find(row.id(0).value_or(Id()));
        }
    });
    return made.value();
}

std::vector<std::int64_t> ListStore::insert(const ListRow& list,
                                            std::int64_t before,
                                            const std::vector<NewEntry>& entries,
                                            std::string_view creator) {
    std::vector<std::int64_t> made;
    together([&] {
        std::vector<NewEntry> fresh;
        std::unordered_set<Id> known;
        for (const NewEntry& entry : entries) {
            if (list.kind != ListKind::starred ||
                (known.insert(entry.item).second && !contains(list, entry.item))) {
                fresh.push_back(entry);
            }
        }
        if (fresh.empty()) {
            return;
        }
        std::int64_t place = before;
        const auto ranks = order.makeRoom(list, place, static_cast<std::int64_t>(fresh.size()));
        const bool seen = list.kind != ListKind::inbox && creator == list.owner;
        for (std::size_t index = 0; index < fresh.size(); ++index) {
            const NewEntry& entry = fresh[index];
            insertEntry.execute(list.id, ranks[index], static_cast<int>(entry.kind), entry.item,
                                creator, seen, entry.text);
            made.push_back(sqlite3_last_insert_rowid(database.handle()));
            noteSubscribers(list, entry.item);
        }
        std::vector<std::int64_t> numbers = {place};
        numbers.insert(numbers.end(), made.begin(), made.end());
        changes.note(list, ListChangeKind::added, numbers);
    });
    return made;
}

void ListStore::remove(const ListRow& list, const std::vector<std::int64_t>& entries) {
    if (entries.empty()) {
        return;
    }
    together([&] {
        const std::int64_t change = changes.note(list, ListChangeKind::removed, entries);
        for (const std::int64_t entry : entries) {
            std::optional<Id> item;
            if (Cursor row = removeEntry.run(list.id, entry, change); row.next()) {
                item = row.id(0);
            }
            if (item) {
                noteSubscribers(list, *item);
            }
        }
    });
}

void ListStore::removeItems(const ListRow& list, const std::vector<Id>& items) {
    together([&] {
        std::vector<std::int64_t> entries;
        for (const Id& item : items) {
            for (Cursor row = findItem.run(list.id, item); row.next();) {
                entries.push_back(row.integer(0));
            }
        }
        remove(list, entries);
    });
}

void ListStore::move(const ListRow& list,
                     const std::vector<std::int64_t>& entries,
                     std::int64_t before) {
    together([&] {
        std::vector<std::int64_t> moved;
        for (const std::int64_t entry : entries) {
            // Out of the way of their new place.
            if (removeEntry.run(list.id, entry, std::int64_t{-1}).next()) {
                moved.push_back(entry);
            }
        }
        if (moved.empty()) {
            return;
        }
        std::int64_t place = before;
        const auto ranks = order.makeRoom(list, place, static_cast<std::int64_t>(moved.size()));
        for (std::size_t index = 0; index < moved.size(); ++index) {
            order.put(moved[index], ranks[index]);
        }
        moved.insert(moved.begin(), place);
        changes.note(list, ListChangeKind::moved, moved);
    });
}

void ListStore::rename(const ListRow& list, std::string_view name) {
    together([&] {
        updateName.execute(list.id, name);
        changes.note(list, ListChangeKind::renamed);
    });
}

void ListStore::describe(const ListRow& list, std::string_view description) {
    together([&] {
        updateDescription.execute(list.id, description);
        changes.note(list, ListChangeKind::described);
    });
}

void ListStore::setImage(const ListRow& list, std::string_view image) {
    together([&] {
        updateImage.execute(list.id, Blob{std::string(image)});
        changes.note(list, ListChangeKind::pictured);
    });
}

void ListStore::share(const ListRow& list, bool published, bool collaborative) {
    together([&] {
        updateShare.execute(list.id, published, collaborative);
        changes.note(list, ListChangeKind::shared);
    });
}

void ListStore::setSeen(const ListRow& list, std::int64_t entry, bool seen) {
    together([&] {
        updateSeen.execute(list.id, entry, seen);
        changes.note(list, ListChangeKind::seen, {entry});
    });
}

void ListStore::setMessage(const ListRow& list, std::int64_t entry, std::string_view message) {
    together([&] {
        updateText.execute(list.id, entry,
                           message.empty() ? std::nullopt
                                           : std::optional<std::string_view>(message));
        changes.note(list, ListChangeKind::messaged, {entry});
    });
}

void ListStore::leave(std::int64_t account) {
    together([&] {
        std::vector<std::int64_t> own;
        const std::optional<ListRow> container = ofAccount(account, ListKind::container);
        for (const ListEntry& entry : entries(container.value())) {
            own.push_back(entry.id);
        }
        remove(*container, own);
        std::vector<std::pair<std::int64_t, std::int64_t>> followers;
        for (Cursor row = listFollowers.run(account); row.next();) {
            followers.emplace_back(row.integer(0), row.integer(1));
        }
        for (const auto& [follower, entry] : followers) {
            remove(ofAccount(follower, ListKind::container).value(), {entry});
        }
    });
}

ListStore::Source ListStore::readSource(const Cursor& row) {
    Source source;
    source.link = row.id(0).value_or(Id());
    source.file = row.text(1);
    if (!row.isNull(2)) {
        source.digest = row.text(2);
    }
    return source;
}

std::vector<ListStore::Source> ListStore::sources() {
    std::vector<Source> found;
    for (Cursor row = listSources.run(); row.next();) {
        found.push_back(readSource(row));
    }
    return found;
}

std::optional<ListStore::Source> ListStore::source(const std::string& file) {
    Cursor row = findSource.run(file);
    return row.next() ? std::optional<Source>(readSource(row)) : std::nullopt;
}

void ListStore::setSource(const ListRow& list,
                          const std::string& file,
                          const std::optional<std::string>& digest) {
    together([&] {
        updateSource.execute(list.id, file,
                             digest ? std::optional<Blob>(Blob{*digest}) : std::nullopt);
    });
}

}  // namespace sonolet::service
