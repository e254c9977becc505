#include "Artistbrowse.h"

#include "Artist.h"
#include "PendingQueries.h"
#include "Session.h"

Artistbrowse::Artistbrowse() {
    _function("create", &Artistbrowse::create, "on-");
}

Artistbrowse::Artistbrowse(sp_session* librarySession,
                           sp_artistbrowse* browse,
                           const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, browse, libraryShare) {
    static const function_row members[] = {
        {"album", &Artistbrowse::reads<&sp_artistbrowse_album>, "n"},
        {"numAlbums", &Artistbrowse::reads<&sp_artistbrowse_num_albums>, ""},
        {"artist", &Artistbrowse::reads<&sp_artistbrowse_artist>, ""},
        {"isLoaded", &Artistbrowse::reads<&sp_artistbrowse_is_loaded>, ""},
        {"error", &Artistbrowse::reads<&sp_artistbrowse_error>, ""},
        {"numTophitTracks", &Artistbrowse::reads<&sp_artistbrowse_num_tophit_tracks>, ""},
        {"tophitTrack", &Artistbrowse::reads<&sp_artistbrowse_tophit_track>, "n"},
        {"release", &Artistbrowse::release, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Artistbrowse::create(jspp::function_context& context) {
    const orvo::shared_ptr<Artist> subject = context.interface_of<Artist>(0);
    const auto type = static_cast<sp_artistbrowse_type>(context.integer(1));
    const jspp::object callback = context.object(2);
    sp_session* const session =
        Session::requireLibrarySession("Spotify was not initialized correctly");
    sp_artist* const artist = subject->getHandle();
    PendingQueries::start<sp_artistbrowse>(context, callback, [&](auto* complete, void* userData) {
        return sp_artistbrowse_create(session, artist, type, complete, userData);
    });
}
