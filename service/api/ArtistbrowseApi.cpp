#include "libspotify/api.h"

// Artists cannot be browsed: no request begins, so every handle is NULL.

sp_artistbrowse* sp_artistbrowse_create(
    sp_session*, sp_artist*, sp_artistbrowse_type, artistbrowse_complete_cb*, void*) {
    return nullptr;
}

bool sp_artistbrowse_is_loaded(sp_artistbrowse*) {
    return false;
}

sp_error sp_artistbrowse_error(sp_artistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_artist* sp_artistbrowse_artist(sp_artistbrowse*) {
    return nullptr;
}

int sp_artistbrowse_num_albums(sp_artistbrowse*) {
    return 0;
}

sp_album* sp_artistbrowse_album(sp_artistbrowse*, int) {
    return nullptr;
}

int sp_artistbrowse_num_tophit_tracks(sp_artistbrowse*) {
    return 0;
}

sp_track* sp_artistbrowse_tophit_track(sp_artistbrowse*, int) {
    return nullptr;
}

sp_error sp_artistbrowse_add_ref(sp_artistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_artistbrowse_release(sp_artistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}
