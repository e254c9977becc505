#include "accounts/Accounts.h"

#include "accounts/ListSchema.h"
#include "accounts/ListStore.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace sonolet::service {

namespace {

constexpr std::size_t longestName = 64;
constexpr std::size_t blobBytes = 32;
constexpr char rememberedSetting[] = "remembered";

constexpr char accountsSchema[] = R"(
CREATE TABLE accounts(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    display_name TEXT NOT NULL,
    full_name TEXT NOT NULL,
    password_hash TEXT NOT NULL);
CREATE TABLE blobs(
    id INTEGER PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,
    digest BLOB NOT NULL);
CREATE INDEX blobs_by_account ON blobs(account_id, digest);
CREATE TABLE settings(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE stars(
    account_id INTEGER NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,
    track BLOB NOT NULL,
    time INTEGER NOT NULL,
    PRIMARY KEY(account_id, track)) WITHOUT ROWID;
CREATE TABLE plays(
    track BLOB NOT NULL,
    account_id INTEGER NOT NULL REFERENCES accounts(id) ON DELETE CASCADE,
    count INTEGER NOT NULL,
    last_time INTEGER NOT NULL,
    PRIMARY KEY(track, account_id)) WITHOUT ROWID;
CREATE TABLE play_tokens(
    account_id INTEGER PRIMARY KEY REFERENCES accounts(id) ON DELETE CASCADE,
    token TEXT NOT NULL);
)";

constexpr char countrySchema[] = "ALTER TABLE accounts ADD COLUMN country TEXT";

// The hash that an unknown user's password is checked against, so that it takes as long.
const std::string& nobodysHash() {
    static const std::string& hash = *new std::string(hashPassword(Secret(randomText(16).c_str())));
    return hash;
}

Blob digestOf(const Secret& blob) {
    return Blob{sha256(blob.value())};
}

}  // namespace

Accounts::Migration::Migration(Database& database) {
    database.migrate({accountsSchema, countrySchema, listSchema});
}

Accounts::Accounts(const std::string& file, First first)
    : database(file, Database::Durability::power), migration(database),
      listAccounts(database,
                   "SELECT id, name, display_name, full_name, country FROM accounts ORDER BY name"),
      findAccount(
          database,
          "SELECT id, name, display_name, full_name, country FROM accounts WHERE name = ?1"),
      findHash(database, "SELECT password_hash FROM accounts WHERE id = ?1"),
      insertAccount(database,
                    "INSERT INTO accounts(name, display_name, full_name, password_hash)"
                    " VALUES(?1, ?2, ?2, ?3)"),
      updateHash(database, "UPDATE accounts SET password_hash = ?2 WHERE id = ?1"),
      updateCountry(database, "UPDATE accounts SET country = ?2 WHERE id = ?1"),
      deleteAccount(database, "DELETE FROM accounts WHERE id = ?1"),
      insertBlob(database, "INSERT INTO blobs(account_id, digest) VALUES(?1, ?2)"),
      findBlob(database, "SELECT 1 FROM blobs WHERE account_id = ?1 AND digest = ?2"),
      pruneBlobs(database,
                 "DELETE FROM blobs WHERE account_id = ?1 AND id NOT IN"
                 " (SELECT id FROM blobs WHERE account_id = ?1 ORDER BY id DESC LIMIT 16)"),
      deleteBlobs(database, "DELETE FROM blobs WHERE account_id = ?1"),
      putSetting(database, "INSERT OR REPLACE INTO settings(name, value) VALUES(?1, ?2)"),
      getSetting(database, "SELECT value FROM settings WHERE name = ?1"),
      deleteSetting(database, "DELETE FROM settings WHERE name = ?1"),
      insertPlay(database,
                 "INSERT INTO plays(track, account_id, count, last_time)"
                 " VALUES(?2, ?1, 1, strftime('%s', 'now'))"
                 " ON CONFLICT DO UPDATE SET count = count + 1, last_time = excluded.last_time"),
      countPlays(database, "SELECT SUM(count) FROM plays WHERE track = ?1"),
      mostPlays(database,
                "SELECT MAX(total) FROM (SELECT SUM(count) AS total FROM plays GROUP BY track)"),
      putToken(database, "INSERT OR REPLACE INTO play_tokens(account_id, token) VALUES(?1, ?2)"),
      getToken(database, "SELECT token FROM play_tokens WHERE account_id = ?1") {
    // Once only: whoever removes the first account does not want it back.
    constexpr char listener[] = "listener";
    if (!setting("created")) {
        const std::string hash = hashPassword(Secret(listener));
        Transaction transaction(database);
        if (!setting("created")) {
            if (first == First::listener) {
                insertAccount.execute(listener, listener, hash);
            }
            putSetting.execute("created", "1");
        }
        transaction.commit();
    }
}

std::string Accounts::canonicalName(std::string_view name) {
    if (!g_utf8_validate(name.data(), static_cast<gssize>(name.size()), nullptr)) {
        throw std::runtime_error("a user name must be valid UTF-8");
    }
    std::string canonical = normalised(name);
    if (canonical.empty() || canonical.size() > longestName) {
        throw std::runtime_error("a user name has 1 to " + std::to_string(longestName) +
                                 " bytes, this one has " + std::to_string(canonical.size()));
    }
    for (const char* place = canonical.c_str(); *place != '\0'; place = g_utf8_next_char(place)) {
        const gunichar character = g_utf8_get_char(place);
        if (!g_unichar_isprint(character) || character == ':' || character == '/') {
            throw std::runtime_error("a user name has no ':', '/' or control characters: " +
                                     canonical);
        }
    }
    return canonical;
}

bool Accounts::canBeName(std::string_view name) {
    try {
        return !canonicalName(name).empty();
    } catch (const std::runtime_error&) {
        return false;
    }
}

Account Accounts::read(const Cursor& row) {
    return Account{row.integer(0), row.text(1), row.text(2), row.text(3), row.text(4)};
}

std::vector<Account> Accounts::all() {
    std::vector<Account> accounts;
    for (Cursor row = listAccounts.run(); row.next();) {
        accounts.push_back(read(row));
    }
    return accounts;
}

std::optional<Account> Accounts::find(std::string_view name) {
    Cursor row = findAccount.run(normalised(name));
    return row.next() ? std::optional<Account>(read(row)) : std::nullopt;
}

void Accounts::add(std::string_view name, const Secret& password) {
    const std::string canonical = canonicalName(name);
    if (password.value().empty()) {
        throw std::runtime_error("the password is empty");
    }
    const std::string hash = hashPassword(password);
    Transaction transaction(database);
    if (find(canonical)) {
        throw std::runtime_error("the user " + canonical + " exists already");
    }
    insertAccount.execute(canonical, name, hash);
    transaction.commit();
}

Account Accounts::admit(std::string_view name) {
    const std::string canonical = canonicalName(name);
    std::optional<Account> account = find(canonical);
    if (!account) {
        admitAll({std::string(name)});
        account = find(canonical);
    }
    return account.value();
}

void Accounts::admitAll(const std::vector<std::string>& names) {
    Transaction transaction(database);
    for (const std::string& name : names) {
        const std::string canonical = canonicalName(name);
        if (!find(canonical)) {
            insertAccount.execute(canonical, name, "");
        }
    }
    transaction.commit();
}

bool Accounts::setPassword(std::string_view name, const Secret& password) {
    if (password.value().empty()) {
        throw std::runtime_error("the password is empty");
    }
    const std::string hash = hashPassword(password);
    Transaction transaction(database);
    const std::optional<Account> account = find(name);
    if (!account) {
        return false;
    }
    updateHash.execute(account->id, hash);
    deleteBlobs.execute(account->id);
    if (setting(rememberedSetting) == account->name) {
        deleteSetting.execute(rememberedSetting);
    }
    transaction.commit();
    return true;
}

bool Accounts::remove(std::string_view name) {
    ListStore lists(database);
    bool removed = false;
    lists.together([&] {
        const std::optional<Account> account = find(name);
        if (!account) {
            return;
        }
        lists.leave(account->id);
        deleteAccount.execute(account->id);
        if (setting(rememberedSetting) == account->name) {
            deleteSetting.execute(rememberedSetting);
        }
        removed = true;
    });
    return removed;
}

bool Accounts::setCountry(std::string_view name, std::string_view country) {
    if (country.size() != 2 || !g_ascii_isalpha(country[0]) || !g_ascii_isalpha(country[1])) {
        throw std::runtime_error("a country is two letters, as SE, not " + std::string(country));
    }
    const std::string code = {g_ascii_toupper(country[0]), g_ascii_toupper(country[1])};
    const std::optional<Account> account = find(name);
    if (account) {
        updateCountry.execute(account->id, code);
    }
    return account.has_value();
}

std::optional<Account> Accounts::checkPassword(std::string_view name, const Secret& password) {
    std::optional<Account> account = find(name);
    std::string hash = nobodysHash();
    if (account) {
        Cursor row = findHash.run(account->id);
        hash = row.next() ? row.text(0) : hash;
    }
    return matchesPassword(password, hash) ? account : std::nullopt;
}

std::optional<Account> Accounts::checkBlob(std::string_view name, const Secret& blob) {
    std::optional<Account> account = find(name);
    // Only the digest is looked up, so the time of the search tells nothing of the blob.
    Cursor row = findBlob.run(account ? account->id : 0, digestOf(blob));
    return row.next() ? account : std::nullopt;
}

std::string Accounts::issueBlob(std::int64_t account) {
    std::string blob = randomText(blobBytes);
    Transaction transaction(database);
    insertBlob.execute(account, digestOf(Secret(blob.c_str())));
    pruneBlobs.execute(account);
    transaction.commit();
    return blob;
}

void Accounts::remember(std::int64_t account) {
    for (const Account& candidate : all()) {
        if (candidate.id == account) {
            setSetting(rememberedSetting, candidate.name);
        }
    }
}

void Accounts::forget() {
    deleteSetting.execute(rememberedSetting);
}

std::optional<Account> Accounts::remembered() {
    const std::optional<std::string> name = setting(rememberedSetting);
    return name ? find(*name) : std::nullopt;
}

void Accounts::setSetting(const char* name, std::string_view value) {
    putSetting.execute(name, value);
}

std::optional<std::string> Accounts::setting(const char* name) {
    Cursor row = getSetting.run(name);
    return row.next() ? std::optional<std::string>(row.text(0)) : std::nullopt;
}

void Accounts::recordPlay(std::int64_t account, const Id& track) {
    insertPlay.execute(account, track);
    mostPlayed = -1;
}

int Accounts::popularity(const Id& track) {
    if (const std::int64_t now = version(); mostPlayed < 0 || mostPlayedVersion != now) {
        Cursor row = mostPlays.run();
        mostPlayed = row.next() ? row.integer(0) : 0;
        mostPlayedVersion = now;
    }
    Cursor row = countPlays.run(track);
    const std::int64_t plays = row.next() ? row.integer(0) : 0;
    if (plays <= 0 || mostPlayed <= 0) {
        return 0;
    }
    const double share =
        std::log1p(static_cast<double>(plays)) / std::log1p(static_cast<double>(mostPlayed));
    return std::clamp(static_cast<int>(std::lround(100 * share)), 1, 100);
}

void Accounts::takePlayToken(std::int64_t account, const std::string& token) {
    putToken.execute(account, token);
}

std::string Accounts::playToken(std::int64_t account) {
    Cursor row = getToken.run(account);
    return row.next() ? row.text(0) : std::string();
}

}  // namespace sonolet::service
