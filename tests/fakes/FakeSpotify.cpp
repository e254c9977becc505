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
    calls.push_back(call.str());
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
    const auto found = links.find(text);
    if (found == links.end()) {
        return nullptr;
    }
    found->second.label = text;
    ++found->second.references;
    return &found->second;
}

int FakeSpotify::deliver(const void* frames, int count) {
    const std::lock_guard<std::mutex> lock(deliveryMutex);
    const sp_audioformat format{SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, 2};
    return callbacks().music_delivery(session(), &format, frames, count);
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

// What the test has scripted for the function: a handle, a text, or a number of any kind.
template <typename Result, typename... Arguments>
Result scripted(const char* function, const Arguments&... arguments) {
    fake().called(function, arguments...);
    if constexpr (std::is_base_of_v<FakeHandle, std::remove_pointer_t<Result>>) {
        const auto& list = fake().handles[function];
        std::size_t index = 0;
        ((index = asIndex(arguments)), ...);  // the last argument's
        return index < list.size() ? static_cast<Result>(list[index]) : nullptr;
    } else if constexpr (std::is_pointer_v<Result>) {
        return reinterpret_cast<Result>(fake().texts[function]);
    } else {
        return static_cast<Result>(fake().answers[function]);
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
    if (query != nullptr) {
        query->listeners.emplace_back(complete, request);
    }
    return query;
}

template <typename Kind, typename Callbacks>
sp_error listen(const char* function, Kind* handle, Callbacks* callbacks, void* userdata) {
    fake().called(function, handle);
    handle->listeners.emplace_back(callbacks, userdata);
    ++handle->registrations;
    return SP_ERROR_OK;
}

template <typename Kind, typename Callbacks>
sp_error ignore(const char* function, Kind* handle, Callbacks* callbacks, void* userdata) {
    fake().called(function, handle);
    auto& all = handle->listeners;
    const auto found = std::find(all.begin(), all.end(), std::make_pair(callbacks, userdata));
    if (found == all.end()) {
        stop(function, "removes what was not added");
    }
    all.erase(found);
    --handle->registrations;
    return SP_ERROR_OK;
}

}  // namespace

// A function that answers as scripted, and the two that count references of a kind.
#define SCRIPTED(Result, name, A)                                                                  \
    Result name(A a) {                                                                             \
        return scripted<Result>(#name, a);                                                         \
    }
#define SCRIPTED2(Result, name, A, B)                                                              \
    Result name(A a, B b) {                                                                        \
        return scripted<Result>(#name, a, b);                                                      \
    }
#define COUNTED(Kind)                                                                              \
    sp_error Kind##_add_ref(Kind* handle) {                                                        \
        return fake().count(__func__, handle, 1);                                                  \
    }                                                                                              \
    sp_error Kind##_release(Kind* handle) {                                                        \
        return fake().count(__func__, handle, -1);                                                 \
    }

// clang-format off
const char* sp_build_id() { return fake().buildId.c_str(); }
SCRIPTED(const char*, sp_error_message, sp_error)

sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    const auto error = scripted<sp_error>(
        __func__, config->api_version, config->cache_location, config->settings_location,
        config->application_key_size != 0, config->user_agent, config->compress_playlists,
        config->dont_save_metadata_for_playlists, config->initially_unload_playlists,
        config->proxy, config->proxy_username, config->proxy_password, config->ca_certs_filename);
    *session = error == SP_ERROR_OK ? fake().addSession(config->callbacks) : nullptr;
    return error;
}
sp_error sp_session_release(sp_session* session) {
    fake().called(__func__, session);
    session->released = true;
    ++fake().sessionsReleased;
    return SP_ERROR_OK;
}
sp_error sp_session_login(
    sp_session* session, const char* username, const char* password, bool remember, const char* blob) {
    return scripted<sp_error>(__func__, session, username, password, remember, blob);
}
int sp_session_remembered_user(sp_session* session, char* buffer, size_t size) {
    const auto* name = scripted<const char*>(__func__, session);
    return name == nullptr ? -1 : snprintf(buffer, size, "%s", name);
}
sp_error sp_session_process_events(sp_session* session, int* nextTimeout) {
    const auto result = scripted<sp_error>(__func__, session);
    *nextTimeout = fake().nextTimeout;
    if (fake().duringProcessEvents) {
        fake().duringProcessEvents();
    }
    return result;
}
SCRIPTED(sp_error, sp_session_relogin, sp_session*)
SCRIPTED(sp_error, sp_session_forget_me, sp_session*)
SCRIPTED(sp_user*, sp_session_user, sp_session*)
SCRIPTED(sp_error, sp_session_logout, sp_session*)
SCRIPTED(sp_connectionstate, sp_session_connectionstate, sp_session*)
SCRIPTED2(sp_error, sp_session_set_cache_size, sp_session*, size_t)
SCRIPTED2(sp_error, sp_session_preferred_bitrate, sp_session*, sp_bitrate)
SCRIPTED(int, sp_session_user_country, sp_session*)
SCRIPTED(int, sp_session_num_friends, sp_session*)
SCRIPTED2(sp_user*, sp_session_friend, sp_session*, int)
SCRIPTED(const char*, sp_session_signup_get_unaccepted_licenses, sp_session*)
SCRIPTED2(sp_error, sp_session_signup_perform_action, sp_session*, sp_signup_action)

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
SCRIPTED2(sp_error, sp_session_player_seek, sp_session*, int)
SCRIPTED2(sp_error, sp_session_player_play, sp_session*, bool)
SCRIPTED2(sp_error, sp_session_player_prefetch, sp_session*, sp_track*)

sp_link* sp_link_create_from_string(const char* text) {
    fake().called(__func__, text);
    return fake().linkTo(text);
}
sp_track* sp_link_as_track(sp_link* link) { return dynamic_cast<sp_track*>(link->target); }
sp_album* sp_link_as_album(sp_link* link) { return dynamic_cast<sp_album*>(link->target); }
sp_artist* sp_link_as_artist(sp_link* link) { return dynamic_cast<sp_artist*>(link->target); }

sp_link* sp_link_create_from_track(sp_track* track, int offset) {
    return created<sp_link>(__func__, track, offset);
}
sp_link* sp_link_create_from_playlist(sp_playlist* playlist) {
    return created<sp_link>(__func__, playlist);
}
int sp_link_as_string(sp_link* link, char* buffer, int size) {
    return snprintf(buffer, static_cast<size_t>(size), "%s", link->label.c_str());
}
COUNTED(sp_link)

COUNTED(sp_track)
SCRIPTED(bool, sp_track_is_loaded, sp_track*)
SCRIPTED(sp_error, sp_track_error, sp_track*)
SCRIPTED2(sp_track_availability, sp_track_get_availability, sp_session*, sp_track*)
SCRIPTED2(bool, sp_track_is_local, sp_session*, sp_track*)
SCRIPTED(bool, sp_track_is_placeholder, sp_track*)
SCRIPTED2(bool, sp_track_is_starred, sp_session*, sp_track*)
sp_error sp_track_set_starred(sp_session* session, sp_track* const* tracks, int count, bool star) {
    return scripted<sp_error>(__func__, session, *tracks, count, star);
}
SCRIPTED(int, sp_track_num_artists, sp_track*)
SCRIPTED2(sp_artist*, sp_track_artist, sp_track*, int)
SCRIPTED(sp_album*, sp_track_album, sp_track*)
SCRIPTED(const char*, sp_track_name, sp_track*)
SCRIPTED(int, sp_track_duration, sp_track*)
SCRIPTED(int, sp_track_popularity, sp_track*)
SCRIPTED(int, sp_track_disc, sp_track*)
SCRIPTED(int, sp_track_index, sp_track*)

COUNTED(sp_album)
SCRIPTED(bool, sp_album_is_loaded, sp_album*)
SCRIPTED(bool, sp_album_is_available, sp_album*)
SCRIPTED(sp_artist*, sp_album_artist, sp_album*)
SCRIPTED2(const byte*, sp_album_cover, sp_album*, sp_image_size)
SCRIPTED(const char*, sp_album_name, sp_album*)
SCRIPTED(int, sp_album_year, sp_album*)
SCRIPTED(sp_albumtype, sp_album_type, sp_album*)

COUNTED(sp_artist)
SCRIPTED(const char*, sp_artist_name, sp_artist*)
SCRIPTED(bool, sp_artist_is_loaded, sp_artist*)
SCRIPTED2(const byte*, sp_artist_portrait, sp_artist*, sp_image_size)

COUNTED(sp_user)
SCRIPTED(const char*, sp_user_canonical_name, sp_user*)
SCRIPTED(const char*, sp_user_display_name, sp_user*)
SCRIPTED(const char*, sp_user_full_name, sp_user*)
SCRIPTED(const char*, sp_user_picture, sp_user*)
SCRIPTED(bool, sp_user_is_loaded, sp_user*)
SCRIPTED2(sp_relation_type, sp_user_relation_type, sp_session*, sp_user*)

COUNTED(sp_image)
sp_image* sp_image_create(sp_session* session, const byte id[20]) {
    return created<sp_image>(__func__, session, std::string(id, id + 20));
}
sp_error sp_image_add_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata) {
    return listen(__func__, image, callback, userdata);
}
sp_error sp_image_remove_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata) {
    return ignore(__func__, image, callback, userdata);
}
const void* sp_image_data(sp_image* image, size_t* size) {
    const auto* data = scripted<const char*>(__func__, image);
    *size = data == nullptr ? 0 : strlen(data);
    return data;
}
SCRIPTED(bool, sp_image_is_loaded, sp_image*)
SCRIPTED(sp_error, sp_image_error, sp_image*)
SCRIPTED(sp_imageformat, sp_image_format, sp_image*)
SCRIPTED(const byte*, sp_image_image_id, sp_image*)

COUNTED(sp_search)
sp_search* sp_search_create(sp_session* session, const char* query, int trackOffset, int trackCount,
                            int albumOffset, int albumCount, int artistOffset, int artistCount,
                            int playlistOffset, int playlistCount, sp_search_type type,
                            search_complete_cb* callback, void* userdata) {
    return started<sp_search>(__func__, callback, userdata, session, query, trackOffset, trackCount,
                              albumOffset, albumCount, artistOffset, artistCount, playlistOffset,
                              playlistCount, type);
}
SCRIPTED(bool, sp_search_is_loaded, sp_search*)
SCRIPTED(sp_error, sp_search_error, sp_search*)
SCRIPTED(const char*, sp_search_query, sp_search*)
SCRIPTED(const char*, sp_search_did_you_mean, sp_search*)
SCRIPTED(int, sp_search_num_tracks, sp_search*)
SCRIPTED2(sp_track*, sp_search_track, sp_search*, int)
SCRIPTED(int, sp_search_num_albums, sp_search*)
SCRIPTED2(sp_album*, sp_search_album, sp_search*, int)
SCRIPTED(int, sp_search_num_artists, sp_search*)
SCRIPTED2(sp_artist*, sp_search_artist, sp_search*, int)
SCRIPTED(int, sp_search_num_playlists, sp_search*)
SCRIPTED2(sp_playlist*, sp_search_playlist, sp_search*, int)
SCRIPTED2(const char*, sp_search_playlist_name, sp_search*, int)
SCRIPTED2(const char*, sp_search_playlist_uri, sp_search*, int)
SCRIPTED2(const char*, sp_search_playlist_image_uri, sp_search*, int)
SCRIPTED(int, sp_search_total_tracks, sp_search*)
SCRIPTED(int, sp_search_total_albums, sp_search*)
SCRIPTED(int, sp_search_total_artists, sp_search*)
SCRIPTED(int, sp_search_total_playlists, sp_search*)

COUNTED(sp_albumbrowse)
sp_albumbrowse* sp_albumbrowse_create(
    sp_session* session, sp_album* album, albumbrowse_complete_cb* callback, void* userdata) {
    return started<sp_albumbrowse>(__func__, callback, userdata, session, album);
}
SCRIPTED(bool, sp_albumbrowse_is_loaded, sp_albumbrowse*)
SCRIPTED(sp_error, sp_albumbrowse_error, sp_albumbrowse*)
SCRIPTED(sp_album*, sp_albumbrowse_album, sp_albumbrowse*)
SCRIPTED(sp_artist*, sp_albumbrowse_artist, sp_albumbrowse*)
SCRIPTED(int, sp_albumbrowse_num_copyrights, sp_albumbrowse*)
SCRIPTED2(const char*, sp_albumbrowse_copyright, sp_albumbrowse*, int)
SCRIPTED(int, sp_albumbrowse_num_tracks, sp_albumbrowse*)
SCRIPTED2(sp_track*, sp_albumbrowse_track, sp_albumbrowse*, int)

COUNTED(sp_artistbrowse)
sp_artistbrowse* sp_artistbrowse_create(sp_session* session, sp_artist* artist,
                                        sp_artistbrowse_type type,
                                        artistbrowse_complete_cb* callback, void* userdata) {
    return started<sp_artistbrowse>(__func__, callback, userdata, session, artist, type);
}
SCRIPTED(bool, sp_artistbrowse_is_loaded, sp_artistbrowse*)
SCRIPTED(sp_error, sp_artistbrowse_error, sp_artistbrowse*)
SCRIPTED(sp_artist*, sp_artistbrowse_artist, sp_artistbrowse*)
SCRIPTED(int, sp_artistbrowse_num_albums, sp_artistbrowse*)
SCRIPTED2(sp_album*, sp_artistbrowse_album, sp_artistbrowse*, int)
SCRIPTED(int, sp_artistbrowse_num_tophit_tracks, sp_artistbrowse*)
SCRIPTED2(sp_track*, sp_artistbrowse_tophit_track, sp_artistbrowse*, int)

COUNTED(sp_toplistbrowse)
sp_toplistbrowse* sp_toplistbrowse_create(sp_session* session, sp_toplisttype type,
                                          sp_toplistregion region, const char* user,
                                          toplistbrowse_complete_cb* callback, void* userdata) {
    return started<sp_toplistbrowse>(__func__, callback, userdata, session, type, region, user);
}
SCRIPTED(bool, sp_toplistbrowse_is_loaded, sp_toplistbrowse*)
SCRIPTED(sp_error, sp_toplistbrowse_error, sp_toplistbrowse*)
SCRIPTED(int, sp_toplistbrowse_num_artists, sp_toplistbrowse*)
SCRIPTED2(sp_artist*, sp_toplistbrowse_artist, sp_toplistbrowse*, int)
SCRIPTED(int, sp_toplistbrowse_num_albums, sp_toplistbrowse*)
SCRIPTED2(sp_album*, sp_toplistbrowse_album, sp_toplistbrowse*, int)
SCRIPTED(int, sp_toplistbrowse_num_tracks, sp_toplistbrowse*)
SCRIPTED2(sp_track*, sp_toplistbrowse_track, sp_toplistbrowse*, int)

sp_playlist* sp_session_inbox_create(sp_session* session) {
    return created<sp_playlist>(__func__, session);
}
sp_playlist* sp_session_starred_create(sp_session* session) {
    return created<sp_playlist>(__func__, session);
}
sp_playlist* sp_session_starred_for_user_create(sp_session* session, const char* user) {
    return created<sp_playlist>(__func__, session, user);
}
sp_playlistcontainer* sp_session_publishedcontainer_for_user_create(sp_session* session,
                                                                    const char* user) {
    return created<sp_playlistcontainer>(__func__, session, user);
}
SCRIPTED(sp_playlistcontainer*, sp_session_playlistcontainer, sp_session*)

COUNTED(sp_playlist)
sp_playlist* sp_playlist_create(sp_session* session, sp_link* link) {
    return created<sp_playlist>(__func__, session, link);
}
sp_error sp_playlist_add_callbacks(sp_playlist* playlist, sp_playlist_callbacks* callbacks, void* data) {
    return listen(__func__, playlist, callbacks, data);
}
sp_error sp_playlist_remove_callbacks(sp_playlist* playlist, sp_playlist_callbacks* callbacks, void* data) {
    return ignore(__func__, playlist, callbacks, data);
}
SCRIPTED(bool, sp_playlist_is_loaded, sp_playlist*)
SCRIPTED(int, sp_playlist_num_tracks, sp_playlist*)
SCRIPTED2(sp_track*, sp_playlist_track, sp_playlist*, int)
SCRIPTED2(int, sp_playlist_track_create_time, sp_playlist*, int)
SCRIPTED2(sp_user*, sp_playlist_track_creator, sp_playlist*, int)
SCRIPTED2(bool, sp_playlist_track_seen, sp_playlist*, int)
sp_error sp_playlist_track_set_seen(sp_playlist* playlist, int index, bool seen) {
    return scripted<sp_error>(__func__, playlist, index, seen);
}
SCRIPTED2(const char*, sp_playlist_track_message, sp_playlist*, int)
SCRIPTED(const char*, sp_playlist_name, sp_playlist*)
SCRIPTED(sp_user*, sp_playlist_owner, sp_playlist*)
SCRIPTED(bool, sp_playlist_is_collaborative, sp_playlist*)
SCRIPTED2(sp_error, sp_playlist_set_autolink_tracks, sp_playlist*, bool)
SCRIPTED(const char*, sp_playlist_get_description, sp_playlist*)
bool sp_playlist_get_image(sp_playlist* playlist, byte image[20]) {
    const auto* id = scripted<const char*>(__func__, playlist);
    return id != nullptr && memcpy(image, id, 20) != nullptr;
}
SCRIPTED(bool, sp_playlist_has_pending_changes, sp_playlist*)
sp_error sp_playlist_add_tracks(
    sp_playlist* playlist, sp_track* const* tracks, int count, int position, sp_session* session) {
    return scripted<sp_error>(__func__, playlist, *tracks, count, position, session);
}
SCRIPTED(unsigned, sp_playlist_num_subscribers, sp_playlist*)
sp_subscribers* sp_playlist_subscribers(sp_playlist* playlist) {
    fake().called(__func__, playlist);
    auto& names = fake().subscribers;
    auto* list = static_cast<sp_subscribers*>(calloc(2 + names.size(), sizeof(sp_subscribers)));
    for (std::string& name : names) {
        list->subscribers[list->count++] = &name[0];
    }
    return list;
}
sp_error sp_playlist_subscribers_free(sp_subscribers* subscribers) {
    free(subscribers);
    return scripted<sp_error>(__func__);
}
SCRIPTED2(sp_error, sp_playlist_update_subscribers, sp_session*, sp_playlist*)
SCRIPTED2(bool, sp_playlist_is_in_ram, sp_session*, sp_playlist*)
sp_error sp_playlist_set_in_ram(sp_session* session, sp_playlist* playlist, bool inRam) {
    return scripted<sp_error>(__func__, session, playlist, inRam);
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
SCRIPTED(int, sp_playlistcontainer_num_playlists, sp_playlistcontainer*)
SCRIPTED(bool, sp_playlistcontainer_is_loaded, sp_playlistcontainer*)
SCRIPTED2(sp_playlist*, sp_playlistcontainer_playlist, sp_playlistcontainer*, int)
SCRIPTED2(sp_playlist_type, sp_playlistcontainer_playlist_type, sp_playlistcontainer*, int)
sp_error sp_playlistcontainer_playlist_folder_name(
    sp_playlistcontainer* container, int index, char* buffer, int size) {
    const auto* name = scripted<const char*>(__func__, container, index);
    if (name != nullptr) {
        snprintf(buffer, static_cast<size_t>(size), "%s", name);
    }
    return SP_ERROR_OK;
}
SCRIPTED2(sp_uint64, sp_playlistcontainer_playlist_folder_id, sp_playlistcontainer*, int)
SCRIPTED2(sp_playlist*, sp_playlistcontainer_add_playlist, sp_playlistcontainer*, sp_link*)
SCRIPTED(sp_user*, sp_playlistcontainer_owner, sp_playlistcontainer*)
// clang-format on
