#include "subsonic/Items.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::size_t mostArtists = 100;
constexpr std::int64_t msPerSecond = 1000;

int small(const Reply& reply) {
    return static_cast<int>(
        std::clamp<std::int64_t>(reply.number(), 0, std::numeric_limits<int>::max() / msPerSecond));
}

// What has no id cannot be asked for.
template <typename Item, typename Read>
std::vector<Item> readAll(const Reply& list, Read read) {
    std::vector<Item> items;
    for (const Reply& element : list.list()) {
        Item item = read(element);
        if (!item.id.empty()) {
            items.push_back(std::move(item));
        }
    }
    return items;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return text;
}

}  // namespace

ArtistItem readArtist(const Reply& reply) {
    return {reply["id"].text(), reply["name"].text()};
}

AlbumItem readAlbum(const Reply& reply) {
    AlbumItem album;
    album.id = reply["id"].text();
    album.name = reply["name"].exists() ? reply["name"].text() : reply["title"].text();
    album.artist = {reply["artistId"].text(), reply["artist"].text()};
    album.cover = reply["coverArt"].text();
    album.year = small(reply["year"]);
    album.songs = small(reply["songCount"]);
    album.compilation = reply["isCompilation"].flag();
    for (const Reply& type : reply["releaseTypes"].list()) {
        album.compilation = album.compilation || lower(type.text()) == "compilation";
    }
    return album;
}

SongItem readSong(const Reply& reply) {
    SongItem song;
    song.id = reply["id"].text();
    song.title = reply["title"].text();
    for (const ArtistItem& artist : readArtists(reply["artists"])) {
        if (song.artists.size() < mostArtists) {
            song.artists.push_back(artist);
        }
    }
    if (song.artists.empty()) {
        song.artists.push_back({reply["artistId"].text(), reply["artist"].text()});
    }
    song.album.id = reply["albumId"].text();
    song.album.name = reply["album"].text();
    const std::vector<ArtistItem> albumArtists = readArtists(reply["albumArtists"]);
    song.album.artist = albumArtists.empty() ? song.artists.front() : albumArtists.front();
    song.album.year = small(reply["year"]);
    song.cover = reply["coverArt"].text();
    song.album.cover = song.cover;
    song.suffix = lower(reply["suffix"].text());
    song.disc = std::max(1, small(reply["discNumber"]));
    song.number = small(reply["track"]);
    song.year = song.album.year;
    song.durationMs = static_cast<int>(small(reply["duration"]) * msPerSecond);
    song.size = reply["size"].exists() ? reply["size"].number() : -1;
    song.plays = std::max<std::int64_t>(0, reply["playCount"].number());
    song.starred = reply["starred"].time();
    return song;
}

PlaylistItem readPlaylist(const Reply& reply) {
    PlaylistItem playlist;
    playlist.id = reply["id"].text();
    playlist.name = reply["name"].text();
    playlist.owner = reply["owner"].text();
    playlist.comment = reply["comment"].text();
    playlist.isPublic = reply["public"].flag();
    playlist.tellsChanges = reply["changed"].exists();
    playlist.version =
        reply["changed"].text() + '/' + reply["songCount"].text() + '/' + reply["duration"].text();
    playlist.songs = readSongs(reply["entry"]);
    return playlist;
}

std::vector<ArtistItem> readArtists(const Reply& list) {
    return readAll<ArtistItem>(list, readArtist);
}

std::vector<AlbumItem> readAlbums(const Reply& list) {
    return readAll<AlbumItem>(list, readAlbum);
}

std::vector<SongItem> readSongs(const Reply& list) {
    return readAll<SongItem>(list, readSong);
}

std::vector<PlaylistItem> readPlaylists(const Reply& list) {
    return readAll<PlaylistItem>(list, readPlaylist);
}

}  // namespace sonolet::service
