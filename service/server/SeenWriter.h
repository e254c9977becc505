#ifndef SONOLET_SERVICE_SERVER_SEEN_WRITER_H
#define SONOLET_SERVICE_SERVER_SEEN_WRITER_H

#include "catalogue/WordIndex.h"
#include "server/ServerStore.h"
#include "store/Database.h"
#include "subsonic/Items.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sonolet::service {

// What answers of the server are about. A song brings its album and artists with it, so an answer
// about songs alone needs no more.
struct Seen {
    std::vector<ArtistItem> artists;
    std::vector<AlbumItem> albums;
    std::vector<SongItem> songs;
};

// Writes into the catalogue what the server has shown: so it has its name at once the next time,
// and when the server is away. What was written already is left alone. A song's row has
// "ID.SUFFIX" for its path, whatever the server calls its file.
//
// Threads: belongs to one at a time; each has its own. Errors: DatabaseError.
class SeenWriter final {
public:
    // The store, which gives the links, is borrowed; the catalogue's tables are there.
    SeenWriter(const std::string& catalogueFile, ServerStore& serverStore);

    // All or nothing. What stands in an answer by itself is said to be there still.
    void write(const Seen& seen);
    // The server has it no more, or hides it. A track keeps its name, and is found no more; of an
    // album or artist nothing changes here.
    void lose(sp_linktype kind, const Id& link);

private:
    // Of the catalogue's table for what was written.
    struct Row {
        std::int64_t id = 0;
        bool isNew = false;
    };

    Row artist(const ArtistItem& item);
    // `whole`: from an answer about albums, which says more than a song does.
    Row album(const AlbumItem& item, bool whole);
    void song(const SongItem& item);
    // `change` to rows whose names others are found by: words go by the texts of their moment, so
    // those of `tracks` and `albums` are taken out before it and put back behind it.
    template <typename Change>
    void reindexed(const std::vector<std::int64_t>& tracks,
                   const std::vector<std::int64_t>& albums,
                   Change change);

    ServerStore& store;
    Database database;
    struct Migration {
        explicit Migration(Database& database);
    } migration;
    Statement findArtist;
    Statement insertArtist;
    Statement updateArtist;
    Statement findAlbum;
    Statement insertAlbum;
    Statement updateAlbum;
    Statement albumsOfArtist;
    Statement tracksOfAlbum;
    Statement tracksOfArtist;
    Statement findTrack;
    Statement putTrack;
    Statement loseTrack;
    Statement listArtists;
    Statement deleteArtists;
    Statement insertTrackArtist;
    WordIndex index;
};

}  // namespace sonolet::service

#endif
