#ifndef SONOLET_SERVICE_SEARCH_BROWSER_H
#define SONOLET_SERVICE_SEARCH_BROWSER_H

#include "store/Database.h"

#include "libspotify/api.h"

#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// What an album is asked for beyond what its handle says.
struct AlbumContents {
    Id artist;
    std::vector<Id> tracks;  // by disc and number
    // Each once, in the order of the tracks.
    std::vector<std::string> copyrights;
};

// What an artist is asked for beyond what the handle says.
struct ArtistContents {
    std::vector<Id> albums;     // own ones by year, then by year those of others with tracks
    std::vector<Id> topTracks;  // the most played first
};

// Whose plays and stars a top list counts: everybody's, or those of one user or country.
struct ToplistScope {
    std::optional<std::string> user;     // canonical name
    std::optional<std::string> country;  // two letters
    std::string home;                    // the country of accounts that name none
};

// Lists what belongs to an album, an artist or a top list. Only what is available is listed, in an
// order that the tags, plays and stars alone decide. A star counts as much as five plays.
//
// `database` is the catalogue with the accounts attached. As for Database.
class Browser final {
public:
    explicit Browser(Database& browsed);

    // Nothing when the catalogue does not have it.
    std::optional<AlbumContents> album(const Id& id);
    // What is not wanted is not looked for, and is empty.
    std::optional<ArtistContents> artist(const Id& id, bool withAlbums, bool withTracks);

    // Whether there is such an account.
    bool hasUser(const std::string& canonicalName);
    // Up to a hundred, the most liked first; of equals the order is by name. What nobody in the
    // scope has played or starred is not in them.
    std::vector<Id> top(sp_toplisttype type, const ToplistScope& scope);

private:
    Database& database;
    Statement findAlbum;
    Statement listAlbumTracks;
    Statement findArtist;
    Statement listAlbums;
    Statement listTopTracks;
    Statement findUser;
    Statement trackList;
    Statement albumList;
    Statement artistList;
};

}  // namespace sonolet::service

#endif
