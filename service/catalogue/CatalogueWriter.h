#ifndef SONOLET_SERVICE_CATALOGUE_CATALOGUE_WRITER_H
#define SONOLET_SERVICE_CATALOGUE_CATALOGUE_WRITER_H

#include "catalogue/Catalogue.h"
#include "catalogue/Touched.h"
#include "music/Tags.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sonolet::service {

// By which a file is known not to have changed.
struct FileStamp {
    std::int64_t size = 0;
    std::int64_t time = 0;  // of the last change, in nanoseconds

    bool operator==(const FileStamp& other) const {
        return size == other.size && time == other.time;
    }
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
};

// A file that the catalogue knows.
struct KnownFile {
    std::int64_t track = 0;  // 0: it was skipped
    FileStamp stamp;
    bool present = false;
};

// A folder's own picture, which serves the files that carry none.
struct FolderPicture {
    std::string name;  // empty: there is none
    FileStamp stamp;
    std::string digest;
};

struct KnownFolder {
    bool present = false;
    FolderPicture picture;
    std::unordered_map<std::string, KnownFile> files;
};

// A file that was read.
struct ScannedFile {
    std::string folder;
    std::string name;
    FileStamp stamp;
    std::optional<Tags> tags;  // none: it cannot be read
    std::string pictureDigest;
};

// What a scan has found since it last wrote.
struct ScanBatch {
    std::vector<ScannedFile> files;
    std::vector<std::int64_t> appeared;  // tracks whose files are back, unchanged
    std::vector<std::int64_t> vanished;  // tracks whose files are gone
    std::vector<std::pair<std::string, std::string>> unskipped;  // folder and name, gone
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
    explicit CatalogueWriter(const std::string& file);

    KnownFolder folder(const std::string& path);
    // The paths of the folders that had music when they were last seen.
    std::vector<std::string> folders();
    std::int64_t presentTracks();

    // All or nothing.
    void apply(const ScanBatch& batch);

private:
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
