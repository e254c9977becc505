#ifndef SONOLET_IMAGE_ID_H
#define SONOLET_IMAGE_ID_H

#include "Handle.h"
#include "base64.h"
#include "jspp/result_context.h"

#include "libspotify/api.h"

constexpr unsigned imageIdSize = 20;  // bytes

// Answers an image's id as script keeps it, in Base64. Throws when libspotify answered none.
inline void returnImageId(const byte* id, jspp::result_context& context) {
    std::string text;
    base64_encode(retrieved(id), imageIdSize, text);
    context.return_string(text);
}

#endif
