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
    } else if constexpr (std::is_pointer_v<std::remove_pointer_t<Argument>>) {
        print(out, function, *argument);
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
        if (spotify.afterExit) {
            spotify.afterExit();
        }
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
        return reinterpret_cast<Result>(
            const_cast<char*>(text == nullptr ? fake().sampleText : text));
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

const char* sp_build_id() {
    return Faults::get().strikes(Faults::Library) ? nullptr : fake().buildId.c_str();
}

sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    const auto error = scripted<sp_error>(
        __func__, config->api_version, config->cache_location, config->settings_location,
        config->application_key_size != 0, config->user_agent, config->compress_playlists,
        config->dont_save_metadata_for_playlists, config->initially_unload_playlists, config->proxy,
        config->proxy_username, config->proxy_password, config->ca_certs_filename);
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

int sp_session_remembered_user(sp_session* session, char* buffer, size_t size) {
    const auto* name = scripted<const char*>(__func__, session);
    return name == nullptr ? -1 : snprintf(buffer, size, "%s", name);
}

sp_error sp_session_process_events(sp_session* session, int* nextTimeout) {
    const auto result = scripted<sp_error>(__func__, session);
    const Outside outside;
    *nextTimeout = 1000;
    if (fake().duringProcessEvents) {
        fake().duringProcessEvents();
    }
    return result;
}

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

sp_link* sp_link_create_from_string(const char* text) {
    return fake().linkTo(text);
}
int sp_link_as_string(sp_link* link, char* buffer, int size) {
    return snprintf(buffer, static_cast<size_t>(size), "%s", link->label.c_str());
}
sp_track* sp_link_as_track(sp_link* link) {
    return dynamic_cast<sp_track*>(link->target);
}
sp_album* sp_link_as_album(sp_link* link) {
    return dynamic_cast<sp_album*>(link->target);
}
sp_artist* sp_link_as_artist(sp_link* link) {
    return dynamic_cast<sp_artist*>(link->target);
}

sp_image* sp_image_create(sp_session* session, const byte id[20]) {
    return created<sp_image>(__func__, session, std::string(id, id + 20));
}
const void* sp_image_data(sp_image* image, size_t* size) {
    const auto* data = scripted<const char*>(__func__, image);
    *size = data == nullptr ? 0 : strlen(data);
    return data;
}

bool sp_playlist_get_image(sp_playlist* playlist, byte image[20]) {
    const auto* id = scripted<const char*>(__func__, playlist);
    return id != nullptr && memcpy(image, id, 20) != nullptr;
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
sp_error sp_playlistcontainer_playlist_folder_name(sp_playlistcontainer* container,
                                                   int index,
                                                   char* buffer,
                                                   int size) {
    const auto* name = scripted<const char*>(__func__, container, index);
    if (name != nullptr) {
        snprintf(buffer, static_cast<size_t>(size), "%s", name);
    }
    return SP_ERROR_OK;
}

// All others, as they are declared: made by LibraryFunctions.cmake.
#include "LibraryFunctions.inc"
