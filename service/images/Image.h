#ifndef SONOLET_SERVICE_IMAGES_IMAGE_H
#define SONOLET_SERVICE_IMAGES_IMAGE_H

#include "objects/Handle.h"

#include "libspotify/api.h"

#include <memory>
#include <string>
#include <vector>

namespace sonolet::service {

class Images;

// A picture in one size, known by its id. It is loaded once its outcome is there, good or bad.
//
// Threads: as for Handle. Ownership: keeps the session's images; the bytes that it hands out live
// as long as it does.
class Image : public Handle {
public:
    Image(std::shared_ptr<Images> owner, std::string imageId);
    ~Image() override;

    // 20 bytes.
    const byte* id() const { return reinterpret_cast<const byte*>(link.data()); }

    bool isLoaded() const { return outcome != SP_ERROR_IS_LOADING; }
    sp_error error() const { return outcome; }
    // A JPEG; empty while there is none.
    const std::string& data() const { return jpeg; }

    // Each addition is told once: when the image loads, or on the next look at events when it has.
    void addCallback(image_loaded_cb* callback, void* userdata);
    // Takes the oldest of equal additions back. False when there is none.
    bool removeCallback(image_loaded_cb* callback, void* userdata);

    // The first outcome stays.
    void finish(sp_error error, const std::string& loadedJpeg);
    // Tells those who were added before and have not been told. The caller holds a reference.
    void tell();

private:
    struct Listener {
        image_loaded_cb* callback;
        void* userdata;
        bool told;
    };

    sp_image* handle();

    // Constant after construction.
    const std::shared_ptr<Images> images;
    const std::string link;

    sp_error outcome = SP_ERROR_IS_LOADING;
    std::string jpeg;
    std::vector<Listener> listeners;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_image final : sonolet::service::Image {  // NOLINT(readability-identifier-naming)
    using Image::Image;
};

#endif
