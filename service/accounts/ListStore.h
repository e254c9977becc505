#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_STORE_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_STORE_H

#include "store/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// The tables of the lists, made after those of the accounts. Every account has one list of each
// kind but `playlist` from the start; stars become entries of the starred lists.
extern const char listSchema[];

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

// The lists of all users: playlists of tracks, and for each user a container of playlists and
// folders. A list is a sequence of entries in the order of sparse ranks, so that a change writes
// what it changes and no more; beside it stands a log from which every other session learns of it.
//
// Every change is one transaction that is on disk when the call returns. Entries that went away
// stay as long as the log tells of them.
//
// Threads: as its database's. Errors: DatabaseError. Nothing here asks who is allowed to.
class ListStore final {
public:
    // The tables are there; `sharedDatabase` outlives the store.
    explicit ListStore(Database& sharedDatabase);

    std::optional<ListRow> find(const Id& link);
    std::optional<ListRow> ofUser(std::string_view canonicalName, ListKind kind);
    std::optional<ListRow> ofAccount(std::int64_t account, ListKind kind);
    std::vector<ListEntry> entries(const ListRow& list);
    std::optional<ListEntry> entry(std::int64_t id);
    // The playlists of a container that its owner lets others see.
    std::vector<ListEntry> published(const ListRow& container);
    bool contains(const ListRow& list, const Id& item);
    // The names of those who follow a playlist of someone else.
    std::vector<std::string> subscribers(const ListRow& list);

    std::int64_t newestChange();
    // Of all lists; nothing when the log does not reach back as far.
    std::optional<std::vector<ListChange>> changesSince(std::int64_t change);

    // What `action` reads is of one moment.
    template <typename Action>
    void atOneMoment(Action action) {
        const Snapshot snapshot(database);
        action();
    }
    // What `action` changes is one transaction.
    template <typename Action>
    void together(Action action) {
        const Scope scope(*this);
        action();
        scope.commit();
    }

    // A playlist that stands in no container yet.
    ListRow create(std::int64_t owner, std::string_view name);
    // Before the entry `before`, or where it was; 0: at the end. A star is given once: returns
    // what has come in.
    std::vector<std::int64_t> insert(const ListRow& list,
                                     std::int64_t before,
                                     const std::vector<NewEntry>& entries,
                                     std::string_view creator);
    void remove(const ListRow& list, const std::vector<std::int64_t>& entries);
    void removeItems(const ListRow& list, const std::vector<Id>& items);
    // The entries are in the order in which they stand.
    void move(const ListRow& list, const std::vector<std::int64_t>& entries, std::int64_t before);
    void rename(const ListRow& list, std::string_view name);
    void describe(const ListRow& list, std::string_view description);
    void setImage(const ListRow& list, std::string_view image);
    void share(const ListRow& list, bool published, bool collaborative);
    void setSeen(const ListRow& list, std::int64_t entry, bool seen);
    // An empty message is none.
    void setMessage(const ListRow& list, std::int64_t entry, std::string_view message);
    // Before an account goes: its playlists leave the containers of others, and those that it
    // follows lose a subscriber.
    void leave(std::int64_t account);

    // The playlist that was made from a file, and a digest of what the file said then; none: the
    // file was gone.
    struct Source {
        Id link;
        std::string file;
        std::optional<std::string> digest;
    };
    std::vector<Source> sources();
    std::optional<Source> source(const std::string& file);
    void setSource(const ListRow& list,
                   const std::string& file,
                   const std::optional<std::string>& digest);

private:
    class Snapshot final {
    public:
        explicit Snapshot(Database& readDatabase);
        ~Snapshot();
        Snapshot(const Snapshot&) = delete;
        Snapshot& operator=(const Snapshot&) = delete;

    private:
        Database& database;
        const bool nested;
    };

    // A transaction, or a part of the one that is open.
    class Scope final {
    public:
        explicit Scope(ListStore& changedStore);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        void commit() const;

    private:
        ListStore& store;
        const bool outermost;
    };

    static ListRow readList(const Cursor& row);
    static ListEntry readEntry(const Cursor& row);
    static Source readSource(const Cursor& row);
    std::int64_t
    note(const ListRow& list, ListChangeKind kind, const std::vector<std::int64_t>& numbers = {});
    void noteSubscribers(const ListRow& container, const Id& playlist);

    // Ranks for `count` entries before that entry, which is changed to the one that is there.
    std::vector<std::int64_t>
    makeRoom(const ListRow& list, std::int64_t& before, std::int64_t count);
    // The same where there are too few between `low` and `high`: entries behind them give way.
    std::vector<std::int64_t>
    spread(const ListRow& list, std::int64_t low, std::int64_t high, std::int64_t count);

    Database& database;
    std::optional<Transaction> transaction;

    Statement findList;
    Statement findOfUser;
    Statement findOfAccount;
    Statement listEntries;
    Statement findEntry;
    Statement listPublished;
    Statement findItem;
    Statement listSubscribers;
    Statement listFollowers;
    Statement findBounds;
    Statement listChanges;
    Statement insertList;
    Statement insertEntry;
    Statement findRank;
    Statement findNext;
    Statement findPrevious;
    Statement findLast;
    Statement listRanks;
    Statement updateRank;
    Statement removeEntry;
    Statement insertChange;
    Statement pruneChanges;
    Statement pruneEntries;
    Statement updateName;
    Statement updateDescription;
    Statement updateImage;
    Statement updateShare;
    Statement updateSeen;
    Statement updateText;
    Statement listSources;
    Statement findSource;
    Statement updateSource;
};

}  // namespace sonolet::service

#endif
