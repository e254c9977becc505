#include "search/Browser.h"

#include <algorithm>
#include <utility>

namespace sonolet::service {

// ?1 a user, ?2 a country, ?3 the country of those who name none; each list has a hundred entries
// at most. The tracks of a user's favours that are gone count for nothing.
#define SONOLET_SCORES                                                                             \
    "WITH scores AS MATERIALIZED (SELECT track, SUM(score) AS score FROM temp.favours"             \
    " WHERE account_id IN (SELECT id FROM accounts.accounts WHERE (?1 IS NULL OR name = ?1)"       \
    " AND (?2 IS NULL OR COALESCE(country, ?3) = ?2)) GROUP BY track) "

Browser::Browser(Database& browsed)
    : database(browsed), findAlbum(database,
                                   "SELECT al.id, ar.link FROM albums al"
                                   " JOIN artists ar ON ar.id = al.artist_id"
                                   " WHERE al.link = ?1"),
      listAlbumTracks(database,
                      "SELECT link, copyright FROM tracks WHERE album_id = ?1 AND present"
                      " ORDER BY disc, number, title, link"),
      findArtist(database, "SELECT id FROM artists WHERE link = ?1"),
      listAlbums(database,
                 "SELECT al.link FROM albums al WHERE al.available AND (al.artist_id = ?1 OR al.id"
                 " IN (SELECT t.album_id FROM track_artists ta JOIN tracks t ON t.id = ta.track_id"
                 " WHERE ta.artist_id = ?1 AND t.present))"
                 " ORDER BY al.artist_id <> ?1, al.year = 0, al.year, al.name, al.link"),
      listTopTracks(database,
                    "SELECT t.link FROM track_artists ta JOIN tracks t ON t.id = ta.track_id"
                    " JOIN albums al ON al.id = t.album_id"
                    " WHERE ta.artist_id = ?1 AND t.present"
                    " ORDER BY COALESCE((SELECT SUM(score) FROM temp.favours WHERE track = t.link),"
                    " 0) DESC, al.year = 0, al.year, al.name, t.disc, t.number, t.title, t.link"
                    " LIMIT 20"),
      findUser(database, "SELECT 1 FROM accounts.accounts WHERE name = ?1"),
      trackList(database,
                SONOLET_SCORES "SELECT t.link FROM scores s JOIN tracks t ON t.link = s.track"
                               " WHERE t.present ORDER BY s.score DESC, t.title, t.link"
                               " LIMIT 100"),
      albumList(database,
                SONOLET_SCORES "SELECT al.link FROM scores s JOIN tracks t ON t.link = s.track"
                               " JOIN albums al ON al.id = t.album_id WHERE t.present"
                               " GROUP BY al.id ORDER BY SUM(s.score) DESC, al.name, al.link"
                               " LIMIT 100"),
      artistList(database,
                 SONOLET_SCORES "SELECT ar.link FROM scores s JOIN tracks t ON t.link = s.track"
                                " JOIN track_artists ta ON ta.track_id = t.id"
                                " JOIN artists ar ON ar.id = ta.artist_id WHERE t.present"
                                " GROUP BY ar.id ORDER BY SUM(s.score) DESC, ar.name, ar.link"
                                " LIMIT 100") {}

#undef SONOLET_SCORES

std::optional<AlbumContents> Browser::album(const Id& id) {
    const Snapshot snapshot(database);
    Cursor found = findAlbum.run(id);
    if (!found.next()) {
        return std::nullopt;
    }
    AlbumContents album;
    album.artist = found.id(1).value_or(Id());
    for (Cursor row = listAlbumTracks.run(found.integer(0)); row.next();) {
        album.tracks.push_back(row.id(0).value_or(Id()));
        std::string copyright = row.text(1);
        std::vector<std::string>& known = album.copyrights;
        if (!copyright.empty() && std::find(known.begin(), known.end(), copyright) == known.end()) {
            known.push_back(std::move(copyright));
        }
    }
    return album;
}

std::optional<ArtistContents> Browser::artist(const Id& id, bool withAlbums, bool withTracks) {
    const Snapshot snapshot(database);
    Cursor found = findArtist.run(id);
    if (!found.next()) {
        return std::nullopt;
    }
    const auto list = [&](Statement& statement) {
        std::vector<Id> links;
        for (Cursor row = statement.run(found.integer(0)); row.next();) {
            links.push_back(row.id(0).value_or(Id()));
        }
        return links;
    };
    ArtistContents artist;
    if (withAlbums) {
        artist.albums = list(listAlbums);
    }
    if (withTracks) {
        artist.topTracks = list(listTopTracks);
    }
    return artist;
}

bool Browser::hasUser(const std::string& canonicalName) {
    return findUser.run(canonicalName).next();
}

std::vector<Id> Browser::top(sp_toplisttype type, const ToplistScope& scope) {
    Statement& statement = type == SP_TOPLIST_TYPE_ARTISTS  ? artistList
                           : type == SP_TOPLIST_TYPE_ALBUMS ? albumList
                                                            : trackList;
    std::vector<Id> links;
    for (Cursor row = statement.run(scope.user, scope.country, scope.home); row.next();) {
        links.push_back(row.id(0).value_or(Id()));
    }
    return links;
}

}  // namespace sonolet::service
