#include "Albumbrowse.h"

#include "Album.h"
#include "Artist.h"
#include "Factory.h"
#include "PendingQueries.h"
#include "Session.h"
#include "Track.h"

namespace {

void sp_albumbrowse_complete_cb(sp_albumbrowse* result, void* userData) {
    // Another wrapper than the one that create() returned.
    PendingQueries::getInstance().complete(result, userData, [](sp_albumbrowse* answered) {
        return Factory::getInstance().createAlbumbrowse(answered);
    });
}

}  // namespace

Albumbrowse::Albumbrowse() {
    _function("create", &Albumbrowse::create, "o-");
}

Albumbrowse::Albumbrowse(sp_session* librarySession,
                         sp_albumbrowse* browse,
                         const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(browse) {
    static const function_row members[] = {
        {"album", &Albumbrowse::album, ""},
        {"numCopyrights", &Albumbrowse::numCopyrights, ""},
        {"copyright", &Albumbrowse::copyright, "n"},
        {"artist", &Albumbrowse::artist, ""},
        {"track", &Albumbrowse::track, "n"},
        {"numTracks", &Albumbrowse::numTracks, ""},
        {"isLoaded", &Albumbrowse::isLoaded, ""},
        {"error", &Albumbrowse::error, ""},
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
    sp_albumbrowse* const browse =
        PendingQueries::getInstance().start<sp_albumbrowse>(callback, [&](void* userData) {
            return sp_albumbrowse_create(session, album, &sp_albumbrowse_complete_cb, userData);
        });
    context.return_interface(Factory::getInstance().createAlbumbrowse(browse), false);
}

void Albumbrowse::album(jspp::function_context& context) const {
    sp_album* const album = retrieved(sp_albumbrowse_album(handle.get()));
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Albumbrowse::numCopyrights(jspp::function_context& context) const {
    context.return_number(sp_albumbrowse_num_copyrights(handle.get()));
}

void Albumbrowse::copyright(jspp::function_context& context) const {
    const int index = context.integer(0);
    context.return_string(sp_albumbrowse_copyright(handle.get(), index));
}

void Albumbrowse::artist(jspp::function_context& context) const {
    sp_artist* const artist = retrieved(sp_albumbrowse_artist(handle.get()));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Albumbrowse::track(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_track* const track = retrieved(sp_albumbrowse_track(handle.get(), index));
    context.return_interface(Factory::getInstance().createTrack(track), false);
}

void Albumbrowse::numTracks(jspp::function_context& context) const {
    context.return_number(sp_albumbrowse_num_tracks(handle.get()));
}

void Albumbrowse::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_albumbrowse_is_loaded(handle.get()));
}

void Albumbrowse::error(jspp::function_context& context) const {
    context.return_number(sp_albumbrowse_error(handle.get()));
}

// Script's objects go when script lets them go.
void Albumbrowse::release(jspp::function_context&) const {}
