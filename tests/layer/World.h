#ifndef SONOLET_TESTS_LAYER_WORLD_H
#define SONOLET_TESTS_LAYER_WORLD_H

#include "tap/Taps.h"
#include "validate/Validator.h"

#include "jsplugin.h"
#include "libspotify/api.h"
#include "uva.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// The layer's functions around a host, a plug-in, a library and a backend of the test's own, which
// do what they are told.

// Handles are opaque.
template <class T>
T* handle(std::uintptr_t number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<T*>(number);
}

// ---- The parties ----

struct TestClock final : Clock {
    std::uint64_t now() const override { return time; }
    std::uint64_t busy() const override { return ran; }
    std::uint64_t time = 1;
    std::uint64_t ran = 0;
};

// What the plug-in is to answer, and what everybody has been given.
inline int code = JSP_GET_VALUE;
inline jsplugin_value slot = {JSP_TYPE_NUMBER, {nullptr}};
inline std::function<void()>
    inside;  // runs in every function of the plug-in, and in processed events
inline jsplugin_obj* made = nullptr;
inline struct Given {
    jsplugin_getter* getter;
    jsplugin_setter* setter;
    jsplugin_function* call;
    jsplugin_destructor* destructor;
    jsplugin_gc_trace* trace;
    jsplugin_poll* poll;
    jsplugin_unload* unload;
    const sp_session_callbacks* session;
    search_complete_cb* searched;
    void* userdata;
    sp_playlist_callbacks* list;
    UVAClient* client;
} given;

inline void runInside() {
    if (const auto once = std::exchange(inside, nullptr)) {
        once();
    }
}

inline int getter(jsplugin_obj*, const char*, jsplugin_value* result) {
    runInside();
    *result = slot;
    return code;
}
inline int setter(jsplugin_obj*, const char*, jsplugin_value*) {
    return code;
}
inline int function(jsplugin_obj*, jsplugin_obj*, int, jsplugin_value*, jsplugin_value* result) {
    runInside();
    *result = slot;
    return code;
}
inline void forObject(jsplugin_obj*) {
    runInside();
}
inline int poll(const jsplugin_obj*) {
    runInside();
    return code;
}

inline jsplugin_callbacks hostTable() {
    jsplugin_callbacks table = {};
    table.create_object = [](jsplugin_obj*, jsplugin_getter* g, jsplugin_setter* s,
                             jsplugin_destructor* d, jsplugin_gc_trace* t, jsplugin_obj** result) {
        given.getter = g;
        given.setter = s;
        given.destructor = d;
        given.trace = t;
        *result = made;
        return static_cast<int>(JSP_CREATE_OK);
    };
    table.create_function = [](jsplugin_obj*, jsplugin_getter*, jsplugin_setter*,
                               jsplugin_function* f, jsplugin_destructor*, jsplugin_gc_trace*,
                               jsplugin_obj** result) {
        given.call = f;
        *result = made;
        return static_cast<int>(JSP_CREATE_OK);
    };
    table.add_poll_function = [](jsplugin_obj*, unsigned, jsplugin_poll* p) {
        given.poll = p;
        return 0;
    };
    table.call_function = [](jsplugin_obj*, jsplugin_obj*, jsplugin_obj*, int, jsplugin_value*,
                             void*, void*) { return 0; };
    table.add_unload_listener = [](jsplugin_obj*, jsplugin_unload* u) {
        given.unload = u;
        return 0;
    };
    table.gc_mark = [](jsplugin_obj*) {};
    return table;
}

class Backend final : public UVABackend {
public:
    int setSource(const char*, SourceDescription**, int) override { return 1; }
    void play() override {}
    void pause(int) override {}
    void getPosition(double& position) override { position = at; }
    void writeData(NeedDataEvent*, unsigned, WriteDataStatus) override {}
    double at = 0;
};
inline Backend realBackend;

inline sp_session_callbacks pluginsCallbacks() {
    sp_session_callbacks callbacks = {};
    callbacks.logged_in = [](sp_session*, sp_error) { runInside(); };
    callbacks.credentials_blob_updated = [](sp_session*, const char*) {};
    callbacks.end_of_track = [](sp_session*) {};
    callbacks.music_delivery = [](sp_session*, const sp_audioformat*, const void*, int) {
        runInside();
        return code;
    };
    return callbacks;
}

// A function of the library as the plug-in gets it, around one of the test's.
template <class F>
F* through(const char* name, F* real) {
    return reinterpret_cast<F*>(libraryTap(name, reinterpret_cast<void*>(real)));
}
#define LIBRARY(name, ...) through<decltype(::name)>(#name, __VA_ARGS__)

// The four parties, at their start: an open document with an object, a session with a track.
class World {
public:
    World() : validator(clock, [this](const std::string& line) { findings.push_back(line); }) {
        Call::watchers[0] = &validator;
        code = JSP_GET_VALUE;
        slot = {JSP_TYPE_NUMBER, {nullptr}};
        inside = nullptr;
        given = {};
        realBackend.at = 0;
        listCallbacks.playlist_renamed = [](sp_playlist*, void*) {};
        capabilities.init = [](jsplugin_obj*) { runInside(); };
        capabilities.destroy = &forObject;
        capabilities.gc_trace = &forObject;
        table = hostTable();
        host = hostTap(&table);
        plugin = pluginTap(&capabilities);
    }
    ~World() {
        Call::watchers[0] = nullptr;
        delete[] first.data;
        delete[] second.data;
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    void open() {
        inside = [this] {
            host->add_poll_function(&document, 250, &poll);
            host->add_unload_listener(&document, &forObject);
        };
        plugin->init(&document);
        create(object);
    }
    void create(jsplugin_obj& which) {
        made = &which;
        host->create_object(&document, &getter, &setter, &forObject, &forObject, &made);
    }
    void createFunction(jsplugin_obj& which) {
        made = &which;
        host->create_function(&document, nullptr, nullptr, &function, &forObject, nullptr, &made);
    }
    void get() {
        jsplugin_value result = {};
        given.getter(&object, "name", &result);
    }

    void login() {
        sp_session_config config = {};
        static const sp_session_callbacks callbacks = pluginsCallbacks();
        config.callbacks = &callbacks;
        LIBRARY(sp_session_create, [](const sp_session_config* passed, sp_session** created) {
            given.session = passed->callbacks;
            *created = handle<sp_session>(0x10);
            return SP_ERROR_OK;
        })
        (&config, &session);
        track = LIBRARY(sp_search_track,
                        [](sp_search*, int) { return handle<sp_track>(0x20); })(search(), 0);
    }
    sp_search* search() const {
        return LIBRARY(sp_search_create,
                       [](sp_session*, const char*, int, int, int, int, int, int, int, int,
                          sp_search_type, search_complete_cb* callback, void* userdata) {
                           given.searched = callback;
                           given.userdata = userdata;
                           return handle<sp_search>(0x30);
                       })(
            session, "fog", 0, 1, 0, 1, 0, 1, 0, 1, SP_SEARCH_STANDARD, [](sp_search*, void*) {},
            nullptr);
    }
    void process(const std::function<void()>& callbacks) const {
        inside = callbacks;
        int next = 0;
        LIBRARY(sp_session_process_events, [](sp_session*, int* timeout) {
            runInside();
            *timeout = 0;
            return SP_ERROR_OK;
        })
        (session, &next);
    }
    void searched() const {
        process([] { given.searched(handle<sp_search>(0x30), given.userdata); });
    }
    void releaseSearch() {
        LIBRARY(sp_search_release, [](sp_search*) { return SP_ERROR_OK; })(handle<sp_search>(0x30));
    }
    const char* name(sp_track* of) {
        return LIBRARY(sp_track_name, [](sp_track*) { return "Fog"; })(of);
    }
    void keep() const {
        LIBRARY(sp_track_add_ref, [](sp_track*) { return SP_ERROR_OK; })(track);
    }
    void giveBack() const {
        LIBRARY(sp_track_release, [](sp_track*) { return SP_ERROR_OK; })(track);
    }
    void release() const {
        LIBRARY(sp_session_release, [](sp_session*) { return SP_ERROR_OK; })(session);
    }
    void play() const {
        LIBRARY(sp_session_player_play, [](sp_session*, bool) { return SP_ERROR_OK; })
        (session, true);
    }
    void deliver(int frames = 100, int channels = 2) const {
        const sp_audioformat format = {SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, channels};
        given.session->music_delivery(session, &format, "", frames);
    }
    sp_playlist* list() const {
        return LIBRARY(sp_session_starred_create,
                       [](sp_session*) { return handle<sp_playlist>(0x40); })(session);
    }
    void listen() {
        LIBRARY(sp_playlist_add_callbacks,
                [](sp_playlist*, sp_playlist_callbacks* layers, void* userdata) {
                    given.list = layers;
                    given.userdata = userdata;
                    return SP_ERROR_OK;
                })
        (list(), &listCallbacks, nullptr);
    }
    void ignore() {
        LIBRARY(sp_playlist_remove_callbacks,
                [](sp_playlist*, sp_playlist_callbacks*, void*) { return SP_ERROR_OK; })
        (list(), &listCallbacks, nullptr);
    }
    void callPage() {
        host->call_function(&document, nullptr, &other, 0, nullptr, nullptr, nullptr);
    }

    // The backend, as the plug-in gets it.
    UVABackend* request() {
        using Request = UVABackend*(UVABackend::UVABackendType, UVAClient*);
        Request* const real = [](UVABackend::UVABackendType, UVAClient* layers) -> UVABackend* {
            given.client = layers;
            return &realBackend;
        };
        auto* const tap = reinterpret_cast<Request*>(
            backendTap("_ZN10UVAFactory14requestBackendEN10UVABackend14UVABackendTypeEP9UVAClient",
                       reinterpret_cast<void*>(real)));
        return backend = tap(UVABackend::UVA_BACKEND_MEDIA, &client);
    }
    void releaseBackend() const {
        using Release = void(UVABackend*);
        Release* const real = [](UVABackend*) {};
        reinterpret_cast<Release*>(backendTap("_ZN10UVAFactory14releaseBackendEP10UVABackend",
                                              reinterpret_cast<void*>(real)))(backend);
    }
    void ask(NeedDataEvent& event) { given.client->handleEvent(&event); }
    void write(NeedDataEvent& event,
               unsigned size,
               UVABackend::WriteDataStatus status = UVABackend::WRITE_DATA_OK) const {
        backend->writeData(&event, size, status);
    }

    struct Client final : UVAClient {
        bool handleEvent(UVAEvent*) override { return true; }
        UVABackend* getDRMBackend(const char*) override { return nullptr; }
    };

    std::vector<std::string> findings;
    TestClock clock;
    Validator validator;
    jsplugin_callbacks table = {};
    struct jsplugin_capabilities capabilities = {};
    jsplugin_callbacks* host = nullptr;
    struct jsplugin_capabilities* plugin = nullptr;
    jsplugin_obj document = {};
    jsplugin_obj object = {};
    jsplugin_obj other = {};
    sp_session* session = nullptr;
    sp_track* track = nullptr;
    Client client;
    UVABackend* backend = nullptr;
    sp_playlist_callbacks listCallbacks = {};
    NeedDataEvent first{0, 64};
    NeedDataEvent second{64, 64};
};

#endif
