// Answers of music servers: read or refused, and what is read keeps its promises.

#include "Input.h"
#include "subsonic/Items.h"
#include "subsonic/Subsonic.h"

#include <glib.h>

namespace {

using namespace sonolet::service;

void check(const std::string& text) {
    require(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE,
            "a text is no UTF-8");
    for (const char character : text) {
        require(static_cast<unsigned char>(character) >= ' ', "a text has a control character");
    }
}

void check(const SongItem& song) {
    require(!song.id.empty(), "a song cannot be asked for");
    require(!song.artists.empty(), "a song is nobody's");
    require(song.durationMs >= 0 && song.disc > 0 && song.number >= 0 && song.plays >= 0,
            "a number is below what it counts");
    for (const std::string& text :
         {song.id, song.title, song.suffix, song.cover, song.album.name}) {
        check(text);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    static_cast<void>(Subsonic::errorOf(HttpHead{200, "application/json", {}, -1, 0, -1}, text));
    try {
        const Reply reply = Reply::parse(text)["subsonic-response"];
        for (const char* part :
             {"song", "album", "artist", "playlist", "searchResult3", "starred2"}) {
            const Reply inside = reply[part];
            for (const Reply& list : {inside, inside["song"], inside["entry"]}) {
                for (const SongItem& song : readSongs(list)) {
                    check(song);
                }
            }
            for (const AlbumItem& album : readAlbums(inside)) {
                require(album.year >= 0 && album.songs >= 0, "an album counts below nothing");
                check(album.name);
            }
            for (const ArtistItem& artist : readArtists(inside)) {
                check(artist.name);
            }
            for (const PlaylistItem& playlist : readPlaylists(inside)) {
                check(playlist.name + playlist.owner + playlist.comment);
            }
        }
    } catch (const Reply::Malformed&) {
        return 0;
    }
    return 0;
}
