#include "server/SeenWriter.h"

#include "catalogue/Catalogue.h"
#include "catalogue/Touched.h"

#include "libspotify/api.h"

#include <tuple>

namespace sonolet::service {

namespace {

constexpr char unknownArtist[] = "Unknown artist";
constexpr char unknownAlbum[] = "Unknown album";

// Without a word of the server, a release of up to this many songs is a single.
constexpr int songsOfSingle = 2;

sp_albumtype typeOf(const AlbumItem& album) {
    if (album.compilation || normalised(album.artist.name) == "various artists") {
        return SP_ALBUMTYPE_COMPILATION;
    }
    return album.songs > 0 && album.songs <= songsOfSingle ? SP_ALBUMTYPE_SINGLE
                                                           : SP_ALBUMTYPE_ALBUM;
}

// Something that the server names without an id is known by its name.
std::string idOf(const ArtistItem& artist) {
    return artist.id.empty() ? "name " + normalised(artist.name) : artist.id;
}
std::string idOf(const AlbumItem& album) {
    return album.id.empty()
               ? "name " + normalised(album.artist.name) + '\n' + normalised(album.name)
               : album.id;
}

}  // namespace

SeenWriter::Migration::Migration(Database& database) {
    migrateCatalogue(database);
    database.execute("INSERT OR IGNORE INTO folders(id, path, present) VALUES(1, '', 1)");
}

SeenWriter::SeenWriter(const std::string& catalogueFile, ServerStore& serverStore)
    : store(serverStore), database(catalogueFile, Database::Durability::process),
      migration(database),
      findArtist(database, "SELECT id, name, available FROM artists WHERE link = ?1"),
      insertArtist(database,
                   "INSERT INTO artists(link, name, available) VALUES(?1, ?2, 1) RETURNING id"),
      updateArtist(database, "UPDATE artists SET name = ?2, available = 1 WHERE id = ?1"),
      findAlbum(database,
                "SELECT id, name, artist_id, year, type, available, cover FROM albums"
                " WHERE link = ?1"),
      insertAlbum(database,
                  "INSERT INTO albums(link, artist_id, name, year, type, available, cover)"
                  " VALUES(?1, ?2, ?3, ?4, ?5, 1, ?6) RETURNING id"),
      updateAlbum(database,
                  "UPDATE albums SET name = ?2, artist_id = ?3, year = ?4, type = ?5,"
                  " available = 1, cover = ?6 WHERE id = ?1"),
      albumsOfArtist(database, "SELECT id FROM albums WHERE artist_id = ?1"),
      tracksOfAlbum(database, "SELECT id FROM tracks WHERE album_id = ?1"),
      tracksOfArtist(database,
                     "SELECT track_id FROM track_artists WHERE artist_id = ?1"
                     " UNION SELECT t.id FROM tracks t JOIN albums a ON a.id = t.album_id"
                     " WHERE a.artist_id = ?1"),
      findTrack(database,
                "SELECT id, name, size, present, album_id, title, disc, number, year, duration"
                " FROM tracks WHERE link = ?1"),
      putTrack(database,
               "INSERT INTO tracks(folder_id, name, size, time, present, key, link, album_id,"
               " title, disc, number, total, year, duration, compilation, release_type, copyright)"
               " VALUES(1, ?1, ?2, 0, 1, ?3, ?3, ?4, ?5, ?6, ?7, 0, ?8, ?9, 0, '', '')"
               " ON CONFLICT(link) DO UPDATE SET name = excluded.name, size = excluded.size,"
               " present = 1, album_id = excluded.album_id, title = excluded.title,"
               " disc = excluded.disc, number = excluded.number, year = excluded.year,"
               " duration = excluded.duration RETURNING id"),
      loseTrack(database, "UPDATE tracks SET present = 0 WHERE id = ?1"),
      listArtists(database,
                  "SELECT artist_id FROM track_artists WHERE track_id = ?1 ORDER BY position"),
      deleteArtists(database, "DELETE FROM track_artists WHERE track_id = ?1"),
      insertTrackArtist(
          database,
          "INSERT OR IGNORE INTO track_artists(track_id, position, artist_id) VALUES(?1, ?2, ?3)"),
      index(database) {}

void SeenWriter::write(const Seen& seen) {
    // The links first: a catalogue without them could not be asked about.
    store.together([&] {
        Transaction transaction(database);
        for (const ArtistItem& item : seen.artists) {
            artist(item);
        }
        for (const AlbumItem& item : seen.albums) {
            album(item, true);
        }
        for (const SongItem& item : seen.songs) {
            song(item);
        }
        transaction.commit();
    });
}

template <typename Change>
void SeenWriter::reindexed(const std::vector<std::int64_t>& tracks,
                           const std::vector<std::int64_t>& albums,
                           Change change) {
    for (const std::int64_t track : tracks) {
        index.tracks.remove(track);
    }
    for (const std::int64_t album : albums) {
        index.albums.remove(album);
    }
    change();
    for (const std::int64_t album : albums) {
        index.albums.add(album);
    }
    for (const std::int64_t track : tracks) {
        index.tracks.add(track);
    }
}

namespace {

std::vector<std::int64_t> rowsOf(Cursor cursor) {
    std::vector<std::int64_t> rows;
    while (cursor.next()) {
        rows.push_back(cursor.integer(0));
    }
    return rows;
}

}  // namespace

SeenWriter::Row SeenWriter::artist(const ArtistItem& item) {
    const Id link = store.link(SP_LINKTYPE_ARTIST, idOf(item));
    const std::string name = item.name.empty() ? unknownArtist : item.name;
    std::int64_t id = 0;
    bool isSame = false;
    if (Cursor row = findArtist.run(link); row.next()) {
        id = row.integer(0);
        isSame = row.text(1) == name && row.integer(2) != 0;
    }
    if (isSame) {
        return {id, false};
    }
    if (id == 0) {
        id = rowsOf(insertArtist.run(link, name)).at(0);
        index.artists.add(id);
        return {id, true};
    }
    index.artists.remove(id);
    reindexed(rowsOf(tracksOfArtist.run(id)), rowsOf(albumsOfArtist.run(id)),
              [&] { updateArtist.execute(id, name); });
    index.artists.add(id);
    return {id, false};
}

SeenWriter::Row SeenWriter::album(const AlbumItem& item, bool whole) {
    const Id link = store.link(SP_LINKTYPE_ALBUM, idOf(item));
    const std::string name = item.name.empty() ? unknownAlbum : item.name;
    std::int64_t id = 0;
    std::int64_t artistRow = 0;
    std::tuple<std::string, std::int64_t, std::int64_t, std::int64_t, bool, std::string> before;
    if (Cursor row = findAlbum.run(link); row.next()) {
        id = row.integer(0);
        artistRow = row.integer(2);
        before = {row.text(1),    artistRow,           row.integer(3),
                  row.integer(4), row.integer(5) != 0, row.text(6)};
    }
    if (id != 0 && !whole && std::get<bool>(before)) {
        return {id, false};  // a song knows nothing better
    }
    if (whole || id == 0) {
        artistRow = artist(item.artist).id;
    }
    const std::string cover = store.coverDigest(item.cover);
    const auto type = static_cast<std::int64_t>(whole ? typeOf(item) : SP_ALBUMTYPE_UNKNOWN);
    if (id == 0) {
        id = rowsOf(insertAlbum.run(link, artistRow, name, item.year, type, digestOrNull(cover)))
                 .at(0);
        index.albums.add(id);
        return {id, true};
    }
    if (before != std::tuple(name, artistRow, std::int64_t{item.year}, type, true, cover)) {
        reindexed(rowsOf(tracksOfAlbum.run(id)), {id}, [&] {
            updateAlbum.execute(id, name, artistRow, item.year, type, digestOrNull(cover));
        });
    }
    return {id, false};
}

void SeenWriter::song(const SongItem& item) {
    const Id link = store.link(SP_LINKTYPE_TRACK, item.id);
    const std::int64_t albumRow = album(item.album, false).id;
    std::vector<std::int64_t> artists;
    artists.reserve(item.artists.size());
    for (const ArtistItem& each : item.artists) {
        artists.push_back(artist(each).id);
    }
    const std::string path = item.id + '.' + item.suffix;
    const std::string title = item.title.empty() ? item.id : item.title;
    std::int64_t id = 0;
    bool isSame = false;
    if (Cursor row = findTrack.run(link); row.next()) {
        id = row.integer(0);
        isSame =
            std::tuple(row.text(1), row.integer(2), row.integer(3), row.integer(4), row.text(5),
                       row.integer(6), row.integer(7), row.integer(8), row.integer(9)) ==
            std::tuple(path, item.size, std::int64_t{1}, albumRow, title, std::int64_t{item.disc},
                       std::int64_t{item.number}, std::int64_t{item.year},
                       std::int64_t{item.durationMs});
    }
    if (isSame && rowsOf(listArtists.run(id)) == artists) {
        return;
    }
    if (id != 0) {
        index.tracks.remove(id);
    }
    id = rowsOf(putTrack.run(path, item.size, link, albumRow, title, item.disc, item.number,
                             item.year, item.durationMs))
             .at(0);
    deleteArtists.execute(id);
    std::int64_t position = 0;
    for (const std::int64_t each : artists) {
        insertTrackArtist.execute(id, position++, each);
    }
    index.tracks.add(id);
}

void SeenWriter::lose(sp_linktype kind, const Id& link) {
    if (kind != SP_LINKTYPE_TRACK) {
        return;
    }
    Transaction transaction(database);
    if (const std::vector<std::int64_t> rows = rowsOf(findTrack.run(link)); !rows.empty()) {
        index.tracks.remove(rows.front());
        loseTrack.execute(rows.front());
    }
    transaction.commit();
}

}  // namespace sonolet::service
