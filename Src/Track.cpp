#include "Track.h"

#include "Album.h"
#include "Artist.h"
#include "Factory.h"
#include "Session.h"

Track::Track() {
    _function("create", &Track::create, "s");
}

Track::Track(sp_session* librarySession,
             sp_track* track,
             const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(track) {
    static const function_row members[] = {
        {"album", &Track::album, ""},
        {"index", &Track::index, ""},
        {"isPlaceholder", &Track::isPlaceholder, ""},
        {"popularity", &Track::popularity, ""},
        {"name", &Track::name, ""},
        {"isLocal", &Track::isLocal, ""},
        {"artist", &Track::artist, "n"},
        {"numArtists", &Track::numArtists, ""},
        {"setStarred", &Track::setStarred, "b"},
        {"isLoaded", &Track::isLoaded, ""},
        {"disc", &Track::disc, ""},
        {"error", &Track::error, ""},
        {"duration", &Track::duration, ""},
        {"getAvailability", &Track::getAvailability, ""},
        {"isStarred", &Track::isStarred, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Track::create(jspp::function_context& context) {
    const std::string link = context.string(0);
    Session::requireLibrarySession();
    sp_track* const track = namedBy(link, &sp_link_as_track);
    context.return_interface(Factory::getInstance().createTrack(track), false);
}

void Track::album(jspp::function_context& context) const {
    sp_album* const album = retrieved(sp_track_album(handle.get()));
    context.return_interface(Factory::getInstance().createAlbum(album), false);
}

void Track::index(jspp::function_context& context) const {
    context.return_number(sp_track_index(handle.get()));
}

void Track::isPlaceholder(jspp::function_context& context) const {
    context.return_boolean(sp_track_is_placeholder(handle.get()));
}

void Track::popularity(jspp::function_context& context) const {
    context.return_number(sp_track_popularity(handle.get()));
}

void Track::name(jspp::function_context& context) const {
    context.return_string(sp_track_name(handle.get()));
}

void Track::isLocal(jspp::function_context& context) const {
    context.return_boolean(sp_track_is_local(session, handle.get()));
}

void Track::artist(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_artist* const artist = retrieved(sp_track_artist(handle.get(), index));
    context.return_interface(Factory::getInstance().createArtist(artist), false);
}

void Track::numArtists(jspp::function_context& context) const {
    context.return_number(sp_track_num_artists(handle.get()));
}

void Track::setStarred(jspp::function_context& context) const {
    const bool starred = context.boolean(0);
    sp_track* const tracks[] = {handle.get()};
    // The outcome shows in isStarred.
    sp_track_set_starred(session, tracks, 1, starred);
}

void Track::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_track_is_loaded(handle.get()));
}

void Track::disc(jspp::function_context& context) const {
    context.return_number(sp_track_disc(handle.get()));
}

void Track::error(jspp::function_context& context) const {
    context.return_number(sp_track_error(handle.get()));
}

void Track::duration(jspp::function_context& context) const {
    context.return_number(sp_track_duration(handle.get()));
}

void Track::getAvailability(jspp::function_context& context) const {
    context.return_boolean(sp_track_get_availability(session, handle.get()) !=
                           SP_TRACK_AVAILABILITY_UNAVAILABLE);
}

void Track::isStarred(jspp::function_context& context) const {
    context.return_boolean(sp_track_is_starred(session, handle.get()));
}
