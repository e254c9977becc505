#include "libspotify/api.h"

// Searches are not served: none begins, so every handle is NULL.

sp_search* sp_search_create(sp_session*,
                            const char*,
                            int,
                            int,
                            int,
                            int,
                            int,
                            int,
                            int,
                            int,
                            sp_search_type,
                            search_complete_cb*,
                            void*) {
    return nullptr;
}

bool sp_search_is_loaded(sp_search*) {
    return false;
}

sp_error sp_search_error(sp_search*) {
    return SP_ERROR_INVALID_INDATA;
}

const char* sp_search_query(sp_search*) {
    return nullptr;
}

const char* sp_search_did_you_mean(sp_search*) {
    return nullptr;
}

int sp_search_num_tracks(sp_search*) {
    return 0;
}

sp_track* sp_search_track(sp_search*, int) {
    return nullptr;
}

int sp_search_num_albums(sp_search*) {
    return 0;
}

sp_album* sp_search_album(sp_search*, int) {
    return nullptr;
}

int sp_search_num_artists(sp_search*) {
    return 0;
}

sp_artist* sp_search_artist(sp_search*, int) {
    return nullptr;
}

int sp_search_num_playlists(sp_search*) {
    return 0;
}

sp_playlist* sp_search_playlist(sp_search*, int) {
    return nullptr;
}

const char* sp_search_playlist_name(sp_search*, int) {
    return nullptr;
}

const char* sp_search_playlist_uri(sp_search*, int) {
    return nullptr;
}

const char* sp_search_playlist_image_uri(sp_search*, int) {
    return nullptr;
}

int sp_search_total_tracks(sp_search*) {
    return 0;
}

int sp_search_total_albums(sp_search*) {
    return 0;
}

int sp_search_total_artists(sp_search*) {
    return 0;
}

int sp_search_total_playlists(sp_search*) {
    return 0;
}

sp_error sp_search_add_ref(sp_search*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_search_release(sp_search*) {
    return SP_ERROR_INVALID_INDATA;
}
