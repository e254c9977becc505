#ifndef SONOLET_PLATFORM_JSPLUGIN_H
#define SONOLET_PLATFORM_JSPLUGIN_H

// The browser's plug-in interface: what a host and a script plug-in know of each other.
//
// Threads: every function here, in both directions, is called on the script thread of the document
// concerned. A plug-in's own threads reach script only by queueing work for a poll function.
//
// Ownership: the host allocates every jsplugin_obj and keeps it at one address for as long as the
// plug-in may hold it; the plug-in owns what it hangs into plugin_private and frees it in the
// object's destructor. Strings are UTF-8 and NUL-terminated. A string passed to the plug-in is
// valid for that call only; a string answered by the plug-in is valid until the host calls it
// again.
//
// Errors: nothing is thrown across this border. The answer codes below carry every failure, with
// its message as a string value in the result (or, for a setter, in the value slot).

#ifdef __cplusplus
extern "C" {
#endif

// A script object as both sides see it. For an object or function of the page plugin_private is
// NULL. A document is a jsplugin_obj too: its global object.
typedef struct jsplugin_obj {
    void* plugin_private;
} jsplugin_obj;

// What a jsplugin_value holds.
enum jsplugin_type {
    JSP_TYPE_UNDEFINED = 0,
    JSP_TYPE_NATIVE_OBJECT = 1,  // made by a plug-in
    JSP_TYPE_OBJECT = 2,         // any other object or function
    JSP_TYPE_STRING = 3,
    JSP_TYPE_NUMBER = 4,
    JSP_TYPE_BOOLEAN = 5,
    JSP_TYPE_NULL = 6,
    JSP_TYPE_EXPRESSION = 7  // plug-in to host only: u.string is script text to evaluate
};

// A value slot: the caller's, filled in by whoever is called. What `u` holds follows from the type;
// a boolean is 0 or 1.
typedef struct jsplugin_value {
    int type;  // enum jsplugin_type
    union {
        jsplugin_obj* object;
        const char* string;
        double number;
        int boolean;
    } u;
} jsplugin_value;

// An attribute of an embedded object element.
typedef struct jsplugin_attr {
    const char* name;
    const char* value;
} jsplugin_attr;

// Answers of a getter.
enum {
    JSP_GET_NO_VALUE = 0,
    JSP_GET_VALUE = 1,
    JSP_GET_VALUE_CACHE = 2,  // the host may keep the value and need not ask again
    JSP_GET_NO_PROPERTY = 3,
    JSP_GET_EXCEPTION = 5
};

// Answers of a setter, besides JSP_GET_NO_PROPERTY: the property stays the page's own.
enum { JSP_PUT_OK = 1, JSP_PUT_READ_ONLY = 4, JSP_PUT_EXCEPTION = 5 };

// Answers of a function.
enum {
    JSP_CALL_NO_FUNCTION = 0,
    JSP_CALL_VALUE = 1,
    JSP_CALL_NO_VALUE = 2,
    JSP_CALL_EXCEPTION = 4
};

// Answer of create_function and create_object; anything else is a refusal.
enum { JSP_CREATE_OK = 2 };

// Reads a property. `name` is valid during the call. `result` is written with JSP_GET_VALUE,
// JSP_GET_VALUE_CACHE and, with the message, JSP_GET_EXCEPTION.
typedef int jsplugin_getter(jsplugin_obj* obj, const char* name, jsplugin_value* result);
// Writes a property. With JSP_PUT_EXCEPTION the message stands in `value`.
typedef int jsplugin_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value);
// Calls a function that the plug-in made, on any object: script may have detached it. `this_obj` is
// NULL without one; `argv` is NULL when argc is 0. `result` is written with JSP_CALL_VALUE and,
// with the message, JSP_CALL_EXCEPTION.
typedef int jsplugin_function(jsplugin_obj* this_obj,
                              jsplugin_obj* function_obj,
                              int argc,
                              jsplugin_value* argv,
                              jsplugin_value* result);

// The script object has been collected; the host frees `obj` when the destructor returns.
typedef void jsplugin_destructor(jsplugin_obj* obj);

// The host is collecting and asks which objects the plug-in still holds: see gc_mark.
typedef void jsplugin_gc_trace(jsplugin_obj* obj);

// Not used by this plug-in: NULL where one is asked for.
typedef void jsplugin_notify(jsplugin_obj* obj);

// Answers 1 to be called again after the next interval, 0 to stop.
typedef int jsplugin_poll(const jsplugin_obj* ctx);

// The document goes, and none of its polls comes any more. Its objects may be looked at until they
// are collected; nothing is to be made in it.
typedef void jsplugin_unload(jsplugin_obj* ctx);

// The host's functions, in the order of the host's table, which lives as long as the process. All
// on the script thread; the host may collect garbage, and so call destructors, inside any of them.
// `ctx` of the two create functions is any object of the document, or the document.
// add_poll_function, call_function and add_unload_listener answer 0 when done.
typedef struct jsplugin_callbacks {
    // A new function, or object below; the host owns it until its destructor. Callbacks may be
    // NULL. JSP_CREATE_OK, or a refusal, after which *result means nothing.
    int (*create_function)(jsplugin_obj* ctx,
                           jsplugin_getter* getter,
                           jsplugin_setter* setter,
                           jsplugin_function* call,
                           jsplugin_destructor* destructor,
                           jsplugin_gc_trace* gc_trace,
                           jsplugin_obj** result);
    int (*create_object)(jsplugin_obj* ctx,
                         jsplugin_getter* getter,
                         jsplugin_setter* setter,
                         jsplugin_destructor* destructor,
                         jsplugin_gc_trace* gc_trace,
                         jsplugin_obj** result);
    void* reserved3;
    // Calls `poll` with `ctx` every `interval_ms` milliseconds until it answers 0 or the document
    // goes.
    int (*add_poll_function)(jsplugin_obj* ctx, unsigned interval_ms, jsplugin_poll* poll);
    // Calls a function of the page at once, which may run anything. `this_obj` may be NULL, `argv`
    // is NULL when argc is 0; the function's result, an exception included, is dropped.
    int (*call_function)(jsplugin_obj* ctx,
                         jsplugin_obj* this_obj,
                         jsplugin_obj* function_obj,
                         int argc,
                         jsplugin_value* argv,
                         void* reserved_a,
                         void* reserved_b);
    void* reserved6;
    void* reserved7;
    // Calls `unload` with `ctx` once, when the document goes.
    int (*add_unload_listener)(jsplugin_obj* ctx, jsplugin_unload* unload);
    void* reserved9;
    void* reserved10;
    void* reserved11;
    void* reserved12;
    void* reserved13;
    void* reserved14;
    // Called from inside a gc_trace: `obj` must survive the collection under way.
    void (*gc_mark)(jsplugin_obj* obj);
} jsplugin_callbacks;

// What a plug-in offers. Lists are NULL-terminated and live as long as the plug-in.
struct jsplugin_capabilities {
    char** global_names;
    char** object_types;
    // For reads and writes of the global names; NULL: there are none.
    jsplugin_getter* global_getter;
    jsplugin_setter* global_setter;
    void (*init)(jsplugin_obj* ctx);  // once for every document
    // The plug-in will not be used any more.
    void (*destroy)(jsplugin_obj* ctx);
    // Makes an embedded element's own script object, `parent`, one of the plug-in's and hands out
    // the callbacks for it. 1 when done, 0 when the plug-in has nothing for the element.
    int (*handle_object)(jsplugin_obj* global,
                         jsplugin_obj* parent,
                         int attrs_count,
                         jsplugin_attr* attrs,
                         jsplugin_getter** getter,
                         jsplugin_setter** setter,
                         jsplugin_destructor** destructor,
                         jsplugin_gc_trace** gc_trace,
                         jsplugin_notify** notify_a,
                         jsplugin_notify** notify_b,
                         jsplugin_notify** notify_c);
    int (*allow_access)(const char* protocol, const char* host, int port);  // 0 refuses
    jsplugin_gc_trace* gc_trace;                                            // for a document
};

// The one entry point of a plug-in, called once after it is loaded. Answers 0; anything else when
// it has nothing to offer now, and a later call tries again. In C++ the record is written `struct
// jsplugin_capabilities`, since the function has the same name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
__attribute__((visibility("default"))) int
jsplugin_capabilities(struct jsplugin_capabilities** result, struct jsplugin_callbacks* callbacks);
#pragma GCC diagnostic pop

#ifdef __cplusplus
}
#endif

#endif
