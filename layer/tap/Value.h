#ifndef SONOLET_LAYER_TAP_VALUE_H
#define SONOLET_LAYER_TAP_VALUE_H

#include "jsplugin.h"
#include "libspotify/api.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// What a Value holds. Of the last ones `u.pointer` is the first of `size` elements.
enum class Tag : std::uint8_t {
    Nothing,  // no value, or one that nobody may look at
    Undefined,
    Null,
    Boolean,
    Integer,
    Number,
    Text,        // `size` bytes, without the end; u.text may be null
    Expression,  // the same
    Secret,      // the same, to be shown to nobody
    Object,      // a jsplugin_obj; `kind` 1: made by the plug-in
    Handle,      // of libspotify; `kind` says of what
    Pointer,     // anything else that is only compared
    Handles,     // const void* const*
    Integers,    // const int*
    Texts,       // char* const*
    Bytes,
};

// The kinds of libspotify's handles, in the order of handleNames.
enum class HandleKind : std::uint8_t {
    Session,
    Track,
    Album,
    Artist,
    User,
    Image,
    Search,
    Albumbrowse,
    Artistbrowse,
    Toplistbrowse,
    Playlist,
    Playlistcontainer,
    Link,
    count
};
constexpr const char* handleNames[] = {
    "session",     "track",        "album",         "artist",   "user",      "image", "search",
    "albumbrowse", "artistbrowse", "toplistbrowse", "playlist", "container", "link"};

// An argument or a result as it crosses the border. Owns nothing: what it points to is valid as
// long as for the function that gets it.
//
// Threads: any; a value is its owner's alone, what it points to is whoever's that made the call.
// Errors: none. 16 bytes, copied as they are. `size` has a meaning for the tags that say so, and
// for Nothing with `kind` 1, where it is the number of a type that does not exist. REQUIRES: only
// the member of `u` that the tag means is read.
struct Value {
    Tag tag = Tag::Nothing;
    std::uint8_t kind = 0;
    std::uint32_t size = 0;
    union {
        std::int64_t integer = 0;
        double number;
        const char* text;
        const void* pointer;
    } u;

    static Value of(Tag tag, const void* pointer, std::size_t size = 0, std::uint8_t kind = 0) {
        Value value;
        value.tag = tag;
        value.kind = kind;
        value.size = static_cast<std::uint32_t>(size);
        value.u.pointer = pointer;
        return value;
    }
};

// ---- From the types of the headers ----

// Which kind a pointer of the header is; none for other types.
template <class T>
struct HandleOf : std::false_type {};
#define SONOLET_HANDLE(type, which)                                                                \
    template <>                                                                                    \
    struct HandleOf<type> : std::true_type {                                                       \
        static constexpr HandleKind kind = HandleKind::which;                                      \
    };
SONOLET_HANDLE(sp_session, Session)
SONOLET_HANDLE(sp_track, Track)
SONOLET_HANDLE(sp_album, Album)
SONOLET_HANDLE(sp_artist, Artist)
SONOLET_HANDLE(sp_user, User)
SONOLET_HANDLE(sp_image, Image)
SONOLET_HANDLE(sp_search, Search)
SONOLET_HANDLE(sp_albumbrowse, Albumbrowse)
SONOLET_HANDLE(sp_artistbrowse, Artistbrowse)
SONOLET_HANDLE(sp_toplistbrowse, Toplistbrowse)
SONOLET_HANDLE(sp_playlist, Playlist)
SONOLET_HANDLE(sp_playlistcontainer, Playlistcontainer)
SONOLET_HANDLE(sp_link, Link)
#undef SONOLET_HANDLE

// A null text has size 0 and stays null.
inline Value textValue(Tag tag, const char* text) {
    return Value::of(tag, text, text != nullptr ? std::strlen(text) : 0);
}

inline Value integerValue(std::int64_t integer) {
    Value value;
    value.tag = Tag::Integer;
    value.u.integer = integer;
    return value;
}

inline Value numberValue(double number) {
    Value value;
    value.tag = Tag::Number;
    value.u.number = number;
    return value;
}

// Flags are 0 or 1 in u.integer.
inline Value booleanValue(bool flag) {
    Value value = integerValue(flag ? 1 : 0);
    value.tag = Tag::Boolean;
    return value;
}

// `isNative`: a slot of the plug-in says that it is one of its own.
inline Value objectValue(const jsplugin_obj* object, bool isNative = false) {
    return Value::of(Tag::Object, object, 0, isNative ? 1 : 0);
}

// A slot that has been filled in. Texts are not copied: they are the side's that filled it.
inline Value slotValue(const jsplugin_value& slot) {
    switch (slot.type) {
    case JSP_TYPE_UNDEFINED:
        return Value::of(Tag::Undefined, nullptr);
    case JSP_TYPE_NULL:
        return Value::of(Tag::Null, nullptr);
    case JSP_TYPE_NATIVE_OBJECT:
    case JSP_TYPE_OBJECT:
        return objectValue(slot.u.object, slot.type == JSP_TYPE_NATIVE_OBJECT);
    case JSP_TYPE_STRING:
        return textValue(Tag::Text, slot.u.string);
    case JSP_TYPE_EXPRESSION:
        return textValue(Tag::Expression, slot.u.string);
    case JSP_TYPE_NUMBER:
        return numberValue(slot.u.number);
    case JSP_TYPE_BOOLEAN:
        return booleanValue(slot.u.boolean != 0);
    default:
        // No type at all: the number tells which.
        return Value::of(Tag::Nothing, nullptr, static_cast<std::size_t>(slot.type), 1);
    }
}

// An argument of any of the library's functions, as its type says. Where to write an answer is no
// argument; arrays get their size from the argument after them.
template <class T>
Value valueOf(T argument) {
    using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_same_v<T, bool>) {
        return booleanValue(argument);
    } else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>) {
        return integerValue(static_cast<std::int64_t>(argument));
    } else if constexpr (std::is_same_v<T, const char*>) {
        return textValue(Tag::Text, argument);
    } else if constexpr (HandleOf<Pointee>::value) {
        return Value::of(Tag::Handle, argument, 0,
                         static_cast<std::uint8_t>(HandleOf<Pointee>::kind));
    } else if constexpr (std::is_same_v<T, const byte*>) {
        return argument != nullptr ? Value::of(Tag::Bytes, argument, 20)
                                   : Value::of(Tag::Null, nullptr);
    } else if constexpr (std::is_same_v<T, sp_track* const*>) {
        return Value::of(Tag::Handles, argument, 0, static_cast<std::uint8_t>(HandleKind::Track));
    } else if constexpr (std::is_same_v<T, const int*>) {
        return Value::of(Tag::Integers, argument);
    } else if constexpr (std::is_same_v<T, const sp_audioformat*>) {
        static_assert(sizeof(sp_audioformat) == 3 * sizeof(int));
        return Value::of(Tag::Integers, argument, 3);
    } else if constexpr (std::is_same_v<T, sp_subscribers*>) {
        return Value::of(Tag::Pointer, argument);
    } else {
        return {};
    }
}

#endif
