#ifndef SONOLET_SERVICE_CATALOGUE_TOUCHED_H
#define SONOLET_SERVICE_CATALOGUE_TOUCHED_H

#include "catalogue/WordIndex.h"
#include "store/Database.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace sonolet::service {

// A digest as a column has it: NULL for none.
std::optional<Blob> digestOrNull(const std::string& digest);

// What a batch of changes has touched, and what follows from that for the catalogue: the links of
// tracks with the same tags, what albums and artists are in sum, and the words by which all of them
// are found. It follows once for a batch, however many tracks of an album have changed.
//
// Threads: as its database's; inside a transaction. Errors: DatabaseError.
class Touched final {
public:
    // The tables are there; `database` outlives this.
    explicit Touched(Database& database);

    // Nothing is touched yet.
    void begin();

    // Notes that a track is about to change or has changed.
    void touch(std::int64_t track);
    // To be called before what is known of a track's words changes.
    void unindex(std::int64_t track);
    // Has the words of a new track indexed with the others.
    void indexLater(std::int64_t track) { unindexedTracks.insert(track); }

    // Brings up to date what follows. Once, when all is changed.
    void finish();

private:
    // Among files with the same tags the first by path has the link of the tags.
    void giveLinks(const Id& key);
    // What an album is in sum: its year, type, cover, and whether any of it is there.
    void summarise(std::int64_t album);
    void updateSummary(std::int64_t album);
    void summariseArtist(std::int64_t artist);

    Statement findTouched;
    Statement listGroup;
    Statement updateLink;
    Statement deleteTrack;
    Statement sumAlbum;
    Statement findReleaseType;
    Statement findCover;
    Statement updateAlbum;
    Statement loseAlbum;
    Statement listTouchedArtists;
    Statement artistOfAlbum;
    Statement findAvailability;
    Statement updateArtist;
    WordIndex index;

    std::set<Id> touchedKeys;
    std::set<std::int64_t> touchedAlbums;
    std::set<std::int64_t> touchedArtists;
    std::set<std::int64_t> unindexedTracks;
};

}  // namespace sonolet::service

#endif
