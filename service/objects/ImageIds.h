#ifndef SONOLET_SERVICE_OBJECTS_IMAGE_IDS_H
#define SONOLET_SERVICE_OBJECTS_IMAGE_IDS_H

#include "libspotify/api.h"

#include <array>
#include <string>

namespace sonolet::service {

// The ids of one picture in its three sizes: the picture's digest and the size behind it. The bytes
// stay where they are while the picture is the same.
class ImageIds final {
public:
    // `digest` is pictureDigestSize bytes, or empty for no picture.
    void set(const std::string& digest);

    // 20 bytes, or NULL without a picture or for a size that is none. Borrowed: for a new picture
    // they change in place, and they go with this object.
    const byte* id(sp_image_size size) const;

private:
    bool present = false;
    std::array<std::array<byte, 20>, 3> ids{};
};

}  // namespace sonolet::service

#endif
