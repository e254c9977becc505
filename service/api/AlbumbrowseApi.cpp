#include "libspotify/api.h"

// Albums cannot be browsed: no request begins, so every handle is NULL.

sp_albumbrowse* sp_albumbrowse_create(sp_session*, sp_album*, albumbrowse_complete_cb*, void*) {
    return nullptr;
}

bool sp_albumbrowse_is_loaded(sp_albumbrowse*) {
    return false;
}

sp_error sp_albumbrowse_error(sp_albumbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_album* sp_albumbrowse_album(sp_albumbrowse*) {
    return nullptr;
}

sp_artist* sp_albumbrowse_artist(sp_albumbrowse*) {
    return nullptr;
}

int sp_albumbrowse_num_copyrights(sp_albumbrowse*) {
    return 0;
}

const char* sp_albumbrowse_copyright(sp_albumbrowse*, int) {
    return nullptr;
}

int sp_albumbrowse_num_tracks(sp_albumbrowse*) {
    return 0;
}

sp_track* sp_albumbrowse_track(sp_albumbrowse*, int) {
    return nullptr;
}

sp_error sp_albumbrowse_add_ref(sp_albumbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_albumbrowse_release(sp_albumbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}
