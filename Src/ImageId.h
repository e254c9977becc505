#ifndef SONOLET_IMAGE_ID_H
#define SONOLET_IMAGE_ID_H

#include "base64.h"

#include "libspotify/api.h"

#include <string>

// Images have ids of a fixed length, which libspotify hands out and takes back as bytes.
constexpr unsigned imageIdSize = 20;  // bytes

// An image's id as script keeps it, in Base64. REQUIRES: `id` is not null. Reads 20 bytes, and
// never fails but for memory.
inline std::string imageIdText(const byte* id) {
    std::string text;
    base64_encode(id, imageIdSize, text);
    return text;
}

#endif
