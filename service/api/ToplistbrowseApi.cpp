#include "libspotify/api.h"

// Top lists are not kept: no request begins, so every handle is NULL.

sp_toplistbrowse* sp_toplistbrowse_create(
    sp_session*, sp_toplisttype, sp_toplistregion, const char*, toplistbrowse_complete_cb*, void*) {
    return nullptr;
}

bool sp_toplistbrowse_is_loaded(sp_toplistbrowse*) {
    return false;
}

sp_error sp_toplistbrowse_error(sp_toplistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

int sp_toplistbrowse_num_artists(sp_toplistbrowse*) {
    return 0;
}

sp_artist* sp_toplistbrowse_artist(sp_toplistbrowse*, int) {
    return nullptr;
}

int sp_toplistbrowse_num_albums(sp_toplistbrowse*) {
    return 0;
}

sp_album* sp_toplistbrowse_album(sp_toplistbrowse*, int) {
    return nullptr;
}

int sp_toplistbrowse_num_tracks(sp_toplistbrowse*) {
    return 0;
}

sp_track* sp_toplistbrowse_track(sp_toplistbrowse*, int) {
    return nullptr;
}

sp_error sp_toplistbrowse_add_ref(sp_toplistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_toplistbrowse_release(sp_toplistbrowse*) {
    return SP_ERROR_INVALID_INDATA;
}
