#include "FakeSpotify.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <sstream>
#include <type_traits>

namespace {

[[noreturn]] void stop(const std::string& function, const char* what) {
    fprintf(stderr, "FakeSpotify: %s: %s\n", function.c_str(), what);
    abort();
}

template <typename Argument>
void print(std::ostream& out, const char* function, const Argument& argument) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        out << (argument == nullptr ? "null" : argument);
    } else if constexpr (std::is_pointer_v<Argument>) {
        if (argument == nullptr) {
            stop(function, "null handle");
        }
        if constexpr (std::is_same_v<Argument, sp_session*>) {
            if (argument->released) {
                stop(function, "released session");
            }
        }
        out << argument->label;
    } else if constexpr (std::is_enum_v<Argument>) {
        out << static_cast<int>(argument);
    } else {
        out << std::boolalpha << argument;
    }
}

std::string textOf(const char* text) {
    return text == nullptr ? "null" : text;
}

}  // namespace

FakeSpotify& FakeSpotify::get() {
    static auto* instance = new FakeSpotify;
    return *instance;
}

namespace {

// Made before, and so destroyed after, everything that the plug-in makes at load: tells what became
// of the sessions by the end of the process.
struct LastWord {
    ~LastWord() {
        const FakeSpotify& spotify = FakeSpotify::get();
        if (spotify.sessionsCreated != 0) {
            fprintf(stderr, "FakeSpotify: released %d of %d sessions\n", spotify.sessionsReleased,
                    spotify.sessionsCreated);
        }
    }
};
const LastWord lastWord __attribute__((init_priority(101)));

}  // namespace

template <typename... Arguments>
int FakeSpotify::called(const char* function, const Arguments&... arguments) {
    std::ostringstream call;
    call << function << '(';
    const char* separator = "";
    ((call << separator, print(call, function, arguments), separator = ", "), ...);
    call << ')';
    record(call.str());
    const auto scripted = answers.find(function);
    return scripted == answers.end() ? 0 : scripted->second;
}

void FakeSpotify::record(const std::string& call) {
    if (thread != std::thread::id() && thread != std::this_thread::get_id()) {
        stop(call, "called on another thread than the session's");
    }
    calls.push_back(call);
}

sp_error FakeSpotify::count(const char* function, FakeHandle* handle, int change) {
    called(function, handle);
    handle->references += change;
    if (handle->references < 0) {
        stop(function, "released more often than referenced");
    }
    return SP_ERROR_OK;
}

std::string FakeSpotify::imbalance() const {
    std::string out;
    for (const FakeHandle* handle : handles) {
        if (handle->references != 0) {
            out += handle->label + ": " + std::to_string(handle->references) + " left; ";
        }
    }
    return out;
}

void FakeSpotify::reset() {
    if (!imbalance().empty()) {
        stop("reset", imbalance().c_str());
    }
    // Handles stay allocated, so that one used too late is told from a new one.
    answers.clear();
    texts.clear();
    friends.clear();
    links.clear();
    config.clear();
    calls.clear();
    sessions.clear();
    buildId = "fake build";
    user = nullptr;
    nextTimeout = 1000;
    duringProcessEvents = nullptr;
    duringPlayerLoad = nullptr;
    sessionsCreated = 0;
    sessionsReleased = 0;
    linksOut = 0;
    thread = std::thread::id();
}

namespace {

template <typename Handle>
Handle* labelled(std::vector<FakeHandle*>& handles, const std::string& label) {
    auto* handle = new Handle;  // the library's; see reset
    handle->label = label;
    handles.push_back(handle);
    return handle;
}

}  // namespace

sp_artist* FakeSpotify::addArtist(const std::string& link) {
    auto* artist = labelled<sp_artist>(handles, link);
    links[link].artist = artist;
    return artist;
}

sp_album* FakeSpotify::addAlbum(const std::string& link) {
    auto* album = labelled<sp_album>(handles, link);
    album->artist = addArtist(link + ".artist");
    links[link].album = album;
    return album;
}

sp_track* FakeSpotify::addTrack(const std::string& link) {
    auto* track = labelled<sp_track>(handles, link);
    track->album = addAlbum(link + ".album");
    track->artists = {track->album->artist};
    links[link].track = track;
    return track;
}

sp_user* FakeSpotify::addUser(const std::string& label) {
    return labelled<sp_user>(handles, label);
}

sp_link* FakeSpotify::makeLink(const char* text) {
    const auto found = links.find(text);
    if (found == links.end()) {
        return nullptr;
    }
    found->second.label = text;
    ++linksOut;
    return &found->second;
}

sp_session* FakeSpotify::session() const {
    if (sessions.empty()) {
        stop("session", "none was made");
    }
    return sessions.back();
}

int FakeSpotify::deliver(const void* frames, int count, int rate, int channels, int type) {
    const std::lock_guard<std::mutex> lock(deliveryMutex);
    const sp_audioformat format{static_cast<sp_sampletype>(type), rate, channels};
    return callbacks().music_delivery(session(), &format, frames, count);
}

std::vector<std::string> FakeSpotify::callsTo(const std::string& prefix) const {
    std::vector<std::string> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const auto& call) { return call.compare(0, prefix.size(), prefix) == 0; });
    return found;
}

sp_error FakeSpotify::createSession(const sp_session_config* settings, sp_session** result) {
    record("sp_session_create()");
    const auto* key = static_cast<const char*>(settings->application_key);
    config = {{"api", std::to_string(settings->api_version)},
              {"cache", textOf(settings->cache_location)},
              {"settings", textOf(settings->settings_location)},
              {"key", std::string(key, key + settings->application_key_size)},
              {"agent", textOf(settings->user_agent)},
              {"compress", std::to_string(settings->compress_playlists)},
              {"dont_save", std::to_string(settings->dont_save_metadata_for_playlists)},
              {"unload", std::to_string(settings->initially_unload_playlists)},
              {"proxy", textOf(settings->proxy)},
              {"proxy_username", textOf(settings->proxy_username)},
              {"proxy_password", textOf(settings->proxy_password)},
              {"certificates", textOf(settings->ca_certs_filename)}};
    *result = nullptr;
    const auto error = static_cast<sp_error>(answers["sp_session_create"]);
    if (error != SP_ERROR_OK) {
        return error;
    }
    auto* made = new sp_session;  // kept for good: a late use is recognised
    made->label = "session";
    made->callbacks = settings->callbacks;
    sessions.push_back(made);
    thread = std::this_thread::get_id();
    ++sessionsCreated;
    *result = made;
    return SP_ERROR_OK;
}

// The library's functions that the plug-in uses, a line each where one will do.

namespace {

FakeSpotify& fake() {
    return FakeSpotify::get();
}

// The scripted number as whatever the function answers: sp_error, another enumeration, bool or int.
template <typename Result = sp_error, typename... Arguments>
Result scripted(const char* function, const Arguments&... arguments) {
    return static_cast<Result>(fake().called(function, arguments...));
}

template <typename... Arguments>
const char* text(const char* function, const Arguments&... arguments) {
    fake().called(function, arguments...);
    const auto scripted = fake().texts.find(function);
    return scripted == fake().texts.end() ? nullptr : scripted->second;
}

template <typename Handle, typename Kind, typename Field>
Field field(const char* function, Handle* handle, Field Kind::*member) {
    fake().called(function, handle);
    return handle->*member;
}

template <typename Handle>
Handle* element(const std::vector<Handle*>& list, int index) {
    return index < 0 || index >= static_cast<int>(list.size()) ? nullptr : list[index];
}

}  // namespace

// clang-format off
const char* sp_build_id() { return fake().buildId.c_str(); }
const char* sp_error_message(sp_error code) { return text(__func__, code); }

sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    return fake().createSession(config, session);
}
sp_error sp_session_release(sp_session* session) {
    fake().called(__func__, session);
    session->released = true;
    ++fake().sessionsReleased;
    return SP_ERROR_OK;
}
sp_error sp_session_login(sp_session* session,
                          const char* username,
                          const char* password,
                          bool remember,
                          const char* blob) {
    return scripted(__func__, session, username, password, remember, blob);
}
sp_error sp_session_relogin(sp_session* session) { return scripted(__func__, session); }
int sp_session_remembered_user(sp_session* session, char* buffer, size_t size) {
    const char* name = text(__func__, session);
    return name == nullptr ? -1 : snprintf(buffer, size, "%s", name);
}
sp_error sp_session_forget_me(sp_session* session) { return scripted(__func__, session); }
sp_user* sp_session_user(sp_session* session) {
    fake().called(__func__, session);
    return fake().user;
}
sp_error sp_session_logout(sp_session* session) { return scripted(__func__, session); }
sp_connectionstate sp_session_connectionstate(sp_session* session) {
    return scripted<sp_connectionstate>(__func__, session);
}
sp_error sp_session_set_cache_size(sp_session* session, size_t megabytes) {
    return scripted(__func__, session, megabytes);
}
sp_error sp_session_process_events(sp_session* session, int* nextTimeout) {
    const sp_error result = scripted(__func__, session);
    *nextTimeout = fake().nextTimeout;
    if (fake().duringProcessEvents) {
        fake().duringProcessEvents();
    }
    return result;
}
sp_error sp_session_preferred_bitrate(sp_session* session, sp_bitrate bitrate) {
    return scripted(__func__, session, bitrate);
}
int sp_session_user_country(sp_session* session) { return scripted<int>(__func__, session); }
int sp_session_num_friends(sp_session* session) { return scripted<int>(__func__, session); }
sp_user* sp_session_friend(sp_session* session, int index) {
    fake().called(__func__, session, index);
    return element(fake().friends, index);
}

sp_error sp_session_player_load(sp_session* session, sp_track* track) {
    {
        const std::lock_guard<std::mutex> lock(fake().deliveryMutex);
        fake().called(__func__, session, track);
    }
    if (fake().duringPlayerLoad) {
        fake().duringPlayerLoad();
    }
    return static_cast<sp_error>(fake().answers[__func__]);
}
sp_error sp_session_player_seek(sp_session* session, int offset) {
    return scripted(__func__, session, offset);
}
sp_error sp_session_player_play(sp_session* session, bool play) {
    return scripted(__func__, session, play);
}
sp_error sp_session_player_unload(sp_session* session) {
    const std::lock_guard<std::mutex> lock(fake().deliveryMutex);
    return scripted(__func__, session);
}
sp_error sp_session_player_prefetch(sp_session* session, sp_track* track) {
    return scripted(__func__, session, track);
}

const char* sp_session_signup_get_unaccepted_licenses(sp_session* session) {
    return text(__func__, session);
}
sp_error sp_session_signup_perform_action(sp_session* session, sp_signup_action action) {
    return scripted(__func__, session, action);
}

sp_link* sp_link_create_from_string(const char* link) {
    fake().called(__func__, link);
    return fake().makeLink(link);
}
sp_track* sp_link_as_track(sp_link* link) { return field(__func__, link, &sp_link::track); }
sp_album* sp_link_as_album(sp_link* link) { return field(__func__, link, &sp_link::album); }
sp_artist* sp_link_as_artist(sp_link* link) { return field(__func__, link, &sp_link::artist); }
sp_error sp_link_release(sp_link* link) {
    --fake().linksOut;
    return scripted(__func__, link);
}

bool sp_track_is_loaded(sp_track* track) { return scripted<bool>(__func__, track); }
sp_error sp_track_error(sp_track* track) { return scripted(__func__, track); }
sp_track_availability sp_track_get_availability(sp_session* session, sp_track* track) {
    return scripted<sp_track_availability>(__func__, session, track);
}
bool sp_track_is_local(sp_session* session, sp_track* track) {
    return scripted<bool>(__func__, session, track);
}
bool sp_track_is_placeholder(sp_track* track) { return scripted<bool>(__func__, track); }
bool sp_track_is_starred(sp_session* session, sp_track* track) {
    return scripted<bool>(__func__, session, track);
}
sp_error sp_track_set_starred(sp_session* session, sp_track* const* tracks, int count, bool star) {
    return scripted(__func__, session, *tracks, count, star);
}
int sp_track_num_artists(sp_track* track) {
    fake().called(__func__, track);
    return static_cast<int>(track->artists.size());
}
sp_artist* sp_track_artist(sp_track* track, int index) {
    fake().called(__func__, track, index);
    return element(track->artists, index);
}
sp_album* sp_track_album(sp_track* track) { return field(__func__, track, &sp_track::album); }
const char* sp_track_name(sp_track* track) { return field(__func__, track, &sp_track::name); }
int sp_track_duration(sp_track* track) { return field(__func__, track, &sp_track::duration); }
int sp_track_popularity(sp_track* track) { return scripted<int>(__func__, track); }
int sp_track_disc(sp_track* track) { return scripted<int>(__func__, track); }
int sp_track_index(sp_track* track) { return scripted<int>(__func__, track); }
sp_error sp_track_add_ref(sp_track* track) { return fake().count(__func__, track, 1); }
sp_error sp_track_release(sp_track* track) { return fake().count(__func__, track, -1); }

bool sp_album_is_loaded(sp_album* album) { return scripted<bool>(__func__, album); }
bool sp_album_is_available(sp_album* album) { return scripted<bool>(__func__, album); }
sp_artist* sp_album_artist(sp_album* album) { return field(__func__, album, &sp_album::artist); }
const byte* sp_album_cover(sp_album* album, sp_image_size size) {
    fake().called(__func__, album, size);
    return album->cover;
}
const char* sp_album_name(sp_album* album) { return field(__func__, album, &sp_album::name); }
int sp_album_year(sp_album* album) { return scripted<int>(__func__, album); }
sp_albumtype sp_album_type(sp_album* album) { return scripted<sp_albumtype>(__func__, album); }
sp_error sp_album_add_ref(sp_album* album) { return fake().count(__func__, album, 1); }
sp_error sp_album_release(sp_album* album) { return fake().count(__func__, album, -1); }

const char* sp_artist_name(sp_artist* artist) { return field(__func__, artist, &sp_artist::name); }
bool sp_artist_is_loaded(sp_artist* artist) { return scripted<bool>(__func__, artist); }
const byte* sp_artist_portrait(sp_artist* artist, sp_image_size size) {
    fake().called(__func__, artist, size);
    return artist->portrait;
}
sp_error sp_artist_add_ref(sp_artist* artist) { return fake().count(__func__, artist, 1); }
sp_error sp_artist_release(sp_artist* artist) { return fake().count(__func__, artist, -1); }

const char* sp_user_canonical_name(sp_user* user) {
    return field(__func__, user, &sp_user::canonicalName);
}
const char* sp_user_display_name(sp_user* user) {
    return field(__func__, user, &sp_user::displayName);
}
const char* sp_user_full_name(sp_user* user) { return field(__func__, user, &sp_user::fullName); }
const char* sp_user_picture(sp_user* user) { return field(__func__, user, &sp_user::picture); }
bool sp_user_is_loaded(sp_user* user) { return scripted<bool>(__func__, user); }
sp_relation_type sp_user_relation_type(sp_session* session, sp_user* user) {
    return scripted<sp_relation_type>(__func__, session, user);
}
sp_error sp_user_add_ref(sp_user* user) { return fake().count(__func__, user, 1); }
sp_error sp_user_release(sp_user* user) { return fake().count(__func__, user, -1); }
// clang-format on
