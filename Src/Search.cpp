#include "Search.h"

#include "PendingQueries.h"
#include "Session.h"

namespace {

constexpr char createSignature[] = "snnnnnnnn-";

}  // namespace

Search::Search() {
    _function("create", &Search::create, createSignature);
}

Search::Search(sp_session* librarySession,
               sp_search* search,
               const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, search, libraryShare) {
    static const function_row members[] = {
        {"create", &Search::create, createSignature},
        {"album", &Search::reads<&sp_search_album>, "n"},
        {"totalAlbums", &Search::reads<&sp_search_total_albums>, ""},
        {"numAlbums", &Search::reads<&sp_search_num_albums>, ""},
        {"artist", &Search::reads<&sp_search_artist>, "n"},
        {"track", &Search::reads<&sp_search_track>, "n"},
        {"numArtists", &Search::reads<&sp_search_num_artists>, ""},
        {"numTracks", &Search::reads<&sp_search_num_tracks>, ""},
        {"isLoaded", &Search::reads<&sp_search_is_loaded>, ""},
        {"didYouMean", &Search::reads<&sp_search_did_you_mean>, ""},
        {"totalArtists", &Search::reads<&sp_search_total_artists>, ""},
        {"totalTracks", &Search::reads<&sp_search_total_tracks>, ""},
        {"totalPlaylists", &Search::reads<&sp_search_total_playlists>, ""},
        {"error", &Search::reads<&sp_search_error>, ""},
        {"query", &Search::reads<&sp_search_query>, ""},
        {"numPlaylists", &Search::reads<&sp_search_num_playlists>, ""},
        {"playlistName", &Search::reads<&sp_search_playlist_name>, "n"},
        {"playlistUri", &Search::reads<&sp_search_playlist_uri>, "n"},
        {"playlistImageUri", &Search::reads<&sp_search_playlist_image_uri>, "n"},
        {"playlist", &Search::reads<&sp_search_playlist>, "n"},
        {"release", &Search::release, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Search::create(jspp::function_context& context) {
    const std::string query = context.string(0);
    const int trackOffset = context.integer(1);
    const int trackCount = context.integer(2);
    const int albumOffset = context.integer(3);
    const int albumCount = context.integer(4);
    const int artistOffset = context.integer(5);
    const int artistCount = context.integer(6);
    const int playlistOffset = context.integer(7);
    const int playlistCount = context.integer(8);
    const auto type = static_cast<sp_search_type>(context.integer(9));
    const jspp::object callback = context.object(10);
    sp_session* const session = Session::requireLibrarySession();
    PendingQueries::start<sp_search>(context, callback, [&](auto* complete, void* userData) {
        return sp_search_create(session, query.c_str(), trackOffset, trackCount, albumOffset,
                                albumCount, artistOffset, artistCount, playlistOffset,
                                playlistCount, type, complete, userData);
    });
}
