#ifndef SONOLET_SERVICE_SERVER_SERVER_STORE_H
#define SONOLET_SERVICE_SERVER_SERVER_STORE_H

#include "store/Database.h"

#include "libspotify/api.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// What must be kept of a server beside its music: which link stands for which of its ids, the login
// that is remembered, how its playlists were when both sides agreed, and the plays that it has not
// been told of.
//
// An id that is a UUID is the link, so that its link is the same everywhere; any other has the
// digest of its text for a link, which is the same everywhere too, but leads back only where the id
// was seen. Threads: belongs to one at a time; several may be open. Errors: DatabaseError.
class ServerStore final {
public:
    explicit ServerStore(const std::string& file);

    // What `action` changes is one transaction: what it throws undoes it.
    template <typename Action>
    void together(Action action) {
        Transaction transaction(database);
        action();
        transaction.commit();
    }

    // The link of one of the server's ids, which is kept from here on.
    Id link(sp_linktype kind, const std::string& serverId);
    // What to ask the server for. For a link that was never seen its UUID, as it may be one.
    std::string serverId(sp_linktype kind, const Id& link);
    // The digest of a cover, from which an image id is made; empty for no cover.
    std::string coverDigest(const std::string& cover);
    // Nothing for one that was never seen.
    std::optional<std::string> cover(const std::string& digest);

    // Of this server and machine, by name; nothing: never set, or forgotten.
    std::optional<std::string> setting(const char* name);
    // An empty value: forgotten.
    void setSetting(const char* name, std::string_view value);

    // How a list was when the server's and the one kept here were the same, for a user.
    struct Base {
        std::string name;
        std::string comment;
        bool isPublic = false;
        // The server's; empty: what it has answered to the last change is still to be read.
        std::string version;
        std::vector<Id> songs;  // links, in the list's order
    };
    // Users by their canonical names. Nothing: both sides have never agreed on it.
    std::optional<Base> base(const std::string& user, const Id& list);
    void setBase(const std::string& user, const Id& list, const Base& base);
    void forgetBase(const std::string& user, const Id& list);
    // The lists that there are bases of, in no order.
    std::vector<Id> bases(const std::string& user);
    // The list that stands for a playlist of the server: one that was made here, or the one with
    // the server's link.
    void setListId(const Id& list, const std::string& serverId);
    Id listOf(const std::string& serverId);

    // A track that was heard to its end, and of which the server does not know yet.
    struct Play {
        std::int64_t number = 0;
        Id track;
        std::int64_t timeMs = 0;  // since 1970
    };
    void addPlay(const Id& track, std::int64_t timeMs);
    // Nothing: the server knows of all.
    std::optional<Play> oldestPlay();
    void removePlay(std::int64_t number);

private:
    Database database;
    struct Migration {
        explicit Migration(Database& database);
    } migration;
    Statement insertItem;
    Statement putItem;
    Statement findItem;
    Statement findLink;
    Statement putSetting;
    Statement getSetting;
    Statement deleteSetting;
    Statement putBase;
    Statement getBase;
    Statement deleteBase;
    Statement listBases;
    Statement insertPlay;
    Statement findPlay;
    Statement deletePlay;
};

}  // namespace sonolet::service

#endif
