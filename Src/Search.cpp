#include "Search.h"

#include "Album.h"
#include "Artist.h"
#include "Factory.h"
#include "PendingQueries.h"
#include "Playlist.h"
#include "Session.h"
#include "Track.h"

namespace {

constexpr char createSignature[] = "snnnnnnnn-";

void sp_search_complete_cb(sp_search* result, void* userData) {
    // Another wrapper than the one that create() returned.
    PendingQueries::getInstance().complete(result, userData, [](sp_search* answered) {
        return Factory::getInstance().createSearch(answered);
    });
}

}  // namespace

Search::Search() {
    _function("create", &Search::create, createSignature);
}

Search::Search(sp_session* librarySession,
               sp_search* search,
               const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(search) {
    static const function_row members[] = {
        {"create", &Search::create, createSignature},
        {"album", &Search::album, "n"},
        {"totalAlbums", &Search::totalAlbums, ""},
        {"numAlbums", &Search::numAlbums, ""},
        {"artist", &Search::artist, "n"},
        {"track", &Search::track, "n"},
        {"numArtists", &Search::numArtists, ""},
        {"numTracks", &Search::numTracks, ""},
        {"isLoaded", &Search::isLoaded, ""},
        {"didYouMean", &Search::didYouMean, ""},
        {"totalArtists", &Search::totalArtists, ""},
        {"totalTracks", &Search::totalTracks, ""},
        {"totalPlaylists", &Search::totalPlaylists, ""},
        {"error", &Search::error, ""},
        {"query", &Search::query, ""},
        {"numPlaylists", &Search::numPlaylists, ""},
        {"playlistName", &Search::playlistName, "n"},
        {"playlistUri", &Search::playlistUri, "n"},
        {"playlistImageUri", &Search::playlistImageUri, "n"},
        {"playlist", &Search::playlist, "n"},
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
    sp_search* const search =
        PendingQueries::getInstance().start<sp_search>(callback, [&](void* userData) {
            return sp_search_create(session, query.c_str(), trackOffset, trackCount, albumOffset,
                                    albumCount, artistOffset, artistCount, playlistOffset,
                                    playlistCount, type, &sp_search_complete_cb, userData);
        });
    context.return_interface(Factory::getInstance().createSearch(search), false);
}

void Search::album(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_album* const album = retrieved(sp_search_album(handle.get(), index));
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Search::totalAlbums(jspp::function_context& context) const {
    context.return_number(sp_search_total_albums(handle.get()));
}

void Search::numAlbums(jspp::function_context& context) const {
    context.return_number(sp_search_num_albums(handle.get()));
}

void Search::artist(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_artist* const artist = retrieved(sp_search_artist(handle.get(), index));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Search::track(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_track* const track = retrieved(sp_search_track(handle.get(), index));
    context.return_interface(Factory::getInstance().createTrack(track), false);
}

void Search::numArtists(jspp::function_context& context) const {
    context.return_number(sp_search_num_artists(handle.get()));
}

void Search::numTracks(jspp::function_context& context) const {
    context.return_number(sp_search_num_tracks(handle.get()));
}

void Search::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_search_is_loaded(handle.get()));
}

void Search::didYouMean(jspp::function_context& context) const {
    context.return_string(sp_search_did_you_mean(handle.get()));
}

void Search::totalArtists(jspp::function_context& context) const {
    context.return_number(sp_search_total_artists(handle.get()));
}

void Search::totalTracks(jspp::function_context& context) const {
    context.return_number(sp_search_total_tracks(handle.get()));
}

void Search::totalPlaylists(jspp::function_context& context) const {
    context.return_number(sp_search_total_playlists(handle.get()));
}

void Search::error(jspp::function_context& context) const {
    context.return_number(sp_search_error(handle.get()));
}

void Search::query(jspp::function_context& context) const {
    context.return_string(sp_search_query(handle.get()));
}

void Search::numPlaylists(jspp::function_context& context) const {
    context.return_number(sp_search_num_playlists(handle.get()));
}

void Search::playlistName(jspp::function_context& context) const {
    const int index = context.integer(0);
    context.return_string(sp_search_playlist_name(handle.get(), index));
}

void Search::playlistUri(jspp::function_context& context) const {
    const int index = context.integer(0);
    context.return_string(sp_search_playlist_uri(handle.get(), index));
}

void Search::playlistImageUri(jspp::function_context& context) const {
    const int index = context.integer(0);
    context.return_string(sp_search_playlist_image_uri(handle.get(), index));
}

void Search::playlist(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_playlist* const playlist = retrieved(sp_search_playlist(handle.get(), index));
    context.return_interface(Factory::getInstance().createPlaylist(playlist), false);
}

// Script's objects go when script lets them go.
void Search::release(jspp::function_context&) const {}
