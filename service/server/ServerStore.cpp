#include "server/ServerStore.h"

#include "catalogue/Catalogue.h"

namespace sonolet::service {

namespace {

// Kinds are those of links; covers have the one of images.
constexpr char serverSchema[] = R"(
CREATE TABLE items(
    kind INTEGER NOT NULL,
    link BLOB NOT NULL,
    id TEXT NOT NULL,
    PRIMARY KEY(kind, link)) WITHOUT ROWID;
CREATE INDEX items_by_id ON items(kind, id);
CREATE TABLE settings(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE bases(
    list BLOB PRIMARY KEY,
    name TEXT NOT NULL,
    comment TEXT NOT NULL,
    public INTEGER NOT NULL,
    version TEXT NOT NULL,
    songs BLOB NOT NULL) WITHOUT ROWID;
CREATE TABLE plays(
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    track BLOB NOT NULL,
    time INTEGER NOT NULL);
)";

// A list may be several users'.
constexpr char schemaOfUsers[] = R"(
DROP TABLE bases;
CREATE TABLE bases(
    user TEXT NOT NULL,
    list BLOB NOT NULL,
    name TEXT NOT NULL,
    comment TEXT NOT NULL,
    public INTEGER NOT NULL,
    version TEXT NOT NULL,
    songs BLOB NOT NULL,
    PRIMARY KEY(user, list)) WITHOUT ROWID;
)";

constexpr char digits[] = "0123456789abcdef";
constexpr std::size_t dashes[] = {8, 13, 18, 23};
constexpr std::size_t uuidLength = 36;

bool isDash(std::size_t place) {
    for (const std::size_t dash : dashes) {
        if (place == dash) {
            return true;
        }
    }
    return false;
}

std::string uuidOf(const Id& link) {
    std::string text;
    for (const unsigned char byte : link.bytes) {
        if (isDash(text.size())) {
            text += '-';
        }
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

// Only as a server writes it, so that the link leads back to the very text.
std::optional<Id> linkOfUuid(const std::string& text) {
    if (text.size() != uuidLength) {
        return std::nullopt;
    }
    Id link;
    std::size_t nibble = 0;
    for (std::size_t place = 0; place < uuidLength; ++place) {
        if (isDash(place)) {
            continue;
        }
        const auto digit = std::string_view(digits, 16).find(text[place]);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        link.bytes[nibble / 2] = static_cast<unsigned char>(link.bytes[nibble / 2] << 4 | digit);
        ++nibble;
    }
    return uuidOf(link) == text ? std::optional<Id>(link) : std::nullopt;
}

std::string nameOf(sp_linktype kind) {
    return std::to_string(static_cast<int>(kind));
}

}  // namespace

ServerStore::Migration::Migration(Database& database) {
    database.migrate({serverSchema, schemaOfUsers});
}

ServerStore::ServerStore(const std::string& file)
    : database(file, Database::Durability::power), migration(database),
      insertItem(database, "INSERT OR IGNORE INTO items(kind, link, id) VALUES(?1, ?2, ?3)"),
      putItem(database, "INSERT OR REPLACE INTO items(kind, link, id) VALUES(?1, ?2, ?3)"),
      findItem(database, "SELECT id FROM items WHERE kind = ?1 AND link = ?2"),
      findLink(database, "SELECT link FROM items WHERE kind = ?1 AND id = ?2"),
      putSetting(database, "INSERT OR REPLACE INTO settings(name, value) VALUES(?1, ?2)"),
      getSetting(database, "SELECT value FROM settings WHERE name = ?1"),
      deleteSetting(database, "DELETE FROM settings WHERE name = ?1"),
      putBase(database,
              "INSERT OR REPLACE INTO bases(user, list, name, comment, public, version, songs)"
              " VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)"),
      getBase(database,
              "SELECT name, comment, public, version, songs FROM bases"
              " WHERE user = ?1 AND list = ?2"),
      deleteBase(database, "DELETE FROM bases WHERE user = ?1 AND list = ?2"),
      listBases(database, "SELECT list FROM bases WHERE user = ?1"),
      insertPlay(database, "INSERT INTO plays(track, time) VALUES(?1, ?2)"),
      findPlay(database, "SELECT number, track, time FROM plays ORDER BY number LIMIT 1"),
      deletePlay(database, "DELETE FROM plays WHERE number = ?1") {}

Id ServerStore::link(sp_linktype kind, const std::string& serverId) {
    if (const std::optional<Id> link = linkOfUuid(serverId)) {
        return *link;
    }
    const Id link = Id::digest({"server", nameOf(kind), serverId});
    if (!findItem.run(static_cast<int>(kind), link).next()) {
        insertItem.execute(static_cast<int>(kind), link, serverId);
    }
    return link;
}

std::string ServerStore::serverId(sp_linktype kind, const Id& link) {
    Cursor row = findItem.run(static_cast<int>(kind), link);
    return row.next() ? row.text(0) : uuidOf(link);
}

std::string ServerStore::coverDigest(const std::string& cover) {
    if (cover.empty()) {
        return {};
    }
    std::string digest = sha1("cover of a server: " + cover).substr(0, pictureDigestSize);
    constexpr int kind = SP_LINKTYPE_IMAGE;
    if (!findItem.run(kind, Blob{digest}).next()) {
        insertItem.execute(kind, Blob{digest}, cover);
    }
    return digest;
}

std::optional<std::string> ServerStore::cover(const std::string& digest) {
    Cursor row = findItem.run(static_cast<int>(SP_LINKTYPE_IMAGE), Blob{digest});
    return row.next() ? std::optional<std::string>(row.text(0)) : std::nullopt;
}

std::optional<std::string> ServerStore::setting(const char* name) {
    Cursor row = getSetting.run(name);
    return row.next() ? std::optional<std::string>(row.text(0)) : std::nullopt;
}

void ServerStore::setSetting(const char* name, std::string_view value) {
    value.empty() ? deleteSetting.execute(name) : putSetting.execute(name, value);
}

std::optional<ServerStore::Base> ServerStore::base(const std::string& user, const Id& list) {
    Cursor row = getBase.run(user, list);
    if (!row.next()) {
        return std::nullopt;
    }
    Base base;
    base.name = row.text(0);
    base.comment = row.text(1);
    base.isPublic = row.integer(2) != 0;
    base.version = row.text(3);
    const std::string songs = row.text(4);
    const std::size_t size = Id().bytes.size();
    for (std::size_t place = 0; place + size <= songs.size(); place += size) {
        base.songs.push_back(Id::fromBytes(songs.substr(place, size)).value_or(Id()));
    }
    return base;
}

void ServerStore::setBase(const std::string& user, const Id& list, const Base& base) {
    std::string songs;
    for (const Id& song : base.songs) {
        songs += song.view();
    }
    putBase.execute(user, list, base.name, base.comment, base.isPublic, base.version, Blob{songs});
}

void ServerStore::forgetBase(const std::string& user, const Id& list) {
    deleteBase.execute(user, list);
}

std::vector<Id> ServerStore::bases(const std::string& user) {
    std::vector<Id> lists;
    for (Cursor row = listBases.run(user); row.next();) {
        lists.push_back(row.id(0).value_or(Id()));
    }
    return lists;
}

void ServerStore::setListId(const Id& list, const std::string& serverId) {
    putItem.execute(static_cast<int>(SP_LINKTYPE_PLAYLIST), list, serverId);
}

Id ServerStore::listOf(const std::string& serverId) {
    if (Cursor row = findLink.run(static_cast<int>(SP_LINKTYPE_PLAYLIST), serverId); row.next()) {
        return row.id(0).value_or(Id());
    }
    return link(SP_LINKTYPE_PLAYLIST, serverId);
}

void ServerStore::addPlay(const Id& track, std::int64_t timeMs) {
    insertPlay.execute(track, timeMs);
}

std::optional<ServerStore::Play> ServerStore::oldestPlay() {
    Cursor row = findPlay.run();
    if (!row.next()) {
        return std::nullopt;
    }
    return Play{row.integer(0), row.id(1).value_or(Id()), row.integer(2)};
}

void ServerStore::removePlay(std::int64_t number) {
    deletePlay.execute(number);
}

}  // namespace sonolet::service
