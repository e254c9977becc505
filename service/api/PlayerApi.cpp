#include "api/Api.h"

using namespace sonolet::service;

sp_error sp_session_player_load(sp_session* session, sp_track* track) {
    return withSession(session, [&](Session& living) {
        return track == nullptr ? SP_ERROR_INVALID_INDATA : living.playback().load(*track);
    });
}

// NOLINTNEXTLINE(readability-identifier-naming): as declared
sp_error sp_session_player_seek(sp_session* session, int offset_ms) {
    return withSession(session, [&](Session& living) { return living.playback().seek(offset_ms); });
}

sp_error sp_session_player_play(sp_session* session, bool play) {
    return withSession(session, [&](Session& living) { return living.playback().play(play); });
}

sp_error sp_session_player_unload(sp_session* session) {
    return withSession(session, [](Session& living) {
        living.playback().stop();
        return SP_ERROR_OK;
    });
}

sp_error sp_session_player_prefetch(sp_session* session, sp_track* track) {
    return withSession(session, [&](Session& living) {
        return track == nullptr ? SP_ERROR_INVALID_INDATA : living.playback().prefetch(*track);
    });
}
