#ifndef SONOLET_SERVICE_FOLDER_FOLDER_PICTURES_H
#define SONOLET_SERVICE_FOLDER_FOLDER_PICTURES_H

#include "source/Source.h"
#include "store/Database.h"

#include <optional>
#include <string>

namespace sonolet::service {

// Finds the pictures that are covers of the catalogue's albums: in a music file's tags, or in a
// file beside it.
//
// Threads: belongs to one thread at a time. Errors: DatabaseError, and std::runtime_error when the
// files with a picture are gone or have changed. The catalogue must have been opened as Catalogue
// before.
class FolderPictures final : public Pictures {
public:
    // Borrows the flag; once it is set nothing is found.
    FolderPictures(const std::string& catalogueFile,
                   std::string musicFolder,
                   const StopFlag& stopFlag);

    std::optional<std::string> find(const std::string& digest, int longerSide) override;

private:
    const std::string music;
    const StopFlag& stop;
    Database database;
    Statement listFiles;
};

}  // namespace sonolet::service

#endif
