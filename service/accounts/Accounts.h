#ifndef SONOLET_SERVICE_ACCOUNTS_ACCOUNTS_H
#define SONOLET_SERVICE_ACCOUNTS_ACCOUNTS_H

#include "accounts/Password.h"
#include "store/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// What is known of a user.
struct Account {
    std::int64_t id = 0;
    std::string name;         // canonical: what two spellings of the name have in common
    std::string displayName;  // as it was written
    std::string fullName;
    std::string country;  // two letters, or none: where this machine is
};

// The users of the service and what belongs to each: credentials, play counts.
//
// Passwords are kept as yescrypt hashes alone, blobs as digests alone. The account "listener" with
// the password "listener" is there from the start, unless a file is begun without. Tracks are named
// by their ids, so that what a user keeps outlives the catalogue.
//
// Threads: an object belongs to one thread at a time; several may be open on one file. Errors:
// DatabaseError, and std::runtime_error for a name or password that cannot be used.
class Accounts final {
public:
    // Whom a file has that is new.
    enum class First { listener, nobody };

    // Makes the file, its tables and the first account, if they are not there. A damaged file is an
    // error here: what becomes of it is for the one who opens it to say.
    explicit Accounts(const std::string& file, First first = First::listener);

    // The canonical form of a name; throws when it cannot be a name.
    static std::string canonicalName(std::string_view name);
    static bool canBeName(std::string_view name);

    // By name.
    std::vector<Account> all();
    // In whatever spelling; nothing for a name that nobody has.
    std::optional<Account> find(std::string_view name);

    // Throws std::runtime_error, too, for an empty password and for a user who is there already.
    // Takes as long as a hash is hard: not for the thread that a page waits for.
    void add(std::string_view name, const Secret& password);
    // The account of somebody whom another checks: no password is right. Made if there is none.
    Account admit(std::string_view name);
    // The same for many. All can be names.
    void admitAll(const std::vector<std::string>& names);
    // Forgets blobs and the remembered user with it. False: no such user.
    bool setPassword(std::string_view name, const Secret& password);
    // His playlists go with him, and leave the containers of others. False: no such user.
    bool remove(std::string_view name);
    // Two letters, in whatever case. False: no such user.
    bool setCountry(std::string_view name, std::string_view country);

    // Nothing when name and secret do not belong together, whichever of them is wrong.
    // checkPassword takes the same time for a user who does not exist.
    std::optional<Account> checkPassword(std::string_view name, const Secret& password);
    std::optional<Account> checkBlob(std::string_view name, const Secret& blob);

    // A fresh text that checkBlob accepts for this user; the oldest of many is forgotten.
    std::string issueBlob(std::int64_t account);

    // One user is remembered at a time, for the sessions to come.
    void remember(std::int64_t account);
    void forget();
    // Nothing, too, for one who was removed since.
    std::optional<Account> remembered();

    // What sessions are to do, by name; not of an account.
    void setSetting(const char* name, std::string_view value);
    // Nothing: it was never set.
    std::optional<std::string> setting(const char* name);

    // One more play of the track to its end.
    void recordPlay(std::int64_t account, const Id& track);
    // 0 to 100: on a logarithmic scale, 100 is the track that was played most.
    int popularity(const Id& track);

    // Who plays for an account: the latest taker's text.
    void takePlayToken(std::int64_t account, const std::string& token);
    // Empty: nobody has played for this account yet.
    std::string playToken(std::int64_t account);

    // Changes whenever another process or thread has changed the file.
    std::int64_t version() { return database.dataVersion(); }

    // For the lists, which are in the same file. What is changed through it is no news here.
    Database& connection() { return database; }

private:
    static Account read(const Cursor& row);

    Database database;

    // Prepared after the schema is there.
    struct Migration {
        explicit Migration(Database& database);
    } migration;
    Statement listAccounts;
    Statement findAccount;
    Statement findHash;
    Statement insertAccount;
    Statement updateHash;
    Statement updateCountry;
    Statement deleteAccount;
    Statement insertBlob;
    Statement findBlob;
    Statement pruneBlobs;
    Statement deleteBlobs;
    Statement putSetting;
    Statement getSetting;
    Statement deleteSetting;
    Statement insertPlay;
    Statement countPlays;
    Statement mostPlays;
    Statement putToken;
    Statement getToken;

    // mostPlays looks at every track ever played, so its answer is kept until something changes.
    std::int64_t mostPlayed = -1;
    std::int64_t mostPlayedVersion = -1;
};

}  // namespace sonolet::service

#endif
