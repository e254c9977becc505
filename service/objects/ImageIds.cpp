#include "objects/ImageIds.h"

#include "catalogue/Catalogue.h"

#include <algorithm>

namespace sonolet::service {

void ImageIds::set(const std::string& digest) {
    present = digest.size() == pictureDigestSize;
    if (!present) {
        return;
    }
    for (std::size_t size = 0; size < ids.size(); ++size) {
        std::copy(digest.begin(), digest.end(), ids[size].begin());
        ids[size].back() = static_cast<byte>(size);
    }
}

const byte* ImageIds::id(sp_image_size size) const {
    const auto place = static_cast<std::size_t>(size);
    return present && place < ids.size() ? ids[place].data() : nullptr;
}

}  // namespace sonolet::service
