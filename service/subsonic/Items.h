#ifndef SONOLET_SERVICE_SUBSONIC_ITEMS_H
#define SONOLET_SERVICE_SUBSONIC_ITEMS_H

#include "subsonic/Reply.h"

#include <cstdint>
#include <string>
#include <vector>

// What answers are about, as values. Ids are the server's texts, of which nothing can be told but
// whether they are the same; an empty one stands for something that cannot be asked for. Texts are
// as Reply's; an empty one, and a number of 0, is what the server does not say.
//
// Threads: any. Errors: none; an answer of another form has empty items.
namespace sonolet::service {

struct ArtistItem {
    std::string id;
    std::string name;
};

struct AlbumItem {
    std::string id;
    std::string name;
    ArtistItem artist;
    std::string cover;
    int year = 0;
    int songs = 0;  // 0: unknown
    bool compilation = false;
};

struct SongItem {
    std::string id;
    std::string title;
    std::vector<ArtistItem> artists;  // one at least, maybe without a name
    AlbumItem album;                  // what a song says of it: no songs, no kind
    std::string cover;
    std::string suffix;  // of the original file, in lower case
    int disc = 1;
    int number = 0;  // on its disc, from 1
    int year = 0;
    int durationMs = 0;      // whole seconds
    std::int64_t size = -1;  // bytes; negative: unknown
    std::int64_t plays = 0;
    std::int64_t starred = 0;  // microseconds since 1970; 0: it is not
};

struct PlaylistItem {
    std::string id;
    std::string name;
    std::string owner;  // empty: the one who asks
    std::string comment;
    bool isPublic = false;
    // Different when the playlist is; of a server that says nothing of the kind always the same.
    std::string version;
    bool tellsChanges = false;    // the server says when it was changed
    std::vector<SongItem> songs;  // none in an overview of all playlists
};

ArtistItem readArtist(const Reply& reply);
AlbumItem readAlbum(const Reply& reply);
SongItem readSong(const Reply& reply);
PlaylistItem readPlaylist(const Reply& reply);

// Of lists what has an id, in their order.
std::vector<ArtistItem> readArtists(const Reply& list);
std::vector<AlbumItem> readAlbums(const Reply& list);
std::vector<SongItem> readSongs(const Reply& list);
std::vector<PlaylistItem> readPlaylists(const Reply& list);

}  // namespace sonolet::service

#endif
