#ifndef SONOLET_SERVICE_CATALOGUE_CATALOGUE_H
#define SONOLET_SERVICE_CATALOGUE_CATALOGUE_H

#include "store/Database.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// The first 19 bytes of the SHA-1 of a picture. An image id is this with the size behind it, so
// that the picture and the wanted size are found from the id alone.
inline constexpr std::size_t pictureDigestSize = 19;

// What is beside the music and larger than this is no cover.
inline constexpr std::int64_t largestPicture = 32 << 20;

// What the catalogue says of one thing, as it was when it was read. Texts are UTF-8; a number that
// no tag tells is 0. Available: a file of it was there when it was last scanned.
struct TrackRow {
    std::string title;
    std::vector<Id> artists;
    Id album;
    int disc = 0;
    int number = 0;
    int durationMs = 0;
    bool available = false;
    std::string path;  // relative to the folder of music
};

struct AlbumRow {
    std::string name;
    Id artist;
    int year = 0;
    int type = 0;  // sp_albumtype
    bool available = false;
    std::string cover;  // pictureDigestSize bytes or none
};

struct ArtistRow {
    std::string name;
    std::string portrait;  // pictureDigestSize bytes or none
};

// The line that tells how a damaged catalogue made room: a copy of it stands beside an empty one,
// which a scan fills. Throws as Database::setAside.
std::string setCatalogueAside(const DatabaseError& damage);

// Makes the catalogue's tables, or brings them up to date.
void migrateCatalogue(Database& database);

// Reads the catalogue, row by row, on demand.
//
// Threads: belongs to one thread at a time; a scan writes through a connection of its own. Errors:
// DatabaseError.
class Catalogue final {
public:
    // Makes the file, or brings its tables up to date. A damaged one is an error here.
    explicit Catalogue(const std::string& file);

    // Nothing for what the catalogue does not have. What is gone is there still, and not available.
    std::optional<TrackRow> track(const Id& id);
    std::optional<AlbumRow> album(const Id& id);
    std::optional<ArtistRow> artist(const Id& id);

    // The available tracks, by artist, album, disc and number. All of them in memory: 16 bytes
    // each.
    std::vector<Id> tracks();

    // Opens the catalogue. A damaged one is set aside and begun anew, since it can be made again
    // from the music; `log` says so.
    static std::unique_ptr<Catalogue> openOrBegin(const std::string& file,
                                                  const std::function<void(std::string)>& log);

    // Changes whenever a scan, of this process or another, has changed the catalogue. Compared for
    // being the same and nothing else; good among calls on one object.
    std::int64_t version() { return database.dataVersion(); }

private:
    Database database;
    struct Migration {
        explicit Migration(Database& database);
    } migration;
    Statement findTrack;
    Statement findArtists;
    Statement findAlbum;
    Statement findArtist;
    Statement findPortrait;
    Statement listTracks;
};

}  // namespace sonolet::service

#endif
