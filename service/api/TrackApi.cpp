#include "api/Api.h"
#include "objects/Track.h"

#include <vector>

using namespace sonolet::service;

bool sp_track_is_loaded(sp_track* track) {
    return ask(track, false, [](Track& asked) { return asked.isLoaded(); });
}

sp_error sp_track_error(sp_track* track) {
    return ask(track, SP_ERROR_INVALID_INDATA, [](Track& asked) { return asked.error(); });
}

sp_track_availability sp_track_get_availability(sp_session* session, sp_track* track) {
    return ask(track, SP_TRACK_AVAILABILITY_UNAVAILABLE, [&](Track& asked) {
        return sessionOf(session) != nullptr && asked.isAvailable()
                   ? SP_TRACK_AVAILABILITY_AVAILABLE
                   : SP_TRACK_AVAILABILITY_UNAVAILABLE;
    });
}

bool sp_track_is_local(sp_session*, sp_track*) {
    // The folder's music is the service's; a local track would be one that it does not have.
    return false;
}

bool sp_track_is_placeholder(sp_track*) {
    // A placeholder stands in a list for something that is no track.
    return false;
}

bool sp_track_is_starred(sp_session* session, sp_track* track) {
    return ask(track, false, [&](Track& asked) {
        const std::shared_ptr<Session> living = sessionOf(session);
        return living != nullptr && living->playlists().isStarred(asked.id());
    });
}

sp_error sp_track_set_starred(sp_session* session, sp_track* const* tracks, int count, bool star) {
    return withSession(session, [&](Session& living) {
        if (count < 0 || (tracks == nullptr && count > 0)) {
            return SP_ERROR_INVALID_INDATA;
        }
        std::vector<Id> ids;
        for (int index = 0; index < count; ++index) {
            if (tracks[index] == nullptr) {
                return SP_ERROR_INVALID_INDATA;
            }
            ids.push_back(tracks[index]->id());
        }
        return living.setStarred(ids, star);
    });
}

int sp_track_num_artists(sp_track* track) {
    return ask(track, 0, [](Track& asked) { return asked.artistCount(); });
}

sp_artist* sp_track_artist(sp_track* track, int index) {
    return ask<sp_artist*>(track, nullptr, [&](Track& asked) { return asked.artist(index); });
}

sp_album* sp_track_album(sp_track* track) {
    return ask<sp_album*>(track, nullptr, [](Track& asked) { return asked.album(); });
}

const char* sp_track_name(sp_track* track) {
    return ask(track, "", [](Track& asked) { return asked.name().c_str(); });
}

int sp_track_duration(sp_track* track) {
    return ask(track, 0, [](Track& asked) { return asked.durationMs(); });
}

int sp_track_popularity(sp_track* track) {
    return ask(track, 0, [](Track& asked) { return asked.popularity(); });
}

int sp_track_disc(sp_track* track) {
    return ask(track, 0, [](Track& asked) { return asked.disc(); });
}

int sp_track_index(sp_track* track) {
    return ask(track, 0, [](Track& asked) { return asked.number(); });
}

sp_error sp_track_add_ref(sp_track* track) {
    return addRef(track);
}

sp_error sp_track_release(sp_track* track) {
    return release(track);
}
