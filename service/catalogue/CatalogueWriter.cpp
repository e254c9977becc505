#include "catalogue/CatalogueWriter.h"

#include <algorithm>

namespace sonolet::service {

namespace {

constexpr char unknownArtist[] = "Unknown artist";
constexpr char unknownAlbum[] = "Unknown album";
constexpr char variousArtists[] = "Various Artists";

std::string withoutEnding(const std::string& fileName) {
    return fileName.substr(0, fileName.rfind('.'));
}

std::string albumArtistOf(const Tags& tags) {
    if (!tags.albumArtist.empty()) {
        return tags.albumArtist;
    }
    if (tags.compilation) {
        return variousArtists;
    }
    return tags.artists.empty() ? unknownArtist : tags.artists.front();
}

// What the tags say of which track this is. A file without a title is told apart by its place.
Id keyOf(const ScannedFile& file, const std::string& albumArtist) {
    const Tags& tags = *file.tags;
    std::string artists;
    for (const std::string& artist : tags.artists) {
        artists += normalised(artist) + '\n';
    }
    return Id::digest({"track", normalised(albumArtist), normalised(tags.album), artists,
                       normalised(tags.title), std::to_string(std::max(1, tags.disc)),
                       std::to_string(tags.number),
                       tags.title.empty() ? file.folder + '/' + file.name : ""});
}

}  // namespace

bool ScanBatch::empty() const {
    return files.empty() && appeared.empty() && vanished.empty() && unskipped.empty() &&
           pictures.empty() && foldersFound.empty() && foldersLost.empty();
}

CatalogueWriter::Migration::Migration(Database& database) {
    migrateCatalogue(database);
}

CatalogueWriter::CatalogueWriter(const std::string& file)
    : database(file, Database::Durability::process), migration(database), touched(database),
      findFolder(database,
                 "SELECT id, present, picture, picture_size, picture_time, picture_digest"
                 " FROM folders WHERE path = ?1"),
      insertFolder(database, "INSERT INTO folders(path, present) VALUES(?1, 1)"),
      listFolders(database, "SELECT path FROM folders WHERE present"),
      listFiles(database, "SELECT name, id, size, time, present FROM tracks WHERE folder_id = ?1"),
      listSkipped(database, "SELECT name, size, time FROM skipped WHERE folder_id = ?1"),
      countTracks(database, "SELECT COUNT(*) FROM tracks WHERE present"),
      insertArtist(database, "INSERT OR IGNORE INTO artists(link, name) VALUES(?1, ?2)"),
      findArtist(database, "SELECT id FROM artists WHERE link = ?1"),
      insertAlbum(database,
                  "INSERT OR IGNORE INTO albums(link, artist_id, name) VALUES(?1, ?2, ?3)"),
      findAlbum(database, "SELECT id FROM albums WHERE link = ?1"),
      findFile(database, "SELECT id FROM tracks WHERE folder_id = ?1 AND name = ?2"),
      putTrack(database,
               "INSERT INTO tracks(folder_id, name, size, time, present, key, album_id, title,"
               " disc, number, total, year, duration, compilation, release_type, copyright,"
               " picture_digest)"
               " VALUES(?1, ?2, ?3, ?4, 1, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16)"
               " ON CONFLICT(folder_id, name) DO UPDATE SET size = excluded.size,"
               " time = excluded.time, present = 1, key = excluded.key, link = NULL,"
               " album_id = excluded.album_id, title = excluded.title, disc = excluded.disc,"
               " number = excluded.number, total = excluded.total, year = excluded.year,"
               " duration = excluded.duration, compilation = excluded.compilation,"
               " release_type = excluded.release_type, copyright = excluded.copyright,"
               " picture_digest = excluded.picture_digest"
               " RETURNING id"),
      deleteArtists(database, "DELETE FROM track_artists WHERE track_id = ?1"),
      insertTrackArtist(
          database,
          "INSERT OR IGNORE INTO track_artists(track_id, position, artist_id) VALUES(?1, ?2, ?3)"),
      insertSkipped(
          database,
          "INSERT OR REPLACE INTO skipped(folder_id, name, size, time) VALUES(?1, ?2, ?3, ?4)"),
      deleteSkipped(database, "DELETE FROM skipped WHERE folder_id = ?1 AND name = ?2"),
      updatePresent(database, "UPDATE tracks SET present = ?2 WHERE id = ?1"),
      updatePicture(database,
                    "UPDATE folders SET picture = ?2, picture_size = ?3, picture_time = ?4,"
                    " picture_digest = ?5 WHERE id = ?1"),
      updateFolder(database, "UPDATE folders SET present = ?2 WHERE id = ?1"),
      tracksOfFolder(database, "SELECT id FROM tracks WHERE folder_id = ?1 AND present"),
      deleteSkippedOfFolder(database, "DELETE FROM skipped WHERE folder_id = ?1") {}

KnownFolder CatalogueWriter::folder(const std::string& path) {
    KnownFolder folder;
    Cursor row = findFolder.run(path);
    if (!row.next()) {
        return folder;
    }
    const std::int64_t id = row.integer(0);
    folder.present = row.integer(1) != 0;
    folder.picture = FolderPicture{row.text(2), {row.integer(3), row.integer(4)}, row.text(5)};
    for (Cursor file = listFiles.run(id); file.next();) {
        folder.files[file.text(0)] =
            KnownFile{file.integer(1), {file.integer(2), file.integer(3)}, file.integer(4) != 0};
    }
    // A file that became unreadable has a track of old as well; what was seen last counts.
    for (Cursor file = listSkipped.run(id); file.next();) {
        folder.files[file.text(0)] = KnownFile{0, {file.integer(1), file.integer(2)}, true};
    }
    return folder;
}

std::vector<std::string> CatalogueWriter::folders() {
    std::vector<std::string> paths;
    for (Cursor row = listFolders.run(); row.next();) {
        paths.push_back(row.text(0));
    }
    return paths;
}

std::int64_t CatalogueWriter::presentTracks() {
    Cursor row = countTracks.run();
    return row.next() ? row.integer(0) : 0;
}

void CatalogueWriter::apply(const ScanBatch& batch) {
    touched.begin();
    Transaction transaction(database);
    for (const std::string& path : batch.foldersFound) {
        updateFolder.execute(folderId(path), true);
    }
    for (const auto& [path, picture] : batch.pictures) {
        setPicture(path, picture);
    }
    for (const ScannedFile& file : batch.files) {
        file.tags ? store(file) : skip(file);
    }
    for (const std::int64_t track : batch.appeared) {
        setPresent(track, true);
    }
    for (const std::int64_t track : batch.vanished) {
        setPresent(track, false);
    }
    for (const auto& [path, name] : batch.unskipped) {
        deleteSkipped.execute(folderId(path), name);
    }
    for (const std::string& path : batch.foldersLost) {
        loseFolder(path);
    }
    touched.finish();
    transaction.commit();
}

std::int64_t CatalogueWriter::folderId(const std::string& path) {
    if (Cursor row = findFolder.run(path); row.next()) {
        return row.integer(0);
    }
    insertFolder.execute(path);
    return sqlite3_last_insert_rowid(database.handle());
}

std::int64_t CatalogueWriter::artistId(const std::string& name) {
    const Id link = Id::digest({"artist", normalised(name)});
    insertArtist.execute(link, name);
    Cursor row = findArtist.run(link);
    return row.next() ? row.integer(0) : 0;
}

std::int64_t CatalogueWriter::albumId(const std::string& artist, const std::string& name) {
    const Id link = Id::digest({"album", normalised(artist), normalised(name)});
    insertAlbum.execute(link, artistId(artist), name);
    Cursor row = findAlbum.run(link);
    return row.next() ? row.integer(0) : 0;
}

void CatalogueWriter::store(const ScannedFile& file) {
    const Tags& tags = *file.tags;
    const std::int64_t folder = folderId(file.folder);
    const std::string albumArtist = albumArtistOf(tags);
    const std::int64_t album = albumId(albumArtist, tags.album.empty() ? unknownAlbum : tags.album);
    if (Cursor before = findFile.run(folder, file.name); before.next()) {
        touched.unindex(before.integer(0));
        touched.touch(before.integer(0));
    }
    std::int64_t track = 0;
    {
        Cursor row = putTrack.run(
            folder, file.name, file.stamp.size, file.stamp.time, keyOf(file, albumArtist), album,
            tags.title.empty() ? withoutEnding(file.name) : tags.title, std::max(1, tags.disc),
            tags.number, tags.numberOfTracks, tags.year, tags.durationMs, tags.compilation,
            tags.releaseType, tags.copyright, digestOrNull(file.pictureDigest));
        while (row.next()) {
            track = row.integer(0);
        }
    }
    touched.indexLater(track);
    deleteArtists.execute(track);
    std::int64_t position = 0;
    for (const std::string& artist : tags.artists) {
        insertTrackArtist.execute(track, position++, artistId(artist));
    }
    if (tags.artists.empty()) {
        insertTrackArtist.execute(track, 0, artistId(albumArtist));
    }
    touched.touch(track);
    deleteSkipped.execute(folder, file.name);
}

void CatalogueWriter::skip(const ScannedFile& file) {
    const std::int64_t folder = folderId(file.folder);
    insertSkipped.execute(folder, file.name, file.stamp.size, file.stamp.time);
    std::int64_t track = 0;
    if (Cursor row = findFile.run(folder, file.name); row.next()) {
        track = row.integer(0);
    }
    if (track != 0) {
        setPresent(track, false);
    }
}

void CatalogueWriter::setPresent(std::int64_t track, bool present) {
    touched.unindex(track);
    touched.touch(track);
    updatePresent.execute(track, present);
}

void CatalogueWriter::setPicture(const std::string& path, const FolderPicture& picture) {
    const std::int64_t folder = folderId(path);
    updatePicture.execute(folder, picture.name, picture.stamp.size, picture.stamp.time,
                          digestOrNull(picture.digest));
    for (Cursor row = tracksOfFolder.run(folder); row.next();) {
        touched.touch(row.integer(0));
    }
}

void CatalogueWriter::loseFolder(const std::string& path) {
    const std::int64_t folder = folderId(path);
    std::vector<std::int64_t> tracks;
    for (Cursor row = tracksOfFolder.run(folder); row.next();) {
        tracks.push_back(row.integer(0));
    }
    for (const std::int64_t track : tracks) {
        setPresent(track, false);
    }
    deleteSkippedOfFolder.execute(folder);
    updateFolder.execute(folder, false);
}

}  // namespace sonolet::service
