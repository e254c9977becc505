#include "around/Library.h"

namespace {

const sp_session_callbacks* sessionCallbacks;
BenchPlaylistListener playlistListener;

}  // namespace

const sp_session_callbacks* benchCallbacks() {
    return sessionCallbacks;
}

BenchPlaylistListener benchPlaylistListener() {
    return playlistListener;
}

// NOLINTBEGIN(readability-named-parameter)

const char* sp_build_id() {
    return "bench";
}
sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    sessionCallbacks = config->callbacks;
    *session = benchHandle<sp_session>();
    return SP_ERROR_OK;
}
sp_link* sp_link_create_from_string(const char*) {
    return benchHandle<sp_link>();
}
sp_track* sp_link_as_track(sp_link*) {
    return benchHandle<sp_track>();
}
int sp_track_index(sp_track*) {
    return 7;
}
bool sp_track_is_loaded(sp_track*) {
    return true;
}
const char* sp_track_name(sp_track*) {
    return benchText;
}
int sp_track_duration(sp_track*) {
    return 180000;
}
sp_album* sp_track_album(sp_track*) {
    return benchHandle<sp_album>();
}
sp_artist* sp_track_artist(sp_track*, int) {
    return benchHandle<sp_artist>();
}
const char* sp_album_name(sp_album*) {
    return benchText;
}
int sp_album_year(sp_album*) {
    return 1999;
}
const char* sp_artist_name(sp_artist*) {
    return benchText;
}
sp_playlist* sp_playlist_create(sp_session*, sp_link*) {
    return benchHandle<sp_playlist>();
}
sp_error sp_playlist_add_callbacks(sp_playlist*, sp_playlist_callbacks* callbacks, void* userdata) {
    playlistListener = {callbacks, userdata};
    return SP_ERROR_OK;
}
sp_track* sp_playlist_track(sp_playlist*, int) {
    return benchHandle<sp_track>();
}

// NOLINTEND(readability-named-parameter)
