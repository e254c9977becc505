#include "catalogue/Catalogue.h"

namespace sonolet::service {

namespace {

// A row of tracks is a file. Files whose tags say the same share a key; the order of their paths
// tells them apart, and gives each its link. Rows of files that went away stay, so that what a user
// kept still has its name. Times are nanoseconds.
constexpr char catalogueSchema[] = R"(
CREATE TABLE folders(
    id INTEGER PRIMARY KEY,
    path TEXT NOT NULL UNIQUE,
    present INTEGER NOT NULL,
    picture TEXT,
    picture_size INTEGER,
    picture_time INTEGER,
    picture_digest BLOB);
CREATE TABLE artists(
    id INTEGER PRIMARY KEY,
    link BLOB NOT NULL UNIQUE,
    name TEXT NOT NULL);
CREATE TABLE albums(
    id INTEGER PRIMARY KEY,
    link BLOB NOT NULL UNIQUE,
    artist_id INTEGER NOT NULL REFERENCES artists(id),
    name TEXT NOT NULL,
    year INTEGER NOT NULL DEFAULT 0,
    type INTEGER NOT NULL DEFAULT 3,
    available INTEGER NOT NULL DEFAULT 0,
    cover BLOB);
CREATE INDEX albums_by_artist ON albums(artist_id);
CREATE INDEX albums_by_cover ON albums(cover);
CREATE TABLE tracks(
    id INTEGER PRIMARY KEY,
    folder_id INTEGER NOT NULL REFERENCES folders(id),
    name TEXT NOT NULL,
    size INTEGER NOT NULL,
    time INTEGER NOT NULL,
    present INTEGER NOT NULL,
    key BLOB NOT NULL,
    link BLOB UNIQUE,
    album_id INTEGER NOT NULL REFERENCES albums(id),
    title TEXT NOT NULL,
    disc INTEGER NOT NULL,
    number INTEGER NOT NULL,
    total INTEGER NOT NULL,
    year INTEGER NOT NULL,
    duration INTEGER NOT NULL,
    compilation INTEGER NOT NULL,
    release_type TEXT NOT NULL,
    copyright TEXT NOT NULL,
    picture_digest BLOB,
    UNIQUE(folder_id, name));
CREATE INDEX tracks_by_key ON tracks(key);
CREATE INDEX tracks_by_album ON tracks(album_id, disc, number);
CREATE TABLE track_artists(
    track_id INTEGER NOT NULL REFERENCES tracks(id) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    artist_id INTEGER NOT NULL REFERENCES artists(id),
    PRIMARY KEY(track_id, position)) WITHOUT ROWID;
CREATE INDEX tracks_by_artist ON track_artists(artist_id);
CREATE TABLE skipped(
    folder_id INTEGER NOT NULL REFERENCES folders(id),
    name TEXT NOT NULL,
    size INTEGER NOT NULL,
    time INTEGER NOT NULL,
    PRIMARY KEY(folder_id, name)) WITHOUT ROWID;
)";

// What can be found by its words. A view has the texts of what is available, its index their words;
// whoever changes a row of a view takes it out of the index before and puts it back after. The
// tracks' year is a word, so that a span of years is found as words are.
constexpr char searchSchema[] = R"(
ALTER TABLE artists ADD COLUMN available INTEGER NOT NULL DEFAULT 0;
UPDATE artists SET available =
    id IN (SELECT artist_id FROM albums WHERE available) OR
    id IN (SELECT ta.artist_id FROM track_artists ta JOIN tracks t ON t.id = ta.track_id
           WHERE t.present);
CREATE VIEW track_texts(id, title, artist, album, year) AS
    SELECT t.id, t.title,
        (SELECT group_concat(name, ' ') FROM (
            SELECT name FROM artists WHERE id = al.artist_id
            UNION SELECT ar.name FROM track_artists ta JOIN artists ar ON ar.id = ta.artist_id
                  WHERE ta.track_id = t.id)),
        al.name, CASE WHEN t.year > 0 THEN printf('%04d', t.year) END
    FROM tracks t JOIN albums al ON al.id = t.album_id WHERE t.present;
CREATE VIEW album_texts(id, name, artist, year) AS
    SELECT al.id, al.name, ar.name, CASE WHEN al.year > 0 THEN printf('%04d', al.year) END
    FROM albums al JOIN artists ar ON ar.id = al.artist_id WHERE al.available;
CREATE VIEW artist_texts(id, name) AS SELECT id, name FROM artists WHERE available;
CREATE VIRTUAL TABLE track_index USING fts5(title, artist, album, year,
    content='track_texts', content_rowid='id', prefix='1 2 3',
    tokenize='unicode61 remove_diacritics 2');
CREATE VIRTUAL TABLE album_index USING fts5(name, artist, year,
    content='album_texts', content_rowid='id', prefix='1 2 3',
    tokenize='unicode61 remove_diacritics 2');
CREATE VIRTUAL TABLE artist_index USING fts5(name,
    content='artist_texts', content_rowid='id', prefix='1 2 3',
    tokenize='unicode61 remove_diacritics 2');
INSERT INTO track_index(track_index) VALUES('rebuild');
INSERT INTO album_index(album_index) VALUES('rebuild');
INSERT INTO artist_index(artist_index) VALUES('rebuild');
)";

}  // namespace

void migrateCatalogue(Database& database) {
    database.migrate({catalogueSchema, searchSchema});
}

std::string setCatalogueAside(const DatabaseError& damage) {
    const std::string aside = Database::setAside(damage, Database::Aside::newest);
    return std::string(damage.what()) + "; " +
           (aside.empty() ? "it is whole again" : "it is kept as " + aside + " and made again");
}

std::unique_ptr<Catalogue> Catalogue::openOrBegin(const std::string& file,
                                                  const std::function<void(std::string)>& log) {
    try {
        return std::make_unique<Catalogue>(file);
    } catch (const DatabaseError& error) {
        if (!error.damaged()) {
            throw;
        }
        log(setCatalogueAside(error));
    }
    return std::make_unique<Catalogue>(file);
}

Catalogue::Migration::Migration(Database& database) {
    migrateCatalogue(database);
}

Catalogue::Catalogue(const std::string& file)
    : database(file, Database::Durability::process), migration(database),
      findTrack(database,
                "SELECT t.id, t.title, a.link, t.disc, t.number, t.duration, t.present, f.path,"
                " t.name FROM tracks t JOIN albums a ON a.id = t.album_id"
                " JOIN folders f ON f.id = t.folder_id WHERE t.link = ?1"),
      findArtists(database,
                  "SELECT a.link FROM track_artists ta JOIN artists a ON a.id = ta.artist_id"
                  " WHERE ta.track_id = ?1 ORDER BY ta.position"),
      findAlbum(database,
                "SELECT al.name, ar.link, al.year, al.type, al.available, al.cover FROM albums al"
                " JOIN artists ar ON ar.id = al.artist_id WHERE al.link = ?1"),
      findArtist(database, "SELECT id, name FROM artists WHERE link = ?1"),
      findPortrait(database,
                   "SELECT cover FROM albums WHERE artist_id = ?1 AND available AND cover IS NOT"
                   " NULL ORDER BY year = 0, year, name LIMIT 1"),
      listTracks(database,
                 "SELECT t.link FROM tracks t JOIN albums al ON al.id = t.album_id"
                 " JOIN artists ar ON ar.id = al.artist_id WHERE t.present"
                 " ORDER BY ar.name, al.year, al.name, t.disc, t.number, t.title, t.link") {}

std::optional<TrackRow> Catalogue::track(const Id& id) {
    Cursor row = findTrack.run(id);
    if (!row.next()) {
        return std::nullopt;
    }
    TrackRow track;
    track.title = row.text(1);
    track.album = row.id(2).value_or(Id());
    track.disc = static_cast<int>(row.integer(3));
    track.number = static_cast<int>(row.integer(4));
    track.durationMs = static_cast<int>(row.integer(5));
    track.available = row.integer(6) != 0;
    const std::string folder = row.text(7);
    track.path = folder.empty() ? row.text(8) : folder + '/' + row.text(8);
    for (Cursor artist = findArtists.run(row.integer(0)); artist.next();) {
        track.artists.push_back(artist.id(0).value_or(Id()));
    }
    return track;
}

std::optional<AlbumRow> Catalogue::album(const Id& id) {
    Cursor row = findAlbum.run(id);
    if (!row.next()) {
        return std::nullopt;
    }
    AlbumRow album;
    album.name = row.text(0);
    album.artist = row.id(1).value_or(Id());
    album.year = static_cast<int>(row.integer(2));
    album.type = static_cast<int>(row.integer(3));
    album.available = row.integer(4) != 0;
    album.cover = row.text(5);
    return album;
}

std::optional<ArtistRow> Catalogue::artist(const Id& id) {
    Cursor row = findArtist.run(id);
    if (!row.next()) {
        return std::nullopt;
    }
    ArtistRow artist;
    artist.name = row.text(1);
    if (Cursor cover = findPortrait.run(row.integer(0)); cover.next()) {
        artist.portrait = cover.text(0);
    }
    return artist;
}

std::vector<Id> Catalogue::tracks() {
    std::vector<Id> links;
    for (Cursor row = listTracks.run(); row.next();) {
        links.push_back(row.id(0).value_or(Id()));
    }
    return links;
}

}  // namespace sonolet::service
