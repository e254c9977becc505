#ifndef SONOLET_SERVICE_CATALOGUE_CATALOGUE_WRITER_H
#define SONOLET_SERVICE_CATALOGUE_CATALOGUE_WRITER_H

#include "catalogue/Catalogue.h"
#include "catalogue/Touched.h"
#include "music/Tags.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sonolet::service {

// By which a file is known not to have changed: nobody reads it again while both are as they were.
struct FileStamp {
    std::int64_t size = 0;
    // Of the last change, in nanoseconds since 1970.
    std::int64_t time = 0;

    bool operator==(const FileStamp& other) const {
        return size == other.size && time == other.time;
    }
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
};

// A file that the catalogue knows.
struct KnownFile {
    // Its row; 0: the file was skipped, and is until it changes.
    std::int64_t track = 0;
    FileStamp stamp;
    bool present = false;
};

// A folder's own picture, which serves the files that carry none.
struct FolderPicture {
    std::string name;  // empty: there is none
    FileStamp stamp;
    std::string digest;
};

// A folder that the catalogue knows, with the files that are or were in it. Not present: it had no
// music when it was last seen, or was not there.
struct KnownFolder {
    bool present = false;
    FolderPicture picture;
    std::unordered_map<std::string, KnownFile> files;
};

// A file that was read. What it is called is relative to the folder of music; its picture's bytes
// are left behind, the digest stands for them.
struct ScannedFile {
    std::string folder;
    std::string name;
    FileStamp stamp;
    // None: it cannot be read, which is known of it too.
    std::optional<Tags> tags;
    std::string pictureDigest;
};

// What a scan has found since it last wrote. A scan that dies between two batches has said nothing
// of the later one; the next scan finds it again.
struct ScanBatch {
    std::vector<ScannedFile> files;
    // Tracks whose files are back, unchanged.
    std::vector<std::int64_t> appeared;
    // Tracks whose files are gone.
    std::vector<std::int64_t> vanished;
    // Skipped files that are gone, by folder and name.
    std::vector<std::pair<std::string, std::string>> unskipped;
    std::vector<std::pair<std::string, FolderPicture>> pictures;
    std::vector<std::string> foldersFound;
    std::vector<std::string> foldersLost;

    bool empty() const;
};

// Writes what a scan finds. What the catalogue says in the end depends on the files alone, not on
// the order or the number of scans that found them.
//
// Threads: belongs to the scanning thread. Errors: DatabaseError.
class CatalogueWriter final {
public:
    // Makes the file, or brings its tables up to date.
    explicit CatalogueWriter(const std::string& file);

    // Empty for one that the catalogue does not know. Paths of folders are relative to the folder
    // of music, with "/" between and none at the end; the folder of music itself is "".
    KnownFolder folder(const std::string& path);
    // The paths of the folders that had music when they were last seen. In no order.
    std::vector<std::string> folders();
    // How many tracks have a file now: what the log tells in the end.
    std::int64_t presentTracks();

    // All or nothing: one transaction, at whose end links, sums and words agree with the files.
    // Other connections see all of it or nothing; who writes meanwhile waits.
    void apply(const ScanBatch& batch);

private:
    // The row of that name, made if there is none.
    std::int64_t folderId(const std::string& path);
    std::int64_t artistId(const std::string& name);
    std::int64_t albumId(const std::string& artist, const std::string& name);
    void store(const ScannedFile& file);
    void skip(const ScannedFile& file);
    void setPresent(std::int64_t track, bool present);
    void setPicture(const std::string& path, const FolderPicture& picture);
    void loseFolder(const std::string& path);

    Database database;
    struct Migration {
        explicit Migration(Database& database);
    } migration;
    Touched touched;
    Statement findFolder;
    Statement insertFolder;
    Statement listFolders;
    Statement listFiles;
    Statement listSkipped;
    Statement countTracks;
    Statement insertArtist;
    Statement findArtist;
    Statement insertAlbum;
    Statement findAlbum;
    Statement findFile;
    Statement putTrack;
    Statement deleteArtists;
    Statement insertTrackArtist;
    Statement insertSkipped;
    Statement deleteSkipped;
    Statement updatePresent;
    Statement updatePicture;
    Statement updateFolder;
    Statement tracksOfFolder;
    Statement deleteSkippedOfFolder;
};

}  // namespace sonolet::service

#endif
