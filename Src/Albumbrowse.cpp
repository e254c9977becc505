#include "Albumbrowse.h"

#include "Album.h"
#include "PendingQueries.h"
#include "Session.h"

Albumbrowse::Albumbrowse() {
    _function("create", &Albumbrowse::create, "o-");
}

Albumbrowse::Albumbrowse(sp_session* librarySession,
                         sp_albumbrowse* browse,
                         const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, browse, libraryShare) {
    static const function_row members[] = {
        {"album", &Albumbrowse::reads<&sp_albumbrowse_album>, ""},
        {"numCopyrights", &Albumbrowse::reads<&sp_albumbrowse_num_copyrights>, ""},
        {"copyright", &Albumbrowse::reads<&sp_albumbrowse_copyright>, "n"},
        {"artist", &Albumbrowse::reads<&sp_albumbrowse_artist>, ""},
        {"track", &Albumbrowse::reads<&sp_albumbrowse_track>, "n"},
        {"numTracks", &Albumbrowse::reads<&sp_albumbrowse_num_tracks>, ""},
        {"isLoaded", &Albumbrowse::reads<&sp_albumbrowse_is_loaded>, ""},
        {"error", &Albumbrowse::reads<&sp_albumbrowse_error>, ""},
        {"release", &Albumbrowse::release, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Albumbrowse::create(jspp::function_context& context) {
    const orvo::shared_ptr<Album> subject = context.interface_of<Album>(0);
    const jspp::object callback = context.object(1);
    sp_session* const session = Session::requireLibrarySession();
    sp_album* const album = subject->getHandle();
    PendingQueries::start<sp_albumbrowse>(context, callback, [&](auto* complete, void* userData) {
        return sp_albumbrowse_create(session, album, complete, userData);
    });
}
