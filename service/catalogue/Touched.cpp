#include "catalogue/Touched.h"

#include "libspotify/api.h"

#include <algorithm>
#include <vector>

namespace sonolet::service {

namespace {

// Without a tag that tells, a release of up to this many tracks is a single.
constexpr std::int64_t tracksOfSingle = 2;

// The first file of a key has the key as its link, the others links of their own.
Id linkOf(const Id& key, std::size_t place) {
    return place == 0 ? key : Id::digest({"copy", key.view(), std::to_string(place)});
}

sp_albumtype albumType(const std::string& releaseType, bool compilation, std::int64_t tracks) {
    if (compilation || releaseType.find("compilation") != std::string::npos) {
        return SP_ALBUMTYPE_COMPILATION;
    }
    if (releaseType.rfind("single", 0) == 0) {
        return SP_ALBUMTYPE_SINGLE;
    }
    if (!releaseType.empty()) {
        return SP_ALBUMTYPE_ALBUM;
    }
    return tracks <= tracksOfSingle ? SP_ALBUMTYPE_SINGLE : SP_ALBUMTYPE_ALBUM;
}

}  // namespace

std::optional<Blob> digestOrNull(const std::string& digest) {
    return digest.empty() ? std::nullopt : std::optional<Blob>(Blob{digest});
}

Touched::Touched(Database& database)
    : findTouched(database, "SELECT key, album_id FROM tracks WHERE id = ?1"),
      listGroup(database,
                "SELECT t.id, t.link, t.present, t.album_id FROM tracks t"
                " JOIN folders f ON f.id = t.folder_id WHERE t.key = ?1"
                " ORDER BY t.present DESC, f.path, t.name"),
      updateLink(database, "UPDATE tracks SET link = ?2 WHERE id = ?1"),
      deleteTrack(database, "DELETE FROM tracks WHERE id = ?1"),
      sumAlbum(database,
               "SELECT COUNT(*), MAX(total), MAX(compilation),"
               " COALESCE(MIN(CASE WHEN year > 0 THEN year END), 0)"
               " FROM tracks WHERE album_id = ?1 AND present"),
      findReleaseType(database,
                      "SELECT release_type FROM tracks WHERE album_id = ?1 AND present"
                      " AND release_type <> '' ORDER BY disc, number, link LIMIT 1"),
      findCover(database,
                "SELECT COALESCE(t.picture_digest, f.picture_digest) AS cover FROM tracks t"
                " JOIN folders f ON f.id = t.folder_id WHERE t.album_id = ?1 AND t.present"
                " AND cover IS NOT NULL ORDER BY t.disc, t.number, t.link LIMIT 1"),
      updateAlbum(
          database,
          "UPDATE albums SET available = 1, year = ?2, type = ?3, cover = ?4 WHERE id = ?1"),
      loseAlbum(database, "UPDATE albums SET available = 0 WHERE id = ?1"),
      listTouchedArtists(database, "SELECT artist_id FROM track_artists WHERE track_id = ?1"),
      artistOfAlbum(database, "SELECT artist_id FROM albums WHERE id = ?1"),
      findAvailability(
          database,
          "SELECT available, EXISTS(SELECT 1 FROM albums WHERE artist_id = ?1 AND available) OR"
          " EXISTS(SELECT 1 FROM track_artists ta JOIN tracks t ON t.id = ta.track_id"
          " WHERE ta.artist_id = ?1 AND t.present) FROM artists WHERE id = ?1"),
      updateArtist(database, "UPDATE artists SET available = ?2 WHERE id = ?1"), index(database) {}

void Touched::begin() {
    touchedKeys.clear();
    touchedAlbums.clear();
    touchedArtists.clear();
    unindexedTracks.clear();
}

void Touched::touch(std::int64_t track) {
    if (Cursor row = findTouched.run(track); row.next()) {
        touchedKeys.insert(row.id(0).value_or(Id()));
        touchedAlbums.insert(row.integer(1));
    }
    for (Cursor row = listTouchedArtists.run(track); row.next();) {
        touchedArtists.insert(row.integer(0));
    }
}

void Touched::unindex(std::int64_t track) {
    if (unindexedTracks.insert(track).second) {
        index.tracks.remove(track);
    }
}

void Touched::finish() {
    for (const Id& key : touchedKeys) {
        giveLinks(key);
    }
    for (const std::int64_t album : touchedAlbums) {
        summarise(album);
    }
    for (const std::int64_t artist : touchedArtists) {
        summariseArtist(artist);
    }
    for (const std::int64_t track : unindexedTracks) {
        index.tracks.add(track);
    }
}

void Touched::giveLinks(const Id& key) {
    struct Row {
        std::int64_t id;
        std::optional<Id> link;
        bool present;
    };
    std::vector<Row> rows;
    for (Cursor row = listGroup.run(key); row.next();) {
        rows.push_back({row.integer(0), row.id(1), row.integer(2) != 0});
        touchedAlbums.insert(row.integer(3));
    }
    // The absent ones are behind the present ones, and have nothing left to say beside them.
    std::size_t kept = 0;
    while (kept < rows.size() && (kept == 0 || rows[kept].present)) {
        ++kept;
    }
    for (std::size_t place = kept; place < rows.size(); ++place) {
        deleteTrack.execute(rows[place].id);
    }
    rows.resize(kept);
    // A link is free only when its last owner has let it go.
    for (std::size_t place = 0; place < kept; ++place) {
        if (rows[place].link && *rows[place].link != linkOf(key, place)) {
            updateLink.execute(rows[place].id, nullptr);
            rows[place].link.reset();
        }
    }
    for (std::size_t place = 0; place < kept; ++place) {
        if (!rows[place].link) {
            updateLink.execute(rows[place].id, linkOf(key, place));
        }
    }
}

void Touched::summarise(std::int64_t album) {
    index.albums.remove(album);
    updateSummary(album);
    index.albums.add(album);
    if (Cursor row = artistOfAlbum.run(album); row.next()) {
        touchedArtists.insert(row.integer(0));
    }
}

void Touched::updateSummary(std::int64_t album) {
    Cursor sum = sumAlbum.run(album);
    if (!sum.next() || sum.integer(0) == 0) {
        loseAlbum.execute(album);
        return;
    }
    std::string releaseType;
    if (Cursor row = findReleaseType.run(album); row.next()) {
        releaseType = row.text(0);
    }
    std::string cover;
    if (Cursor row = findCover.run(album); row.next()) {
        cover = row.text(0);
    }
    const std::int64_t tracks = std::max(sum.integer(0), sum.integer(1));
    const sp_albumtype type = albumType(releaseType, sum.integer(2) != 0, tracks);
    updateAlbum.execute(album, sum.integer(3), static_cast<int>(type), digestOrNull(cover));
}

void Touched::summariseArtist(std::int64_t artist) {
    bool before = false;
    bool available = false;
    if (Cursor row = findAvailability.run(artist); row.next()) {
        before = row.integer(0) != 0;
        available = row.integer(1) != 0;
    }
    if (before == available) {
        return;
    }
    if (before) {
        index.artists.remove(artist);
    }
    updateArtist.execute(artist, available);
    if (available) {
        index.artists.add(artist);
    }
}

}  // namespace sonolet::service
