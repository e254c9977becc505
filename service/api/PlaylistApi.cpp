#include "libspotify/api.h"

// Users have no playlists: there is none to ask for, so every handle is NULL.

sp_playlist* sp_session_inbox_create(sp_session*) {
    return nullptr;
}

sp_playlist* sp_session_starred_create(sp_session*) {
    return nullptr;
}

sp_playlist* sp_session_starred_for_user_create(sp_session*, const char*) {
    return nullptr;
}

sp_link* sp_link_create_from_playlist(sp_playlist*) {
    return nullptr;
}

sp_playlist* sp_playlist_create(sp_session*, sp_link*) {
    return nullptr;
}

bool sp_playlist_is_loaded(sp_playlist*) {
    return false;
}

sp_error sp_playlist_add_callbacks(sp_playlist*, sp_playlist_callbacks*, void*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlist_remove_callbacks(sp_playlist*, sp_playlist_callbacks*, void*) {
    return SP_ERROR_INVALID_INDATA;
}

int sp_playlist_num_tracks(sp_playlist*) {
    return 0;
}

sp_track* sp_playlist_track(sp_playlist*, int) {
    return nullptr;
}

int sp_playlist_track_create_time(sp_playlist*, int) {
    return 0;
}

sp_user* sp_playlist_track_creator(sp_playlist*, int) {
    return nullptr;
}

bool sp_playlist_track_seen(sp_playlist*, int) {
    return false;
}

sp_error sp_playlist_track_set_seen(sp_playlist*, int, bool) {
    return SP_ERROR_INVALID_INDATA;
}

const char* sp_playlist_track_message(sp_playlist*, int) {
    return nullptr;
}

const char* sp_playlist_name(sp_playlist*) {
    return nullptr;
}

sp_user* sp_playlist_owner(sp_playlist*) {
    return nullptr;
}

bool sp_playlist_is_collaborative(sp_playlist*) {
    return false;
}

sp_error sp_playlist_set_autolink_tracks(sp_playlist*, bool) {
    return SP_ERROR_INVALID_INDATA;
}

const char* sp_playlist_get_description(sp_playlist*) {
    return nullptr;
}

bool sp_playlist_get_image(sp_playlist*, byte*) {
    return false;
}

bool sp_playlist_has_pending_changes(sp_playlist*) {
    return false;
}

sp_error sp_playlist_add_tracks(sp_playlist*, sp_track* const*, int, int, sp_session*) {
    return SP_ERROR_INVALID_INDATA;
}

unsigned sp_playlist_num_subscribers(sp_playlist*) {
    return 0;
}

sp_subscribers* sp_playlist_subscribers(sp_playlist*) {
    return nullptr;
}

sp_error sp_playlist_subscribers_free(sp_subscribers*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlist_update_subscribers(sp_session*, sp_playlist*) {
    return SP_ERROR_INVALID_INDATA;
}

bool sp_playlist_is_in_ram(sp_session*, sp_playlist*) {
    return false;
}

sp_error sp_playlist_set_in_ram(sp_session*, sp_playlist*, bool) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlist_add_ref(sp_playlist*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlist_release(sp_playlist*) {
    return SP_ERROR_INVALID_INDATA;
}
