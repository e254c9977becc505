#include "libspotify/api.h"

// Pictures are not served: there is no image to ask for, so every handle is NULL.

sp_image* sp_image_create(sp_session*, const byte*) {
    return nullptr;
}

sp_error sp_image_add_load_callback(sp_image*, image_loaded_cb*, void*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_image_remove_load_callback(sp_image*, image_loaded_cb*, void*) {
    return SP_ERROR_INVALID_INDATA;
}

bool sp_image_is_loaded(sp_image*) {
    return false;
}

sp_error sp_image_error(sp_image*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_imageformat sp_image_format(sp_image*) {
    return SP_IMAGE_FORMAT_UNKNOWN;
}

const void* sp_image_data(sp_image*, size_t* size) {
    if (size != nullptr) {
        *size = 0;
    }
    return nullptr;
}

const byte* sp_image_image_id(sp_image*) {
    return nullptr;
}

sp_error sp_image_add_ref(sp_image*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_image_release(sp_image*) {
    return SP_ERROR_INVALID_INDATA;
}
