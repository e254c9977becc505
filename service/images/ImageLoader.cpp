#include "images/ImageLoader.h"

#include "catalogue/Catalogue.h"
#include "images/Jpeg.h"

#include <array>
#include <utility>

namespace sonolet::service {

namespace {

// Pixels of the longer side, by sp_image_size.
constexpr std::array<int, 3> longerSides = {300, 64, 640};

}  // namespace

ImageLoader::ImageLoader(const std::string& cacheFolder,
                         std::string catalogue,
                         Open openPictures,
                         Log logLine,
                         const StopFlag& stopFlag)
    : catalogueFile(std::move(catalogue)), open(std::move(openPictures)), log(std::move(logLine)),
      stop(stopFlag), cache(cacheFolder + "/images") {}

std::optional<std::string> ImageLoader::load(const std::string& id) {
    const auto size = static_cast<unsigned char>(id.back());
    if (size >= longerSides.size()) {
        return std::nullopt;
    }
    if (std::optional<std::string> cached = cache.find(id)) {
        return cached;
    }
    if (pictures == nullptr) {
        pictures = open(catalogueFile);
    }
    const std::optional<std::string> picture =
        pictures->find(id.substr(0, pictureDigestSize), longerSides[size]);
    if (!picture) {
        return std::nullopt;
    }
    std::string jpeg = scaledJpeg(*picture, longerSides[size], stop);
    try {
        cache.put(id, jpeg);
    } catch (const std::exception& error) {
        log(std::string("An image is not kept: ") + error.what());
    }
    return jpeg;
}

}  // namespace sonolet::service
