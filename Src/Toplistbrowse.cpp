#include "Toplistbrowse.h"

#include "Album.h"
#include "Artist.h"
#include "Factory.h"
#include "PendingQueries.h"
#include "Session.h"
#include "Track.h"

namespace {

void sp_toplistbrowse_complete_cb(sp_toplistbrowse* result, void* userData) {
    // Another wrapper than the one that create() returned.
    PendingQueries::getInstance().complete(result, userData, [](sp_toplistbrowse* answered) {
        return Factory::getInstance().createToplistbrowse(answered);
    });
}

}  // namespace

Toplistbrowse::Toplistbrowse() {
    _function("create", &Toplistbrowse::create, "nns-");
}

Toplistbrowse::Toplistbrowse(sp_session* librarySession,
                             sp_toplistbrowse* browse,
                             const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(browse) {
    static const function_row members[] = {
        {"isLoaded", &Toplistbrowse::isLoaded, ""},     {"error", &Toplistbrowse::error, ""},
        {"numArtists", &Toplistbrowse::numArtists, ""}, {"artist", &Toplistbrowse::artist, "n"},
        {"numAlbums", &Toplistbrowse::numAlbums, ""},   {"album", &Toplistbrowse::album, "n"},
        {"numTracks", &Toplistbrowse::numTracks, ""},   {"track", &Toplistbrowse::track, "n"},
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
    sp_toplistbrowse* const browse =
        PendingQueries::getInstance().start<sp_toplistbrowse>(callback, [&](void* userData) {
            return sp_toplistbrowse_create(session, type, region,
                                           user.empty() ? nullptr : user.c_str(),
                                           &sp_toplistbrowse_complete_cb, userData);
        });
    context.return_interface(Factory::getInstance().createToplistbrowse(browse), false);
}

void Toplistbrowse::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_toplistbrowse_is_loaded(handle.get()));
}

void Toplistbrowse::error(jspp::function_context& context) const {
    context.return_number(sp_toplistbrowse_error(handle.get()));
}

void Toplistbrowse::numArtists(jspp::function_context& context) const {
    context.return_number(sp_toplistbrowse_num_artists(handle.get()));
}

void Toplistbrowse::artist(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_artist* const artist = retrieved(sp_toplistbrowse_artist(handle.get(), index));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Toplistbrowse::numAlbums(jspp::function_context& context) const {
    context.return_number(sp_toplistbrowse_num_albums(handle.get()));
}

void Toplistbrowse::album(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_album* const album = retrieved(sp_toplistbrowse_album(handle.get(), index));
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Toplistbrowse::numTracks(jspp::function_context& context) const {
    context.return_number(sp_toplistbrowse_num_tracks(handle.get()));
}

void Toplistbrowse::track(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_track* const track = retrieved(sp_toplistbrowse_track(handle.get(), index));
    context.return_interface(Factory::getInstance().createTrack(track), false);
}

// Script's objects go when script lets them go.
void Toplistbrowse::release(jspp::function_context&) const {}
