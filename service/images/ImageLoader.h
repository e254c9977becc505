#ifndef SONOLET_SERVICE_IMAGES_IMAGE_LOADER_H
#define SONOLET_SERVICE_IMAGES_IMAGE_LOADER_H

#include "images/ImageCache.h"
#include "source/Source.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// Turns an image id into the image: from the cache, else from the source's picture, which is
// scaled, put on white and kept in the cache.
//
// Threads: belongs to one thread at a time. `log` is told what is wrong with the cache, which no
// image fails for. Borrows the flag, which ends a load that is under way.
class ImageLoader final {
public:
    using Log = std::function<void(std::string)>;

    // Where pictures come from, of a catalogue's file.
    using Open = std::function<std::unique_ptr<Pictures>(const std::string& catalogue)>;

    // Nothing is opened yet: the cache's folder is made and the catalogue is opened when the first
    // image is loaded.
    ImageLoader(const std::string& cacheFolder,
                std::string catalogue,
                Open openPictures,
                Log logLine,
                const StopFlag& stopFlag);

    // From the next load on.
    void setCatalogue(const std::string& file) {
        catalogueFile = file;
        pictures.reset();
    }
    // 0: as much as seems right. What is too much goes at once.
    void setCacheSize(std::uint64_t megabytes) { cache.setLimit(megabytes); }

    // `id` is 20 bytes: the picture's digest and the size. The JPEG, or nothing when the catalogue
    // has no such picture or the size is none. Throws std::exception when there is one that cannot
    // be read, is no picture, or was given up because of the flag. Takes up to some hundred
    // milliseconds for a picture that is not kept yet.
    std::optional<std::string> load(const std::string& id);

private:
    std::string catalogueFile;
    const Open open;
    const Log log;
    const StopFlag& stop;
    ImageCache cache;
    std::unique_ptr<Pictures> pictures;  // opened on first use
};

}  // namespace sonolet::service

#endif
