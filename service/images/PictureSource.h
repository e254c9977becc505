#ifndef SONOLET_SERVICE_IMAGES_PICTURE_SOURCE_H
#define SONOLET_SERVICE_IMAGES_PICTURE_SOURCE_H

#include "music/MusicFile.h"
#include "store/Database.h"

#include <optional>
#include <string>

namespace sonolet::service {

// Finds the pictures that are covers of the catalogue's albums: in a music file's tags, or in a
// file beside it.
//
// Threads: belongs to one thread at a time. Errors: DatabaseError. The catalogue must have been
// opened as Catalogue before.
class PictureSource final {
public:
    // Borrows the flag; once it is set nothing is found.
    PictureSource(const std::string& catalogueFile,
                  std::string musicFolder,
                  const StopFlag& stopFlag);

    // The picture's bytes, or nothing when the catalogue has no such cover. `digest` is
    // pictureDigestSize bytes. Throws std::runtime_error when the files with it are gone or have
    // changed.
    std::optional<std::string> find(const std::string& digest);

private:
    const std::string music;
    const StopFlag& stop;
    Database database;
    Statement listFiles;
};

}  // namespace sonolet::service

#endif
