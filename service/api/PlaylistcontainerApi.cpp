#include "libspotify/api.h"

// Users have no playlist containers: there is none to ask for, so every handle is NULL.

sp_playlistcontainer* sp_session_playlistcontainer(sp_session*) {
    return nullptr;
}

sp_playlistcontainer* sp_session_publishedcontainer_for_user_create(sp_session*, const char*) {
    return nullptr;
}

sp_error
sp_playlistcontainer_add_callbacks(sp_playlistcontainer*, sp_playlistcontainer_callbacks*, void*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlistcontainer_remove_callbacks(sp_playlistcontainer*,
                                               sp_playlistcontainer_callbacks*,
                                               void*) {
    return SP_ERROR_INVALID_INDATA;
}

int sp_playlistcontainer_num_playlists(sp_playlistcontainer*) {
    return 0;
}

bool sp_playlistcontainer_is_loaded(sp_playlistcontainer*) {
    return false;
}

sp_playlist* sp_playlistcontainer_playlist(sp_playlistcontainer*, int) {
    return nullptr;
}

sp_playlist_type sp_playlistcontainer_playlist_type(sp_playlistcontainer*, int) {
    return SP_PLAYLIST_TYPE_PLACEHOLDER;
}

sp_error
sp_playlistcontainer_playlist_folder_name(sp_playlistcontainer*, int, char* buffer, int size) {
    if (buffer != nullptr && size > 0) {
        *buffer = '\0';
    }
    return SP_ERROR_INVALID_INDATA;
}

sp_uint64 sp_playlistcontainer_playlist_folder_id(sp_playlistcontainer*, int) {
    return 0;
}

sp_playlist* sp_playlistcontainer_add_playlist(sp_playlistcontainer*, sp_link*) {
    return nullptr;
}

sp_user* sp_playlistcontainer_owner(sp_playlistcontainer*) {
    return nullptr;
}

sp_error sp_playlistcontainer_add_ref(sp_playlistcontainer*) {
    return SP_ERROR_INVALID_INDATA;
}

sp_error sp_playlistcontainer_release(sp_playlistcontainer*) {
    return SP_ERROR_INVALID_INDATA;
}
