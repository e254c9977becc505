#include "api/Api.h"

using namespace sonolet::service;

sp_error sp_session_player_load(sp_session* session, sp_track* track) {
    return withSession(session, [&](Session& living) {
        return track == nullptr ? SP_ERROR_INVALID_INDATA : living.load(*track);
    });
}

// NOLINTNEXTLINE(readability-identifier-naming): as declared
sp_error sp_session_player_seek(sp_session* session, int offset_ms) {
    return withSession(session, [&](Session& living) { return living.seek(offset_ms); });
}

sp_error sp_session_player_play(sp_session* session, bool play) {
    return withSession(session, [&](Session& living) { return living.play(play); });
}

sp_error sp_session_player_unload(sp_session* session) {
    return withSession(session, [](Session& living) { return living.unload(); });
}

sp_error sp_session_player_prefetch(sp_session* session, sp_track* track) {
    return withSession(session, [&](Session& living) {
        return track == nullptr ? SP_ERROR_INVALID_INDATA : living.prefetch(*track);
    });
}
