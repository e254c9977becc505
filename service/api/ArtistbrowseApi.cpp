#include "api/Api.h"
#include "objects/Artist.h"
#include "queries/Artistbrowse.h"

using namespace sonolet::service;

sp_artistbrowse* sp_artistbrowse_create(sp_session* session,
                                        sp_artist* artist,
                                        sp_artistbrowse_type type,
                                        artistbrowse_complete_cb* callback,
                                        void* userdata) {
    if (artist == nullptr) {
        return nullptr;
    }
    return askSession<sp_artistbrowse>(
        session, [&] { return new sp_artistbrowse(shared(artist), type, callback, userdata); });
}

bool sp_artistbrowse_is_loaded(sp_artistbrowse* browse) {
    return ask(browse, false, [](Artistbrowse& asked) { return asked.isLoaded(); });
}

sp_error sp_artistbrowse_error(sp_artistbrowse* browse) {
    return ask(browse, SP_ERROR_INVALID_INDATA, [](Artistbrowse& asked) { return asked.error(); });
}

sp_artist* sp_artistbrowse_artist(sp_artistbrowse* browse) {
    return ask<sp_artist*>(browse, nullptr, [](Artistbrowse& asked) { return asked.artist(); });
}

int sp_artistbrowse_num_albums(sp_artistbrowse* browse) {
    return ask(browse, 0, [](Artistbrowse& asked) { return asked.albumCount(); });
}

sp_album* sp_artistbrowse_album(sp_artistbrowse* browse, int index) {
    return ask<sp_album*>(browse, nullptr, [&](Artistbrowse& asked) { return asked.album(index); });
}

int sp_artistbrowse_num_tophit_tracks(sp_artistbrowse* browse) {
    return ask(browse, 0, [](Artistbrowse& asked) { return asked.topTrackCount(); });
}

sp_track* sp_artistbrowse_tophit_track(sp_artistbrowse* browse, int index) {
    return ask<sp_track*>(browse, nullptr,
                          [&](Artistbrowse& asked) { return asked.topTrack(index); });
}

sp_error sp_artistbrowse_add_ref(sp_artistbrowse* browse) {
    return addRef(browse);
}

sp_error sp_artistbrowse_release(sp_artistbrowse* browse) {
    return release(browse);
}
