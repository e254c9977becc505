#include "Toplistbrowse.h"

#include "PendingQueries.h"
#include "Session.h"

Toplistbrowse::Toplistbrowse() {
    _function("create", &Toplistbrowse::create, "nns-");
}

Toplistbrowse::Toplistbrowse(sp_session* librarySession,
                             sp_toplistbrowse* browse,
                             const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, browse, libraryShare) {
    static const function_row members[] = {
        {"isLoaded", &Toplistbrowse::reads<&sp_toplistbrowse_is_loaded>, ""},
        {"error", &Toplistbrowse::reads<&sp_toplistbrowse_error>, ""},
        {"numArtists", &Toplistbrowse::reads<&sp_toplistbrowse_num_artists>, ""},
        {"artist", &Toplistbrowse::reads<&sp_toplistbrowse_artist>, "n"},
        {"numAlbums", &Toplistbrowse::reads<&sp_toplistbrowse_num_albums>, ""},
        {"album", &Toplistbrowse::reads<&sp_toplistbrowse_album>, "n"},
        {"numTracks", &Toplistbrowse::reads<&sp_toplistbrowse_num_tracks>, ""},
        {"track", &Toplistbrowse::reads<&sp_toplistbrowse_track>, "n"},
        {"release", &Toplistbrowse::release, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Toplistbrowse::create(jspp::function_context& context) {
    const auto type = static_cast<sp_toplisttype>(context.integer(0));
    const auto region = static_cast<sp_toplistregion>(context.integer(1));
    const std::string user = context.string(2);
    const jspp::object callback = context.object(3);
    sp_session* const session = Session::requireLibrarySession();
    const char* const name = user.empty() ? nullptr : user.c_str();
    PendingQueries::start<sp_toplistbrowse>(context, callback, [&](auto* complete, void* userData) {
        return sp_toplistbrowse_create(session, type, region, name, complete, userData);
    });
}
