#include "FakeSpotify.h"

#include "Faults.h"

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

FakeSpotify& FakeSpotify::get() {
    static auto* instance = new FakeSpotify;
    return *instance;
}

template <typename... Arguments>
void FakeSpotify::called(const char* function, const Arguments&... arguments) {
    std::ostringstream call;
    call << function << '(';
    [[maybe_unused]] const char* separator = "";
    ((call << separator, print(call, function, arguments), separator = ", "), ...);
    call << ')';
    if (thread != std::thread::id() && thread != std::this_thread::get_id()) {
        stop(call.str(), "called on another thread than the session's");
    }
    if (keepsCalls) {
        calls.push_back(call.str());
    }
}

sp_error FakeSpotify::count(const char* function, FakeHandle* handle, int change) {
    const bool fails = Faults::get().strikes(Faults::Library);
    const Outside outside;
    called(function, handle);
    if (fails && change > 0) {
        return SP_ERROR_OTHER_PERMANENT;
    }
    handle->references += change;
    if (handle->references < 0) {
        stop(function, "released more often than referenced");
    }
    return SP_ERROR_OK;
}

std::string FakeSpotify::imbalance() const {
    std::string out;
    for (const FakeHandle* handle : made) {
        if (handle->references != 0 || handle->registrations != 0) {
            out += handle->label + ": " + std::to_string(handle->references) + " references, " +
                   std::to_string(handle->registrations) + " callbacks left; ";
        }
    }
    return out;
}

void FakeSpotify::reset() {
    if (!imbalance().empty()) {
        stop("reset", imbalance().c_str());
    }
    links.clear();
    samples.clear();
    sampleText = nullptr;
    sampleNumber = 0;
    keepsCalls = true;
    answers.clear();
    texts.clear();
    handles.clear();
    calls.clear();
    subscribers.clear();
    lastSession = nullptr;
    buildId = "fake build";
    nextTimeout = 1000;
    duringProcessEvents = nullptr;
    duringPlayerLoad = nullptr;
    sessionsCreated = sessionsReleased = 0;
    thread = std::thread::id();
}

sp_session* FakeSpotify::addSession(const sp_session_callbacks* callbacks) {
    lastSession = add<sp_session>("session");
    lastSession->callbacks = callbacks;
    thread = std::this_thread::get_id();
    ++sessionsCreated;
    return lastSession;
}

sp_session* FakeSpotify::session() const {
    if (lastSession == nullptr) {
        stop("session", "none was made");
    }
    return lastSession;
}

sp_link* FakeSpotify::linkTo(const char* text) {
    const bool fails = Faults::get().strikes(Faults::Library);
    const Outside outside;
    const auto found = links.find(text);
    if (fails || found == links.end()) {
        return nullptr;
    }
    found->second.label = text;
    ++found->second.references;
    return &found->second;
}

int FakeSpotify::deliver(const void* frames, int count) {
    const std::lock_guard<std::mutex> lock(deliveryMutex);
    const sp_audioformat format{SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, 2};
    const auto* const on = &callbacks();
    sp_session* const from = session();
    const InPlugin inside;
    return on->music_delivery(from, &format, frames, count);
}

std::vector<std::string> FakeSpotify::callsTo(const std::string& prefix) const {
    std::vector<std::string> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const auto& call) { return call.compare(0, prefix.size(), prefix) == 0; });
    return found;
}

// ---- The library's functions that the plug-in uses ----

namespace {

FakeSpotify& fake() {
    return FakeSpotify::get();
}

template <typename Argument>
std::size_t asIndex(const Argument& argument) {
    if constexpr (std::is_same_v<Argument, int>) {
        return static_cast<std::size_t>(argument);
    }
    return 0;
}

// What may be refused: handles and texts with null, the others with their error code.
template <typename Result>
constexpr bool canFail = std::is_pointer_v<Result> || std::is_same_v<Result, sp_error>;

template <typename Result>
Result failure() {
    if constexpr (std::is_same_v<Result, sp_error>) {
        return SP_ERROR_OTHER_PERMANENT;
    } else {
        return Result();
    }
}

// What the test has scripted for the function: a handle, a text, or a number of any kind.
template <typename Result, typename... Arguments>
Result scripted(const char* function, const Arguments&... arguments) {
    const bool fails = canFail<Result> && Faults::get().strikes(Faults::Library);
    const Outside outside;
    fake().called(function, arguments...);
    if (fails) {
        return failure<Result>();
    }
    if constexpr (std::is_base_of_v<FakeHandle, std::remove_pointer_t<Result>>) {
        const auto& list = fake().handles[function];
        std::size_t index = 0;
        ((index = asIndex(arguments)), ...);  // the last argument's
        if (index < list.size()) {
            return static_cast<Result>(list[index]);
        }
        const auto sample = fake().samples.find(typeid(std::remove_pointer_t<Result>));
        return sample == fake().samples.end() ? nullptr : static_cast<Result>(sample->second);
    } else if constexpr (std::is_pointer_v<Result>) {
        const char* const text = fake().texts[function];
        return reinterpret_cast<Result>(text == nullptr ? fake().sampleText : text);
    } else {
        const auto answer = fake().answers.find(function);
        const int sample = std::is_enum_v<Result> ? 0 : fake().sampleNumber;
        return static_cast<Result>(answer == fake().answers.end() ? sample : answer->second);
    }
}

// The same, as a reference that is the caller's.
template <typename Kind, typename... Arguments>
Kind* created(const char* function, const Arguments&... arguments) {
    auto* handle = scripted<Kind*>(function, arguments...);
    if (handle != nullptr) {
        ++handle->references;
    }
    return handle;
}

// A query, whose one pending request the test completes.
template <typename Kind, typename Callback, typename... Arguments>
Kind* started(const char* function, Callback* complete, void* request, const Arguments&... all) {
    auto* query = created<Kind>(function, all...);
    const Outside outside;
    if (query != nullptr) {
        query->listeners.emplace_back(complete, request);
    }
    return query;
}

template <typename Kind, typename Callbacks>
sp_error listen(const char* function, Kind* handle, Callbacks* callbacks, void* userdata) {
    const bool fails = Faults::get().strikes(Faults::Library);
    const Outside outside;
    fake().called(function, handle);
    if (fails) {
        return SP_ERROR_OTHER_PERMANENT;
    }
    handle->listeners.emplace_back(callbacks, userdata);
    ++handle->registrations;
    return SP_ERROR_OK;
}

template <typename Kind, typename Callbacks>
sp_error ignore(const char* function, Kind* handle, Callbacks* callbacks, void* userdata) {
    const Outside outside;
    fake().called(function, handle);
    auto& all = handle->listeners;
    const auto found = std::find(all.begin(), all.end(), std::make_pair(callbacks, userdata));
    if (found == all.end() && Faults::get().struck) {
        return SP_ERROR_INVALID_INDATA;  // the adding failed
    }
    if (found == all.end()) {
        stop(function, "removes what was not added");
    }
    all.erase(found);
    --handle->registrations;
    return SP_ERROR_OK;
}

}  // namespace

// The uniform functions: GET answers as scripted for a handle, GET_AT for an index of it, GET_IN
// for a handle in the session, SET takes one more argument; CREATE answers a counted reference.
// clang-format off
#define GET(Result, Kind, what) \
    Result Kind##_##what(Kind* a) { return scripted<Result>(#Kind "_" #what, a); }
#define GET_AT(Result, Kind, what) \
    Result Kind##_##what(Kind* a, int b) { return scripted<Result>(#Kind "_" #what, a, b); }
#define GET_IN(Result, Kind, what) \
    Result Kind##_##what(sp_session* a, Kind* b) { return scripted<Result>(#Kind "_" #what, a, b); }
#define SET(Kind, what, Type) \
    sp_error Kind##_##what(Kind* a, Type b) { return scripted<sp_error>(#Kind "_" #what, a, b); }
#define CREATE(Kind, name, A) \
    Kind* name(A a) { return created<Kind>(#name, a); }
#define CREATE2(Kind, name, A, B) \
    Kind* name(A a, B b) { return created<Kind>(#name, a, b); }
#define COUNTED(Kind) \
    sp_error Kind##_add_ref(Kind* a) { return fake().count(__func__, a, 1); } \
    sp_error Kind##_release(Kind* a) { return fake().count(__func__, a, -1); }

const char* sp_build_id() {
    return Faults::get().strikes(Faults::Library) ? nullptr : fake().buildId.c_str();
}
const char* sp_error_message(sp_error error) { return scripted<const char*>(__func__, error); }

sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    const auto error = scripted<sp_error>(
        __func__, config->api_version, config->cache_location, config->settings_location,
        config->application_key_size != 0, config->user_agent, config->compress_playlists,
        config->dont_save_metadata_for_playlists, config->initially_unload_playlists,
        config->proxy, config->proxy_username, config->proxy_password, config->ca_certs_filename);
    const Outside outside;
    *session = error == SP_ERROR_OK ? fake().addSession(config->callbacks) : nullptr;
    return error;
}
sp_error sp_session_release(sp_session* session) {
    const Outside outside;
    fake().called(__func__, session);
    session->released = true;
    ++fake().sessionsReleased;
    return SP_ERROR_OK;
}
sp_error sp_session_login(
    sp_session* session, const char* user, const char* password, bool remember, const char* blob) {
    return scripted<sp_error>(__func__, session, user, password, remember, blob);
}
int sp_session_remembered_user(sp_session* session, char* buffer, size_t size) {
    const auto* name = scripted<const char*>(__func__, session);
    return name == nullptr ? -1 : snprintf(buffer, size, "%s", name);
}
sp_error sp_session_process_events(sp_session* session, int* nextTimeout) {
    const auto result = scripted<sp_error>(__func__, session);
    const Outside outside;
    *nextTimeout = fake().nextTimeout;
    if (fake().duringProcessEvents) {
        fake().duringProcessEvents();
    }
    return result;
}
GET(sp_error, sp_session, relogin) GET(sp_error, sp_session, forget_me)
GET(sp_error, sp_session, logout)  GET(sp_connectionstate, sp_session, connectionstate)
GET(int, sp_session, user_country) GET(int, sp_session, num_friends)
GET(sp_user*, sp_session, user)    GET_AT(sp_user*, sp_session, friend)
SET(sp_session, set_cache_size, size_t)
SET(sp_session, preferred_bitrate, sp_bitrate)
SET(sp_session, signup_perform_action, sp_signup_action)
GET(const char*, sp_session, signup_get_unaccepted_licenses)
GET(sp_playlistcontainer*, sp_session, playlistcontainer)
CREATE(sp_playlist, sp_session_inbox_create, sp_session*)
CREATE(sp_playlist, sp_session_starred_create, sp_session*)
CREATE2(sp_playlist, sp_session_starred_for_user_create, sp_session*, const char*)
CREATE2(sp_playlistcontainer, sp_session_publishedcontainer_for_user_create, sp_session*, const char*)

sp_error sp_session_player_load(sp_session* session, sp_track* track) {
    std::unique_lock<std::mutex> lock(fake().deliveryMutex);
    const auto result = scripted<sp_error>(__func__, session, track);
    lock.unlock();
    if (fake().duringPlayerLoad) {
        fake().duringPlayerLoad();
    }
    return result;
}
sp_error sp_session_player_unload(sp_session* session) {
    const std::lock_guard<std::mutex> lock(fake().deliveryMutex);
    return scripted<sp_error>(__func__, session);
}
SET(sp_session, player_seek, int)
SET(sp_session, player_play, bool)
SET(sp_session, player_prefetch, sp_track*)

COUNTED(sp_link)
CREATE2(sp_link, sp_link_create_from_track, sp_track*, int)
CREATE(sp_link, sp_link_create_from_playlist, sp_playlist*)
sp_link* sp_link_create_from_string(const char* text) { return fake().linkTo(text); }
int sp_link_as_string(sp_link* link, char* buffer, int size) {
    return snprintf(buffer, static_cast<size_t>(size), "%s", link->label.c_str());
}
sp_track* sp_link_as_track(sp_link* link) { return dynamic_cast<sp_track*>(link->target); }
sp_album* sp_link_as_album(sp_link* link) { return dynamic_cast<sp_album*>(link->target); }
sp_artist* sp_link_as_artist(sp_link* link) { return dynamic_cast<sp_artist*>(link->target); }

COUNTED(sp_track)
GET(bool, sp_track, is_loaded)           GET(sp_error, sp_track, error)
GET_IN(bool, sp_track, is_local)         GET(bool, sp_track, is_placeholder)
GET_IN(bool, sp_track, is_starred)       GET_IN(sp_track_availability, sp_track, get_availability)
GET_AT(sp_artist*, sp_track, artist)     GET(int, sp_track, num_artists)
GET(sp_album*, sp_track, album)          GET(const char*, sp_track, name)
GET(int, sp_track, duration)             GET(int, sp_track, popularity)
GET(int, sp_track, disc)                 GET(int, sp_track, index)
sp_error sp_track_set_starred(sp_session* session, sp_track* const* tracks, int count, bool star) {
    return scripted<sp_error>(__func__, session, *tracks, count, star);
}

COUNTED(sp_album)
GET(bool, sp_album, is_loaded)           GET(bool, sp_album, is_available)
GET(sp_artist*, sp_album, artist)        GET(const char*, sp_album, name)
GET(int, sp_album, year)                 GET(sp_albumtype, sp_album, type)
const byte* sp_album_cover(sp_album* album, sp_image_size size) {
    return scripted<const byte*>(__func__, album, size);
}

COUNTED(sp_artist)
GET(bool, sp_artist, is_loaded)          GET(const char*, sp_artist, name)
const byte* sp_artist_portrait(sp_artist* artist, sp_image_size size) {
    return scripted<const byte*>(__func__, artist, size);
}

COUNTED(sp_user)
GET(const char*, sp_user, canonical_name) GET(const char*, sp_user, display_name)
GET(const char*, sp_user, full_name)      GET(const char*, sp_user, picture)
GET(bool, sp_user, is_loaded)             GET_IN(sp_relation_type, sp_user, relation_type)

COUNTED(sp_image)
sp_image* sp_image_create(sp_session* session, const byte id[20]) {
    return created<sp_image>(__func__, session, std::string(id, id + 20));
}
sp_error sp_image_add_load_callback(sp_image* image, image_loaded_cb* callback, void* data) {
    return listen(__func__, image, callback, data);
}
sp_error sp_image_remove_load_callback(sp_image* image, image_loaded_cb* callback, void* data) {
    return ignore(__func__, image, callback, data);
}
const void* sp_image_data(sp_image* image, size_t* size) {
    const auto* data = scripted<const char*>(__func__, image);
    *size = data == nullptr ? 0 : strlen(data);
    return data;
}
GET(bool, sp_image, is_loaded)           GET(sp_error, sp_image, error)
GET(sp_imageformat, sp_image, format)    GET(const byte*, sp_image, image_id)

COUNTED(sp_search)
sp_search* sp_search_create(
    sp_session* session, const char* query, int a, int b, int c, int d, int e, int f, int g, int h,
    sp_search_type type, search_complete_cb* callback, void* data) {
    return started<sp_search>(__func__, callback, data, session, query, a, b, c, d, e, f, g, h, type);
}
GET(bool, sp_search, is_loaded)          GET(sp_error, sp_search, error)
GET(const char*, sp_search, query)       GET(const char*, sp_search, did_you_mean)
GET_AT(sp_track*, sp_search, track)      GET(int, sp_search, num_tracks)
GET_AT(sp_album*, sp_search, album)      GET(int, sp_search, num_albums)
GET_AT(sp_artist*, sp_search, artist)    GET(int, sp_search, num_artists)
GET_AT(sp_playlist*, sp_search, playlist) GET(int, sp_search, num_playlists)
GET(int, sp_search, total_tracks)        GET(int, sp_search, total_albums)
GET(int, sp_search, total_artists)       GET(int, sp_search, total_playlists)
GET_AT(const char*, sp_search, playlist_name)
GET_AT(const char*, sp_search, playlist_uri)
GET_AT(const char*, sp_search, playlist_image_uri)

COUNTED(sp_albumbrowse)
sp_albumbrowse* sp_albumbrowse_create(
    sp_session* session, sp_album* album, albumbrowse_complete_cb* callback, void* data) {
    return started<sp_albumbrowse>(__func__, callback, data, session, album);
}
GET(bool, sp_albumbrowse, is_loaded)     GET(sp_error, sp_albumbrowse, error)
GET(sp_album*, sp_albumbrowse, album)    GET(sp_artist*, sp_albumbrowse, artist)
GET_AT(sp_track*, sp_albumbrowse, track) GET(int, sp_albumbrowse, num_tracks)
GET_AT(const char*, sp_albumbrowse, copyright) GET(int, sp_albumbrowse, num_copyrights)

COUNTED(sp_artistbrowse)
sp_artistbrowse* sp_artistbrowse_create(sp_session* session, sp_artist* artist,
    sp_artistbrowse_type type, artistbrowse_complete_cb* callback, void* data) {
    return started<sp_artistbrowse>(__func__, callback, data, session, artist, type);
}
GET(bool, sp_artistbrowse, is_loaded)    GET(sp_error, sp_artistbrowse, error)
GET_AT(sp_album*, sp_artistbrowse, album) GET(int, sp_artistbrowse, num_albums)
GET_AT(sp_track*, sp_artistbrowse, tophit_track) GET(int, sp_artistbrowse, num_tophit_tracks)
GET(sp_artist*, sp_artistbrowse, artist)

COUNTED(sp_toplistbrowse)
sp_toplistbrowse* sp_toplistbrowse_create(sp_session* session, sp_toplisttype type,
    sp_toplistregion region, const char* user, toplistbrowse_complete_cb* callback, void* data) {
    return started<sp_toplistbrowse>(__func__, callback, data, session, type, region, user);
}
GET(bool, sp_toplistbrowse, is_loaded)   GET(sp_error, sp_toplistbrowse, error)
GET_AT(sp_artist*, sp_toplistbrowse, artist) GET(int, sp_toplistbrowse, num_artists)
GET_AT(sp_album*, sp_toplistbrowse, album) GET(int, sp_toplistbrowse, num_albums)
GET_AT(sp_track*, sp_toplistbrowse, track) GET(int, sp_toplistbrowse, num_tracks)

COUNTED(sp_playlist)
CREATE2(sp_playlist, sp_playlist_create, sp_session*, sp_link*)
sp_error sp_playlist_add_callbacks(sp_playlist* list, sp_playlist_callbacks* callbacks, void* data) {
    return listen(__func__, list, callbacks, data);
}
sp_error sp_playlist_remove_callbacks(sp_playlist* list, sp_playlist_callbacks* callbacks, void* data) {
    return ignore(__func__, list, callbacks, data);
}
GET(bool, sp_playlist, is_loaded)        GET(int, sp_playlist, num_tracks)
GET_AT(sp_track*, sp_playlist, track)    GET_AT(int, sp_playlist, track_create_time)
GET_AT(bool, sp_playlist, track_seen)    GET_AT(sp_user*, sp_playlist, track_creator)
GET(const char*, sp_playlist, name)      GET_AT(const char*, sp_playlist, track_message)
GET(sp_user*, sp_playlist, owner)        GET(bool, sp_playlist, is_collaborative)
GET_IN(bool, sp_playlist, is_in_ram)     GET(bool, sp_playlist, has_pending_changes)
GET(unsigned, sp_playlist, num_subscribers) GET(const char*, sp_playlist, get_description)
GET_IN(sp_error, sp_playlist, update_subscribers)
SET(sp_playlist, set_autolink_tracks, bool)
sp_error sp_playlist_track_set_seen(sp_playlist* playlist, int index, bool seen) {
    return scripted<sp_error>(__func__, playlist, index, seen);
}
sp_error sp_playlist_set_in_ram(sp_session* session, sp_playlist* playlist, bool inRam) {
    return scripted<sp_error>(__func__, session, playlist, inRam);
}
bool sp_playlist_get_image(sp_playlist* playlist, byte image[20]) {
    const auto* id = scripted<const char*>(__func__, playlist);
    return id != nullptr && memcpy(image, id, 20) != nullptr;
}
sp_error sp_playlist_add_tracks(
    sp_playlist* playlist, sp_track* const* tracks, int count, int position, sp_session* session) {
    return scripted<sp_error>(__func__, playlist, *tracks, count, position, session);
}
sp_subscribers* sp_playlist_subscribers(sp_playlist* playlist) {
    const bool fails = Faults::get().strikes(Faults::Library);
    const Outside outside;
    fake().called(__func__, playlist);
    if (fails) {
        return nullptr;
    }
    auto& names = fake().subscribers;
    auto* list = static_cast<sp_subscribers*>(calloc(1 + names.size(), sizeof(sp_subscribers)));
    for (std::string& name : names) {
        list->subscribers[list->count++] = &name[0];
    }
    return list;
}
sp_error sp_playlist_subscribers_free(sp_subscribers* subscribers) {
    free(subscribers);
    return scripted<sp_error>(__func__);
}

COUNTED(sp_playlistcontainer)
sp_error sp_playlistcontainer_add_callbacks(
    sp_playlistcontainer* container, sp_playlistcontainer_callbacks* callbacks, void* data) {
    return listen(__func__, container, callbacks, data);
}
sp_error sp_playlistcontainer_remove_callbacks(
    sp_playlistcontainer* container, sp_playlistcontainer_callbacks* callbacks, void* data) {
    return ignore(__func__, container, callbacks, data);
}
GET(bool, sp_playlistcontainer, is_loaded) GET(int, sp_playlistcontainer, num_playlists)
GET(sp_user*, sp_playlistcontainer, owner)
GET_AT(sp_playlist*, sp_playlistcontainer, playlist)
GET_AT(sp_playlist_type, sp_playlistcontainer, playlist_type)
GET_AT(sp_uint64, sp_playlistcontainer, playlist_folder_id)
sp_playlist* sp_playlistcontainer_add_playlist(sp_playlistcontainer* container, sp_link* link) {
    return scripted<sp_playlist*>(__func__, container, link);
}
sp_error sp_playlistcontainer_playlist_folder_name(
    sp_playlistcontainer* container, int index, char* buffer, int size) {
    const auto* name = scripted<const char*>(__func__, container, index);
    snprintf(buffer, name == nullptr ? 0 : static_cast<size_t>(size), "%s", name == nullptr ? "" : name);
    return SP_ERROR_OK;
}
// clang-format on
