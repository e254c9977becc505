#include "api/Api.h"
#include "objects/Album.h"
#include "queries/Albumbrowse.h"

using namespace sonolet::service;

sp_albumbrowse* sp_albumbrowse_create(sp_session* session,
                                      sp_album* album,
                                      albumbrowse_complete_cb* callback,
                                      void* userdata) {
    if (album == nullptr) {
        return nullptr;
    }
    return askSession<sp_albumbrowse>(
        session, [&] { return new sp_albumbrowse(shared(album), callback, userdata); });
}

bool sp_albumbrowse_is_loaded(sp_albumbrowse* browse) {
    return ask(browse, false, [](Albumbrowse& asked) { return asked.isLoaded(); });
}

sp_error sp_albumbrowse_error(sp_albumbrowse* browse) {
    return ask(browse, SP_ERROR_INVALID_INDATA, [](Albumbrowse& asked) { return asked.error(); });
}

sp_album* sp_albumbrowse_album(sp_albumbrowse* browse) {
    return ask<sp_album*>(browse, nullptr, [](Albumbrowse& asked) { return asked.album(); });
}

sp_artist* sp_albumbrowse_artist(sp_albumbrowse* browse) {
    return ask<sp_artist*>(browse, nullptr, [](Albumbrowse& asked) { return asked.artist(); });
}

int sp_albumbrowse_num_copyrights(sp_albumbrowse* browse) {
    return ask(browse, 0, [](Albumbrowse& asked) { return asked.copyrightCount(); });
}

const char* sp_albumbrowse_copyright(sp_albumbrowse* browse, int index) {
    return ask<const char*>(browse, nullptr,
                            [&](Albumbrowse& asked) { return asked.copyright(index); });
}

int sp_albumbrowse_num_tracks(sp_albumbrowse* browse) {
    return ask(browse, 0, [](Albumbrowse& asked) { return asked.trackCount(); });
}

sp_track* sp_albumbrowse_track(sp_albumbrowse* browse, int index) {
    return ask<sp_track*>(browse, nullptr, [&](Albumbrowse& asked) { return asked.track(index); });
}

sp_error sp_albumbrowse_add_ref(sp_albumbrowse* browse) {
    return addRef(browse);
}

sp_error sp_albumbrowse_release(sp_albumbrowse* browse) {
    return release(browse);
}
