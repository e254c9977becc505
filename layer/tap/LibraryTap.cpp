// The music service's library: a function for each of its functions and callbacks, made of the
// header's signatures.

#include "tap/Call.h"
#include "tap/Registrations.h"
#include "tap/Taps.h"

#include "libspotify/api.h"

#include <array>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace {

// ---- Values ----

template <std::size_t count>
using Values = std::array<Value, count>;

bool isSecret(Fn function, std::size_t index) {
    return (function == Fn::sp_session_login && (index == 2 || index == 4)) ||
           (function == Fn::credentials_blob_updated && index == 1);
}

// Arrays are as long as the argument after them says.
template <std::size_t count>
void complete(Fn function, Values<count>& values) {
    for (std::size_t i = 0; i < count; ++i) {
        Value& value = values[i];
        if ((value.tag == Tag::Handles || (value.tag == Tag::Integers && value.size == 0)) &&
            i + 1 < count) {
            const std::int64_t size = values[i + 1].u.integer;
            value.size = size > 0 ? static_cast<std::uint32_t>(size) : 0;
        } else if (value.tag == Tag::Text && isSecret(function, i)) {
            value.tag = Tag::Secret;
        }
    }
}

template <class... A>
auto valuesOf(Fn function, A... arguments) {
    Values<sizeof...(A)> values{valueOf(arguments)...};
    complete(function, values);
    return values;
}

// What a function has written for its caller: at most one thing.
template <class R, class... A>
Value writtenBy(const R& result, const std::tuple<A...>& arguments) {
    Value written;
    bool isDone = true;
    if constexpr (std::is_same_v<R, sp_error>) {
        isDone = result == SP_ERROR_OK;
    } else if constexpr (std::is_same_v<R, int>) {
        isDone = result >= 0;
    } else if constexpr (std::is_same_v<R, bool>) {
        isDone = result;
    }
    if (!isDone) {
        return written;
    }
    const auto look = [&](auto argument, std::size_t room) {
        using T = decltype(argument);
        if constexpr (std::is_same_v<T, int*> || std::is_same_v<T, size_t*>) {
            written =
                argument != nullptr ? integerValue(static_cast<std::int64_t>(*argument)) : Value();
        } else if constexpr (std::is_same_v<T, sp_session**>) {
            written = valueOf(*argument);
        } else if constexpr (std::is_same_v<T, sp_audio_buffer_stats*>) {
            written = Value::of(Tag::Integers, argument, 2);
        } else if constexpr (std::is_same_v<T, char*>) {
            written = Value::of(Tag::Text, argument, strnlen(argument, room));
        } else if constexpr (std::is_same_v<T, byte*>) {
            written = Value::of(Tag::Bytes, argument, 20);
        } else {
            (void)argument;
            (void)room;
        }
    };
    // The room of a text is the argument after it.
    const auto roomAt = [&](auto next) {
        if constexpr (std::is_integral_v<decltype(next)>) {
            return next > 0 ? static_cast<std::size_t>(next) : 0;
        } else {
            return std::size_t{0};
        }
    };
    const auto lookAll = [&](auto... each) {
        [[maybe_unused]] const std::size_t rooms[] = {roomAt(each)..., 0};
        [[maybe_unused]] std::size_t i = 0;
        (look(each, rooms[++i]), ...);
    };
    std::apply(lookAll, arguments);
    return written;
}

// ---- Functions ----

template <class T>
constexpr bool isCompletion = std::is_pointer_v<T>&& std::is_function_v<std::remove_pointer_t<T>>;
template <class T>
constexpr bool isRecord =
    std::is_same_v<T, sp_playlist_callbacks*> || std::is_same_v<T, sp_playlistcontainer_callbacks*>;

// The type of the last but one argument, where callbacks are.
template <class... A>
struct LastButOne {
    using type = void;
};
template <class A, class B, class... More>
struct LastButOne<A, B, More...> {
    using type = std::conditional_t<sizeof...(More) == 0, A, typename LastButOne<B, More...>::type>;
};

void* layersCallbacks(image_loaded_cb*);
void* layersCallbacks(search_complete_cb*);
void* layersCallbacks(albumbrowse_complete_cb*);
void* layersCallbacks(artistbrowse_complete_cb*);
void* layersCallbacks(toplistbrowse_complete_cb*);
void* layersCallbacks(sp_playlist_callbacks*);
void* layersCallbacks(sp_playlistcontainer_callbacks*);
const sp_session_callbacks* layersCallbacks(const sp_session_callbacks* ofPlugin);

template <class T>
constexpr bool hasCallbacks = isCompletion<T> || isRecord<T>;

constexpr bool has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// Says of a handle's callback whom it is for. Handles that queries make are not known before.
template <class First>
const void* subjectOf(First first) {
    return std::is_same_v<First, sp_session*> ? nullptr : first;
}

template <Fn function, class Signature>
struct Passing;

template <Fn function, class R, class... A>
struct Passing<function, R(A...)> {
    static inline R (*original)(A...) = nullptr;
    static constexpr std::string_view name = infoOf(function).name;

    static R pass(A... arguments) {
        if constexpr (hasCallbacks<typename LastButOne<A...>::type>) {
            return withCallbacks(std::index_sequence_for<A...>(), arguments...);
        } else {
            const auto values = valuesOf(function, arguments...);
            Call call(function, values.data(), values.size());
            return ended(call, original(arguments...), arguments...);
        }
    }

    static R ended(Call& call, R result, A... arguments) {
        Value results[] = {valueOf(result), writtenBy(result, std::tuple<A...>(arguments...))};
        if constexpr (function == Fn::sp_playlist_subscribers) {
            results[1] = result != nullptr
                             ? Value::of(Tag::Texts, result->subscribers, result->count)
                             : Value();
        }
        if constexpr (function == Fn::sp_image_data) {
            results[0] = result != nullptr ? Value::of(Tag::Bytes, result, results[1].u.integer)
                                           : Value::of(Tag::Null, nullptr);
        }
        call.end(results, results[1].tag == Tag::Nothing ? 1 : 2);
        return result;
    }

    // The last two arguments are callbacks and user data: the layer's take their place.
    template <std::size_t... i>
    static R withCallbacks(std::index_sequence<i...>, A... arguments) {
        constexpr std::size_t at = sizeof...(A) - 2;
        std::tuple<A...> all(arguments...);
        auto& callbacks = std::get<at>(all);
        void*& userdata = std::get<at + 1>(all);
        Registrations& registrations = Registrations::all();
        const Registration mine{subjectOf(std::get<0>(all)),
                                reinterpret_cast<const void*>(callbacks), userdata};
        const bool removes = has(name, "_remove_");
        void* number = nullptr;
        if (callbacks != nullptr) {
            number = removes ? registrations.find(mine) : registrations.add(mine);
        }
        auto values = valuesOf(function, arguments...);
        values[at] = Value::of(Tag::Pointer, mine.callbacks);
        values[at + 1] =
            integerValue(static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(number)));
        Call call(function, values.data(), values.size());
        if (number != nullptr) {
            callbacks =
                reinterpret_cast<std::decay_t<decltype(callbacks)>>(layersCallbacks(callbacks));
            userdata = number;
        }
        const R result = original(std::get<i>(all)...);
        if (removes && number != nullptr) {
            registrations.remove(number);
        }
        return ended(call, result, arguments...);
    }
};

// The one function whose argument is a record with more in it than may be told.
template <>
struct Passing<Fn::sp_session_create, sp_error(const sp_session_config*, sp_session**)> {
    static inline sp_error (*original)(const sp_session_config*, sp_session**) = nullptr;

    static sp_error pass(const sp_session_config* config, sp_session** session) {
        const Value values[] = {integerValue(config->api_version),
                                textValue(Tag::Text, config->cache_location),
                                textValue(Tag::Text, config->settings_location),
                                textValue(Tag::Text, config->user_agent)};
        Call call(Fn::sp_session_create, values, 4);
        sp_session_config passed = *config;
        passed.callbacks = layersCallbacks(config->callbacks);
        const sp_error result = original(&passed, session);
        const Value results[] = {valueOf(result),
                                 result == SP_ERROR_OK ? valueOf(*session) : Value()};
        call.end(results, 2);
        return result;
    }
};

struct Entry {
    void* pass;
    void** original;
};

#define SONOLET_ENTRY(name)                                                                        \
    {#name,                                                                                        \
     {reinterpret_cast<void*>(&Passing<Fn::name, decltype(::name)>::pass),                         \
      reinterpret_cast<void**>(&Passing<Fn::name, decltype(::name)>::original)}},

const std::unordered_map<std::string_view, Entry>& entries() {
    static const auto& all =
        *new std::unordered_map<std::string_view, Entry>{SONOLET_LIBRARY_FUNCTIONS(SONOLET_ENTRY)};
    return all;
}

#undef SONOLET_ENTRY

// ---- Callbacks ----

// Of the session: the plug-in's own record is looked at in each call, as the library would.
const sp_session_callbacks* sessionCallbacks = nullptr;

template <Fn function, auto member, class Signature>
struct SessionCallback;

template <Fn function, auto member, class R, class... A>
struct SessionCallback<function, member, R (*)(A...)> {
    static R pass(A... arguments) {
        const auto values = valuesOf(function, arguments...);
        Call call(function, values.data(), values.size());
        if constexpr (std::is_void_v<R>) {
            (sessionCallbacks->*member)(arguments...);
            const Value written = writtenBy(0, std::tuple<A...>(arguments...));
            call.end(&written, written.tag == Tag::Nothing ? 0 : 1);
        } else {
            const R result = (sessionCallbacks->*member)(arguments...);
            call.end(valueOf(result));
            return result;
        }
    }
};

const sp_session_callbacks* layersCallbacks(const sp_session_callbacks* ofPlugin) {
    if (ofPlugin == nullptr) {
        return nullptr;
    }
    static sp_session_callbacks layers;
    sessionCallbacks = ofPlugin;
    // A member that is not there must stay so: the library does without it.
#define SONOLET_CALLBACK(name)                                                                     \
    layers.name = ofPlugin->name == nullptr                                                        \
                      ? nullptr                                                                    \
                      : &SessionCallback<Fn::name, &sp_session_callbacks::name,                    \
                                         decltype(sp_session_callbacks::name)>::pass;
    SONOLET_SESSION_CALLBACKS(SONOLET_CALLBACK)
#undef SONOLET_CALLBACK
    return &layers;
}

// Of a playlist or a container. The last argument is the user data.
template <Fn function, auto member, class Signature>
struct ListCallback;

template <Fn function, class Record, class R, class... A, R (*Record::*member)(A...)>
struct ListCallback<function, member, R (*)(A...)> {
    static R pass(A... arguments) {
        std::tuple<A...> all(arguments...);
        void*& userdata = std::get<sizeof...(A) - 1>(all);
        auto values = valuesOf(function, arguments...);
        values.back() =
            integerValue(static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(userdata)));
        const auto registration = Registrations::all().get(userdata);
        const auto* const record =
            registration ? static_cast<const Record*>(registration->callbacks) : nullptr;
        // The library is to see to it that there is one; here it could not know.
        if (record == nullptr || record->*member == nullptr) {
            return;
        }
        Call call(function, values.data(), values.size());
        userdata = registration->userdata;
        std::apply(record->*member, all);
        call.end();
    }
};

void* layersCallbacks(sp_playlist_callbacks*) {
    static sp_playlist_callbacks layers = [] {
        sp_playlist_callbacks made;
#define SONOLET_CALLBACK(name)                                                                     \
    made.name = &ListCallback<Fn::name, &sp_playlist_callbacks::name,                              \
                              decltype(sp_playlist_callbacks::name)>::pass;
        SONOLET_PLAYLIST_CALLBACKS(SONOLET_CALLBACK)
#undef SONOLET_CALLBACK
        return made;
    }();
    return &layers;
}

void* layersCallbacks(sp_playlistcontainer_callbacks*) {
    static sp_playlistcontainer_callbacks layers = [] {
        sp_playlistcontainer_callbacks made;
#define SONOLET_CALLBACK(name)                                                                     \
    made.name = &ListCallback<Fn::name, &sp_playlistcontainer_callbacks::name,                     \
                              decltype(sp_playlistcontainer_callbacks::name)>::pass;
        SONOLET_CONTAINER_CALLBACKS(SONOLET_CALLBACK)
#undef SONOLET_CALLBACK
        return made;
    }();
    return &layers;
}

// What a query or an image ends with: once.
template <Fn function, class Handle>
void completed(Handle* handle, void* userdata) {
    const Value values[] = {valueOf(handle), integerValue(static_cast<std::int64_t>(
                                                 reinterpret_cast<std::uintptr_t>(userdata)))};
    Call call(function, values, 2);
    if (const auto registration = Registrations::all().get(userdata)) {
        if (function != Fn::image_loaded) {
            Registrations::all().remove(userdata);
        }
        reinterpret_cast<void (*)(Handle*, void*)>(const_cast<void*>(registration->callbacks))(
            handle, registration->userdata);
    }
    call.end();
}

template <Fn function, class Handle>
void* completion(void (*)(Handle*, void*)) {
    return reinterpret_cast<void*>(&completed<function, Handle>);
}

// clang-format off
void* layersCallbacks(image_loaded_cb* ofPlugin) { return completion<Fn::image_loaded>(ofPlugin); }
void* layersCallbacks(search_complete_cb* ofPlugin) { return completion<Fn::search_complete>(ofPlugin); }
void* layersCallbacks(albumbrowse_complete_cb* ofPlugin) { return completion<Fn::albumbrowse_complete>(ofPlugin); }
void* layersCallbacks(artistbrowse_complete_cb* ofPlugin) { return completion<Fn::artistbrowse_complete>(ofPlugin); }
void* layersCallbacks(toplistbrowse_complete_cb* ofPlugin) { return completion<Fn::toplistbrowse_complete>(ofPlugin); }
// clang-format on

}  // namespace

void* libraryTap(const std::string& symbol, void* function) {
    const auto found = entries().find(symbol);
    if (found == entries().end()) {
        return nullptr;
    }
    *found->second.original = function;
    return found->second.pass;
}
