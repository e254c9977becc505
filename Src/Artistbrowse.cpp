#include "Artistbrowse.h"

#include "Album.h"
#include "Artist.h"
#include "Factory.h"
#include "PendingQueries.h"
#include "Session.h"
#include "Track.h"

namespace {

void sp_artistbrowse_complete_cb(sp_artistbrowse* result, void* userData) {
    // Another wrapper than the one that create() returned.
    PendingQueries::getInstance().complete(result, userData, [](sp_artistbrowse* answered) {
        return Factory::getInstance().createArtistbrowse(answered);
    });
}

}  // namespace

Artistbrowse::Artistbrowse() {
    _function("create", &Artistbrowse::create, "on-");
}

Artistbrowse::Artistbrowse(sp_session* librarySession,
                           sp_artistbrowse* browse,
                           const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(browse) {
    static const function_row members[] = {
        {"album", &Artistbrowse::album, "n"},
        {"numAlbums", &Artistbrowse::numAlbums, ""},
        {"artist", &Artistbrowse::artist, ""},
        {"isLoaded", &Artistbrowse::isLoaded, ""},
        {"error", &Artistbrowse::error, ""},
        {"numTophitTracks", &Artistbrowse::numTophitTracks, ""},
        {"tophitTrack", &Artistbrowse::tophitTrack, "n"},
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
    sp_artistbrowse* const browse =
        PendingQueries::getInstance().start<sp_artistbrowse>(callback, [&](void* userData) {
            return sp_artistbrowse_create(session, artist, type, &sp_artistbrowse_complete_cb,
                                          userData);
        });
    context.return_interface(Factory::getInstance().createArtistbrowse(browse), false);
}

void Artistbrowse::album(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_album* const album = retrieved(sp_artistbrowse_album(handle.get(), index));
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Artistbrowse::numAlbums(jspp::function_context& context) const {
    context.return_number(sp_artistbrowse_num_albums(handle.get()));
}

void Artistbrowse::artist(jspp::function_context& context) const {
    sp_artist* const artist = retrieved(sp_artistbrowse_artist(handle.get()));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Artistbrowse::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_artistbrowse_is_loaded(handle.get()));
}

void Artistbrowse::error(jspp::function_context& context) const {
    context.return_number(sp_artistbrowse_error(handle.get()));
}

void Artistbrowse::numTophitTracks(jspp::function_context& context) const {
    context.return_number(sp_artistbrowse_num_tophit_tracks(handle.get()));
}

void Artistbrowse::tophitTrack(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_track* const track = retrieved(sp_artistbrowse_tophit_track(handle.get(), index));
    context.return_interface(Factory::getInstance().createTrack(track), false);
}

// Script's objects go when script lets them go.
void Artistbrowse::release(jspp::function_context&) const {}
