#include "api/Api.h"
#include "images/Image.h"

#include <string>

using namespace sonolet::service;

// The names of the interface. NOLINTBEGIN(readability-identifier-naming)
sp_image* sp_image_create(sp_session* session, const byte* image_id) {
    return guardedOr<sp_image*>(nullptr, [&]() -> sp_image* {
        const std::shared_ptr<Session> living = sessionOf(session);
        if (living == nullptr || image_id == nullptr) {
            return nullptr;
        }
        constexpr std::size_t idSize = 20;
        return living->image(std::string(image_id, image_id + idSize)).detach();
    });
}
// NOLINTEND(readability-identifier-naming)

sp_error sp_image_add_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata) {
    return ask(image, SP_ERROR_INVALID_INDATA, [&](Image& asked) {
        if (callback == nullptr) {
            return SP_ERROR_INVALID_INDATA;
        }
        asked.addCallback(callback, userdata);
        return SP_ERROR_OK;
    });
}

sp_error sp_image_remove_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata) {
    return ask(image, SP_ERROR_INVALID_INDATA, [&](Image& asked) {
        return asked.removeCallback(callback, userdata) ? SP_ERROR_OK : SP_ERROR_INVALID_INDATA;
    });
}

bool sp_image_is_loaded(sp_image* image) {
    return ask(image, false, [](const Image& asked) { return asked.isLoaded(); });
}

sp_error sp_image_error(sp_image* image) {
    return ask(image, SP_ERROR_INVALID_INDATA, [](const Image& asked) { return asked.error(); });
}

sp_imageformat sp_image_format(sp_image* image) {
    return ask(image, SP_IMAGE_FORMAT_UNKNOWN, [](const Image& asked) {
        return asked.data().empty() ? SP_IMAGE_FORMAT_UNKNOWN : SP_IMAGE_FORMAT_JPEG;
    });
}

const void* sp_image_data(sp_image* image, size_t* size) {
    const std::string* data = image == nullptr ? nullptr : &image->data();
    const bool present = data != nullptr && !data->empty();
    if (size != nullptr) {
        *size = present ? data->size() : 0;
    }
    return present ? data->data() : nullptr;
}

const byte* sp_image_image_id(sp_image* image) {
    return image == nullptr ? nullptr : image->id();
}

sp_error sp_image_add_ref(sp_image* image) {
    return addRef(image);
}

sp_error sp_image_release(sp_image* image) {
    return release(image);
}
