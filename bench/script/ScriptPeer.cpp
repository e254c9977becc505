#include "script/ScriptPeer.h"

#include "around/Library.h"

namespace peer {

namespace {

struct Wrapped {
    void* handle;
};

template <class Kind>
Kind* handleOf(JSObjectRef object) {
    return static_cast<Kind*>(static_cast<Wrapped*>(JSObjectGetPrivate(object))->handle);
}

JSClassRef makeClass(const char* name, const JSStaticFunction* functions) {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = name;
    definition.staticFunctions = functions;
    definition.finalize = [](JSObjectRef object) {
        delete static_cast<Wrapped*>(JSObjectGetPrivate(object));
    };
    return JSClassCreate(&definition);
}

template <class Kind>
JSObjectRef wrap(JSContextRef context, JSClassRef kindsClass, Kind* handle) {
    return JSObjectMake(context, kindsClass, new Wrapped{handle});
}

// A static function that asks the library for a number, a boolean or a text.
template <auto Function>
struct Reads;
template <class Result, class Kind, Result (*Function)(Kind*)>
struct Reads<Function> {
    static JSValueRef call(JSContextRef context,
                           JSObjectRef,
                           JSObjectRef self,
                           size_t,
                           const JSValueRef[],
                           JSValueRef*) {
        return answer(context, Function(handleOf<Kind>(self)));
    }
    static JSValueRef answer(JSContextRef context, int value) {
        return JSValueMakeNumber(context, value);
    }
    static JSValueRef answer(JSContextRef context, bool value) {
        return JSValueMakeBoolean(context, value);
    }
    static JSValueRef answer(JSContextRef context, const char* text) {
        JSStringRef made = JSStringCreateWithUTF8CString(text);
        const JSValueRef value = JSValueMakeString(context, made);
        JSStringRelease(made);
        return value;
    }
};

template <auto Function>
constexpr JSStaticFunction reads(const char* name) {
    return {name, Reads<Function>::call, kJSPropertyAttributeReadOnly};
}
constexpr JSStaticFunction does(const char* name, JSObjectCallAsFunctionCallback function) {
    return {name, function, kJSPropertyAttributeReadOnly};
}
constexpr JSStaticFunction end = {nullptr, nullptr, 0};

JSClassRef artistClass() {
    static const JSStaticFunction functions[] = {reads<&sp_artist_name>("name"), end};
    static const JSClassRef made = makeClass("Artist", functions);
    return made;
}

JSClassRef albumClass() {
    static const JSStaticFunction functions[] = {reads<&sp_album_name>("name"),
                                                 reads<&sp_album_year>("year"), end};
    static const JSClassRef made = makeClass("Album", functions);
    return made;
}

JSValueRef albumOf(
    JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
    return wrap(context, albumClass(), sp_track_album(handleOf<sp_track>(self)));
}

JSValueRef artistOf(JSContextRef context,
                    JSObjectRef,
                    JSObjectRef self,
                    size_t argc,
                    const JSValueRef argv[],
                    JSValueRef* exception) {
    if (argc < 1) {
        return nullptr;
    }
    const double index = JSValueToNumber(context, argv[0], exception);
    return wrap(context, artistClass(),
                sp_track_artist(handleOf<sp_track>(self), static_cast<int>(index)));
}

JSClassRef trackClass() {
    static const JSStaticFunction functions[] = {reads<&sp_track_name>("name"),
                                                 reads<&sp_track_duration>("duration"),
                                                 reads<&sp_track_index>("index"),
                                                 reads<&sp_track_is_loaded>("isLoaded"),
                                                 does("album", albumOf),
                                                 does("artist", artistOf),
                                                 end};
    static const JSClassRef made = makeClass("Track", functions);
    return made;
}

JSValueRef trackOf(JSContextRef context,
                   JSObjectRef,
                   JSObjectRef self,
                   size_t argc,
                   const JSValueRef argv[],
                   JSValueRef* exception) {
    if (argc < 1) {
        return nullptr;
    }
    const double index = JSValueToNumber(context, argv[0], exception);
    return wrap(context, trackClass(),
                sp_playlist_track(handleOf<sp_playlist>(self), static_cast<int>(index)));
}

JSValueRef setCacheSize(JSContextRef context,
                        JSObjectRef,
                        JSObjectRef self,
                        size_t argc,
                        const JSValueRef argv[],
                        JSValueRef* exception) {
    if (argc < 1) {
        return nullptr;
    }
    const double value = JSValueToNumber(context, argv[0], exception);
    sp_session_set_cache_size(handleOf<sp_session>(self), static_cast<size_t>(value));
    return JSValueMakeUndefined(context);
}

}  // namespace

JSObjectRef session(JSContextRef context) {
    static const JSStaticFunction functions[] = {does("setCacheSize", setCacheSize), end};
    return wrap(context, makeClass("Session", functions), benchHandle<sp_session>());
}

JSObjectRef playlist(JSContextRef context) {
    static const JSStaticFunction functions[] = {does("track", trackOf),
                                                 reads<&sp_playlist_num_tracks>("numTracks"), end};
    return wrap(context, makeClass("Playlist", functions), benchHandle<sp_playlist>());
}

JSObjectRef track(JSContextRef context) {
    return wrap(context, trackClass(), benchHandle<sp_track>());
}

JSObjectRef list(JSContextRef context) {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "List";
    definition.getProperty = [](JSContextRef where, JSObjectRef, JSStringRef name,
                                JSValueRef*) -> JSValueRef {
        return JSStringIsEqualToUTF8CString(name, "length") ? JSValueMakeNumber(where, 7) : nullptr;
    };
    return JSObjectMake(context, JSClassCreate(&definition), nullptr);
}

}  // namespace peer
