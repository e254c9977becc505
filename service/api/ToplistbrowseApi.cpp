#include "api/Api.h"
#include "objects/User.h"
#include "queries/Toplistbrowse.h"

#include <cstring>
#include <string>
#include <utility>

using namespace sonolet::service;

sp_toplistbrowse* sp_toplistbrowse_create(sp_session* session,
                                          sp_toplisttype type,
                                          sp_toplistregion region,
                                          const char* username,
                                          toplistbrowse_complete_cb* callback,
                                          void* userdata) {
    // The code of a country is no value of the enumeration: it is read as the number that it is.
    int code = 0;
    static_assert(sizeof(code) == sizeof(region), "an enumeration of C");
    std::memcpy(&code, &region, sizeof(code));
    return askSession<sp_toplistbrowse>(session, [&] {
        std::string user = username == nullptr ? "" : username;
        if (sp_user* current = sessionOf(session)->login().user();
            user.empty() && current != nullptr) {
            user = current->canonicalName();
        }
        // Without a country those who name none are in none: no country's list has the two zeros.
        const int home = Login::homeCountry();
        return new sp_toplistbrowse(
            type, code, std::move(user),
            std::string{static_cast<char>(home >> 8), static_cast<char>(home & 0xff)}, callback,
            userdata);
    });
}

bool sp_toplistbrowse_is_loaded(sp_toplistbrowse* browse) {
    return ask(browse, false, [](Toplistbrowse& asked) { return asked.isLoaded(); });
}

sp_error sp_toplistbrowse_error(sp_toplistbrowse* browse) {
    return ask(browse, SP_ERROR_INVALID_INDATA, [](Toplistbrowse& asked) { return asked.error(); });
}

int sp_toplistbrowse_num_artists(sp_toplistbrowse* browse) {
    return ask(browse, 0, [](Toplistbrowse& asked) { return asked.artistCount(); });
}

sp_artist* sp_toplistbrowse_artist(sp_toplistbrowse* browse, int index) {
    return ask<sp_artist*>(browse, nullptr,
                           [&](Toplistbrowse& asked) { return asked.artist(index); });
}

int sp_toplistbrowse_num_albums(sp_toplistbrowse* browse) {
    return ask(browse, 0, [](Toplistbrowse& asked) { return asked.albumCount(); });
}

sp_album* sp_toplistbrowse_album(sp_toplistbrowse* browse, int index) {
    return ask<sp_album*>(browse, nullptr,
                          [&](Toplistbrowse& asked) { return asked.album(index); });
}

int sp_toplistbrowse_num_tracks(sp_toplistbrowse* browse) {
    return ask(browse, 0, [](Toplistbrowse& asked) { return asked.trackCount(); });
}

sp_track* sp_toplistbrowse_track(sp_toplistbrowse* browse, int index) {
    return ask<sp_track*>(browse, nullptr,
                          [&](Toplistbrowse& asked) { return asked.track(index); });
}

sp_error sp_toplistbrowse_add_ref(sp_toplistbrowse* browse) {
    return addRef(browse);
}

sp_error sp_toplistbrowse_release(sp_toplistbrowse* browse) {
    return release(browse);
}
