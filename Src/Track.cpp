#include "Track.h"

#include "Session.h"

Track::Track() {
    _function("create", &Track::create, "s");
}

Track::Track(sp_session* librarySession,
             sp_track* track,
             const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, track, libraryShare) {
    static const function_row members[] = {
        {"album", &Track::reads<&sp_track_album>, ""},
        {"index", &Track::reads<&sp_track_index>, ""},
        {"isPlaceholder", &Track::reads<&sp_track_is_placeholder>, ""},
        {"popularity", &Track::reads<&sp_track_popularity>, ""},
        {"name", &Track::reads<&sp_track_name>, ""},
        {"isLocal", &Track::reads<&sp_track_is_local>, ""},
        {"artist", &Track::reads<&sp_track_artist>, "n"},
        {"numArtists", &Track::reads<&sp_track_num_artists>, ""},
        {"setStarred", &Track::setStarred, "b"},
        {"isLoaded", &Track::reads<&sp_track_is_loaded>, ""},
        {"disc", &Track::reads<&sp_track_disc>, ""},
        {"error", &Track::reads<&sp_track_error>, ""},
        {"duration", &Track::reads<&sp_track_duration>, ""},
        {"getAvailability", &Track::reads<&sp_track_get_availability>, ""},
        {"isStarred", &Track::reads<&sp_track_is_starred>, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void Track::create(jspp::function_context& context) {
    const std::string link = context.string(0);
    Session::requireLibrarySession();
    answer(namedBy(link, &sp_link_as_track), context);
}

void Track::setStarred(jspp::function_context& context) const {
    const bool starred = context.boolean(0);
    sp_track* const tracks[] = {handle.get()};
    // The outcome shows in isStarred.
    sp_track_set_starred(session, tracks, 1, starred);
}
