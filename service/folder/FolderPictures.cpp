#include "folder/FolderPictures.h"

#include "catalogue/Catalogue.h"
#include "music/MusicFile.h"
#include "music/Tags.h"

#include <set>
#include <stdexcept>
#include <utility>

namespace sonolet::service {

namespace {

std::optional<std::string> read(const std::string& path, bool embedded, const StopFlag& stop) {
    try {
        const MusicFile file(path);
        return embedded ? readTags(file, stop).picture : file.contents(largestPicture);
    } catch (const UnreadableFile&) {
        return std::nullopt;
    }
}

}  // namespace

FolderPictures::FolderPictures(const std::string& catalogueFile,
                               std::string musicFolder,
                               const StopFlag& stopFlag)
    : music(std::move(musicFolder)), stop(stopFlag),
      database(catalogueFile, Database::Durability::process),
      listFiles(database,
                "SELECT f.path, CASE WHEN t.picture_digest IS NULL THEN f.picture ELSE t.name END,"
                " t.picture_digest IS NOT NULL FROM albums al JOIN tracks t ON t.album_id = al.id"
                " JOIN folders f ON f.id = t.folder_id WHERE al.cover = ?1 AND t.present"
                " AND COALESCE(t.picture_digest, f.picture_digest) = ?1"
                " ORDER BY t.disc, t.number, t.link") {}

std::optional<std::string> FolderPictures::find(const std::string& digest, int) {
    std::set<std::string> tried;
    for (Cursor row = listFiles.run(Blob{digest}); row.next();) {
        const std::string folder = row.text(0);
        const std::string path =
            (folder.empty() ? music : music + '/' + folder) + '/' + row.text(1);
        if (!tried.insert(path).second) {
            continue;
        }
        auto picture = read(path, row.integer(2) != 0, stop);
        if (picture && sha1(*picture).compare(0, pictureDigestSize, digest) == 0) {
            return picture;
        }
    }
    if (tried.empty()) {
        return std::nullopt;
    }
    throw std::runtime_error("the picture is no longer in " + *tried.begin() +
                             (tried.size() > 1 ? " or the other files that had it" : ""));
}

}  // namespace sonolet::service
