#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_STORE_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_STORE_H

#include "accounts/ListLog.h"
#include "accounts/ListOrder.h"
#include "accounts/ListRows.h"
#include "store/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

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

    // Nothing for a list, or an account, that is not there.
    std::optional<ListRow> find(const Id& link);
    std::optional<ListRow> ofUser(std::string_view canonicalName, ListKind kind);
    std::optional<ListRow> ofAccount(std::int64_t account, ListKind kind);
    // In their order. The whole list, in memory.
    std::vector<ListEntry> entries(const ListRow& list);
    std::optional<ListEntry> entry(std::int64_t id);
    // The playlists of a container that its owner lets others see.
    std::vector<ListEntry> published(const ListRow& container);
    bool contains(const ListRow& list, const Id& item);
    // The names of those who follow a playlist of someone else.
    std::vector<std::string> subscribers(const ListRow& list);

    // What has happened to all lists. Borrowed, as long as the store lives.
    ListLog& log() { return changes; }

    // What `action` reads is of one moment. What it throws is thrown on.
    template <typename Action>
    void atOneMoment(Action action) {
        const ReadMoment moment(database);
        action();
    }
    // What `action` changes is one transaction. What it throws undoes all of it and is thrown on.
    // It may be part of another transaction.
    template <typename Action>
    void together(Action action) {
        const Scope scope(*this);
        action();
        scope.commit();
    }

    // The changes. Each takes lists and entries as they were read; what has gone meanwhile is
    // passed over. Names and texts are taken as they are: who calls has checked them.

    // A playlist that stands in no container yet; its link is a new one unless it is given.
    ListRow
    create(std::int64_t owner, std::string_view name, const std::optional<Id>& link = std::nullopt);
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
    // What a list says of itself; each is a line of the log.
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
    void noteSubscribers(const ListRow& container, const Id& playlist);

    Database& database;
    ListLog changes;
    ListOrder order;
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
    Statement insertList;
    Statement insertEntry;
    Statement removeEntry;
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
