#ifndef SONOLET_SERVICE_IMAGES_IMAGE_LOADER_H
#define SONOLET_SERVICE_IMAGES_IMAGE_LOADER_H

#include "images/ImageCache.h"
#include "images/PictureSource.h"

#include <functional>
#include <optional>
#include <string>

namespace sonolet::service {

// Turns an image id into the image: from the cache, else from the picture in the music, which is
// scaled, put on white and kept in the cache.
//
// Threads: belongs to one thread at a time. `log` is told what is wrong with the cache, which no
// image fails for. Borrows the flag, which ends a load that is under way.
class ImageLoader final {
public:
    using Log = std::function<void(std::string)>;

    ImageLoader(const std::string& cacheFolder,
                std::string catalogue,
                std::string musicFolder,
                Log logLine,
                const StopFlag& stopFlag);

    void setCatalogue(const std::string& file) {
        catalogueFile = file;
        source.reset();
    }
    void setCacheSize(std::uint64_t megabytes) { cache.setLimit(megabytes); }

    // The JPEG, or nothing when there is no such image. Throws std::exception when there is one
    // that cannot be shown.
    std::optional<std::string> load(const std::string& id);

private:
    std::string catalogueFile;
    const std::string music;
    const Log log;
    const StopFlag& stop;
    ImageCache cache;
    std::optional<PictureSource> source;  // opened on first use
};

}  // namespace sonolet::service

#endif
