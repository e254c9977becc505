// The recorded library: an answer for each of its functions, a call for each of its callbacks, made
// of the header's signatures.

#include "replay/Parts.h"
#include "replay/Sound.h"

#include "libspotify/api.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

using nlohmann::json;

namespace {

// ---- What the plug-in has given ----

// The layer's functions around the plug-in's own.
const sp_session_callbacks* sessionCallbacks = nullptr;
void* sessionUserdata = nullptr;
sp_playlist_callbacks* listCallbacks = nullptr;
sp_playlistcontainer_callbacks* containerCallbacks = nullptr;
std::unordered_map<Fn, void*> completions;

// ---- Results ----

template <class T>
T handleOf(const json& value) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address of the recording
    return reinterpret_cast<T>(Twins::address(value));
}

// At least so many. Null for null.
const void* bytesFrom(const json& value, std::size_t least) {
    if (value.is_null()) {
        return nullptr;
    }
    const std::string& bytes = replayer().twins.bytes(value);
    if (bytes.size() < least) {
        throw NotReplayable(std::to_string(least) + " bytes of which " +
                            std::to_string(bytes.size()) + " are there");
    }
    return bytes.data();
}

// A value of the recording as what the header says it is.
template <class T>
T valueFrom(const json& value) {
    using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_same_v<T, bool>) {
        return value.get<bool>();
    } else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>) {
        return static_cast<T>(value.get<std::int64_t>());
    } else if constexpr (std::is_same_v<T, const char*>) {
        return replayer().twins.text(value);
    } else if constexpr (HandleOf<Pointee>::value) {
        return handleOf<T>(value);
    } else if constexpr (std::is_same_v<T, const byte*>) {
        // An image's number.
        return reinterpret_cast<const byte*>(bytesFrom(value, 20));
    } else if constexpr (std::is_same_v<T, void*>) {
        return sessionUserdata;
    } else {
        static_assert(std::is_same_v<T, sp_subscribers*>);
        return nullptr;
    }
}

// What the call has written for its caller, into the argument that is for it.
template <class T>
void write(T, std::size_t, const json&) {}
void write(int* argument, std::size_t, const json& written) {
    if (argument != nullptr) {
        *argument = written.get<int>();
    }
}
void write(size_t* argument, std::size_t, const json& written) {
    if (argument != nullptr) {
        *argument = written.get<size_t>();
    }
}
void write(char* argument, std::size_t room, const json& written) {
    if (const char* const text = replayer().twins.text(written); text != nullptr && room > 0) {
        const std::size_t size = std::min(std::strlen(text), room - 1);
        std::memcpy(argument, text, size);
        argument[size] = '\0';
    }
}
void write(byte* argument, std::size_t, const json& written) {
    const std::string& bytes = replayer().twins.bytes(written);
    std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), 20), argument);
}

// The room of a text is the argument after it.
template <class T>
std::size_t roomIn(T next) {
    if constexpr (std::is_integral_v<T>) {
        return next > 0 ? static_cast<std::size_t>(next) : 0;
    } else {
        return 0;
    }
}

template <class... A>
void writeAll(const json& out, A... arguments) {
    if (out.size() > 1) {
        [[maybe_unused]] const std::size_t rooms[] = {roomIn(arguments)..., 0};
        std::size_t i = 0;
        (write(arguments, rooms[++i], out[1]), ...);
    }
}

// ---- Functions ----

template <class T>
void keepCallbacks(T) {}
void keepCallbacks(sp_playlist_callbacks* callbacks) {
    listCallbacks = callbacks;
}
void keepCallbacks(sp_playlistcontainer_callbacks* callbacks) {
    containerCallbacks = callbacks;
}
void keepCallbacks(image_loaded_cb* callback) {
    completions[Fn::image_loaded] = reinterpret_cast<void*>(callback);
}
void keepCallbacks(search_complete_cb* callback) {
    completions[Fn::search_complete] = reinterpret_cast<void*>(callback);
}
void keepCallbacks(albumbrowse_complete_cb* callback) {
    completions[Fn::albumbrowse_complete] = reinterpret_cast<void*>(callback);
}
void keepCallbacks(artistbrowse_complete_cb* callback) {
    completions[Fn::artistbrowse_complete] = reinterpret_cast<void*>(callback);
}
void keepCallbacks(toplistbrowse_complete_cb* callback) {
    completions[Fn::toplistbrowse_complete] = reinterpret_cast<void*>(callback);
}

template <Fn function, class Signature>
struct Answering;

template <Fn function, class R, class... A>
struct Answering<function, R(A...)> {
    static R answer(A... arguments) {
        (keepCallbacks(arguments), ...);
        return replayer().reading([&]() -> R {
            const json out = replayer().answered();
            writeAll(out, arguments...);
            if constexpr (std::is_same_v<R, sp_subscribers*>) {
                return subscribers(out);
            } else if constexpr (std::is_same_v<R, const void*>) {
                return bytesFrom(out.at(0), out.size() > 1 ? out[1].get<std::size_t>() : 0);
            } else {
                return valueFrom<R>(out.at(0));
            }
        });
    }

    // One piece of memory, as the library's.
    static sp_subscribers* subscribers(const json& out) {
        if (Twins::address(out.at(0)) == 0) {
            return nullptr;
        }
        const json texts = out.at(1).at("texts");
        auto& room = *new std::vector<sp_subscribers>(texts.size() + 1);
        auto* const record = room.data();
        record->count = static_cast<unsigned>(texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            record->subscribers[i] = const_cast<char*>(replayer().twins.text(texts[i]));
        }
        replayer().twins.pair(Twins::address(out[0]), record);
        return record;
    }
};

template <>
struct Answering<Fn::sp_session_create, sp_error(const sp_session_config*, sp_session**)> {
    static sp_error answer(const sp_session_config* config, sp_session** session) {
        sessionCallbacks = config->callbacks;
        sessionUserdata = config->userdata;
        return replayer().reading([&] {
            const json out = replayer().answered();
            const auto error = valueFrom<sp_error>(out.at(0));
            if (error == SP_ERROR_OK) {
                *session = handleOf<sp_session*>(out.at(1));
            }
            return error;
        });
    }
};

// ---- Callbacks ----

// What an argument points to, for as long as the call lasts.
struct Kept {
    std::vector<sp_track*> tracks;
    std::vector<int> integers;
    sp_audioformat format{};
    sp_audio_buffer_stats stats{};
};

template <class T>
T argumentFrom(const json& in, std::size_t i, Kept& kept) {
    const json& value = in.at(i);
    if constexpr (std::is_same_v<T, sp_track* const*>) {
        for (const json& track : value.at("track")) {
            kept.tracks.push_back(handleOf<sp_track*>(json{{"track", track}}));
        }
        Twins::count(in.at(i + 1), kept.tracks.size());
        return kept.tracks.data();
    } else if constexpr (std::is_same_v<T, const int*>) {
        kept.integers = value.get<std::vector<int>>();
        Twins::count(in.at(i + 1), kept.integers.size());
        return kept.integers.data();
    } else if constexpr (std::is_same_v<T, const sp_audioformat*>) {
        kept.format = {static_cast<sp_sampletype>(value.at(0).get<int>()), value.at(1).get<int>(),
                       value.at(2).get<int>()};
        return &kept.format;
    } else if constexpr (std::is_same_v<T, sp_audio_buffer_stats*>) {
        return &kept.stats;
    } else if constexpr (std::is_same_v<T, const void*>) {
        // Only sound: the number of frames is the argument after it.
        const std::int64_t channels = in.at(i - 1).at(2).get<int>();
        const json out = replayer().resultsOfThis();
        const auto taken = out.empty() ? in.at(i + 1) : out[0];
        return soundFor(in.at(i + 1).get<std::int64_t>(), taken.get<std::int64_t>(), 2 * channels);
    } else if constexpr (std::is_same_v<T, void*>) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the number of a registration
        return reinterpret_cast<void*>(value.get<std::uintptr_t>());
    } else {
        return valueFrom<T>(value);
    }
}

template <class R, class... A, std::size_t... i>
void callWith(R (*function)(A...), const json& in, std::index_sequence<i...>) {
    if (function == nullptr) {
        throw NotReplayable("the plug-in has given no such callback");
    }
    Kept kept;
    const std::tuple<A...> arguments{argumentFrom<A>(in, i, kept)...};
    std::apply(function, arguments);
}

template <class R, class... A>
void callWith(R (*function)(A...), const json& in) {
    callWith(function, in, std::index_sequence_for<A...>());
}

template <class Record>
Record& given(Record* record) {
    if (record == nullptr) {
        throw NotReplayable("the plug-in has given no callbacks");
    }
    return *record;
}

template <Fn function, class Callback>
void complete(Callback*, const json& in) {
    callWith(reinterpret_cast<Callback*>(completions[function]), in);
}

}  // namespace

void* replayedLibrary(const std::string& symbol) {
#define SONOLET_ANSWER(name)                                                                       \
    {#name, reinterpret_cast<void*>(&Answering<Fn::name, decltype(::name)>::answer)},
    static const auto& all =
        *new std::unordered_map<std::string, void*>{SONOLET_LIBRARY_FUNCTIONS(SONOLET_ANSWER)};
#undef SONOLET_ANSWER
    const auto found = all.find(symbol);
    return found != all.end() ? found->second : nullptr;
}

void addLibraryCalls() {
    Replayer& to = replayer();
#define SONOLET_CALL(name)                                                                         \
    to.invoke(Fn::name, [](const json& in) { callWith(given(sessionCallbacks).name, in); });
    SONOLET_SESSION_CALLBACKS(SONOLET_CALL)
#undef SONOLET_CALL
#define SONOLET_CALL(name)                                                                         \
    to.invoke(Fn::name, [](const json& in) { callWith(given(listCallbacks).name, in); });
    SONOLET_PLAYLIST_CALLBACKS(SONOLET_CALL)
#undef SONOLET_CALL
#define SONOLET_CALL(name)                                                                         \
    to.invoke(Fn::name, [](const json& in) { callWith(given(containerCallbacks).name, in); });
    SONOLET_CONTAINER_CALLBACKS(SONOLET_CALL)
#undef SONOLET_CALL
#define SONOLET_CALL(name)                                                                         \
    to.invoke(Fn::name,                                                                            \
              [](const json& in) { complete<Fn::name>(static_cast<name##_cb*>(nullptr), in); });
    SONOLET_COMPLETIONS(SONOLET_CALL)
#undef SONOLET_CALL
}
