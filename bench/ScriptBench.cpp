// sonolet-bench-script: what the plug-in costs a page, in the development host's script engine,
// beside what classes written by hand for that engine cost.

#include "BareHost.h"
#include "Figures.h"
#include "Groups.h"
#include "engine/Document.h"
#include "engine/ErrorReporter.h"
#include "engine/PluginLibrary.h"
#include "engine/Scheduler.h"
#include "engine/Text.h"
#include "engine/WeakObject.h"
#include "library/Library.h"

#include <JavaScriptCore/JavaScript.h>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <deque>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

using namespace figures;

namespace {

constexpr int rounds = 15;

// Polls come when the benchmark says so.
class ManualScheduler final : public Scheduler {
public:
    unsigned schedule(Delay delay, Task task) override {
        tasks.emplace(++lastId, std::make_pair(delay.count(), std::move(task)));
        return lastId;
    }
    void cancel(unsigned id) override { tasks.erase(id); }

    // Every task with that delay, in milliseconds.
    void run(double delay) {
        for (const auto& [id, task] : std::map(tasks)) {
            if (task.first == delay) {
                task.second();
            }
        }
    }

private:
    unsigned lastId = 0;
    std::map<unsigned, std::pair<double, Task>> tasks;
};

class Page final : public ErrorReporter {
public:
    explicit Page(const PluginLibrary& plugin)
        : context(JSGlobalContextCreateInGroup(nullptr, nullptr)),
          document(std::make_unique<Document>(context, plugin.capabilities(), scheduler, *this)) {
        document->open({"file", "", 0});
    }
    ~Page() override {
        document.reset();
        JSGlobalContextRelease(context);
    }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    JSObjectRef evaluate(const std::string& script) const {
        JSValueRef exception = nullptr;
        const JSValueRef value = JSEvaluateScript(context, text::EngineString(script).get(),
                                                  nullptr, nullptr, 1, &exception);
        if (exception != nullptr) {
            throw std::runtime_error(text::toUtf8(context, exception));
        }
        return JSValueIsObject(context, value) ? JSValueToObject(context, value, nullptr) : nullptr;
    }

    void define(const char* name, JSValueRef value) const {
        JSObjectSetProperty(context, JSContextGetGlobalObject(context),
                            text::EngineString(name).get(), value, kJSPropertyAttributeNone,
                            nullptr);
    }

    // A batch: a function of its own with the loop, compiled by the engine as it sees fit.
    std::function<void()> loop(const std::string& setUp, const std::string& body, int count) const {
        const JSObjectRef function = evaluate("(function(count) { " + setUp +
                                              "; let last; for (let i = 0; i < count; ++i) { " +
                                              body + " } return last; })");
        JSValueProtect(context, function);
        return [this, function, count] {
            const JSValueRef argument = JSValueMakeNumber(context, count);
            JSValueRef exception = nullptr;
            JSObjectCallAsFunction(context, function, nullptr, 1, &argument, &exception);
            if (exception != nullptr) {
                throw std::runtime_error(text::toUtf8(context, exception));
            }
        };
    }

    void uncaught(JSContextRef where, JSValueRef exception) noexcept override {
        std::cerr << text::toUtf8(where, exception) << '\n';
    }

    JSGlobalContextRef context;
    ManualScheduler scheduler;
    std::unique_ptr<Document> document;
};

// ---- The peers: what a person writes for this engine alone ----

namespace peer {

JSValueRef number(
    JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
    return JSValueMakeNumber(context,
                             sp_track_index(static_cast<sp_track*>(JSObjectGetPrivate(self))));
}
JSValueRef boolean(
    JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
    return JSValueMakeBoolean(context,
                              sp_track_is_loaded(static_cast<sp_track*>(JSObjectGetPrivate(self))));
}
JSValueRef string(
    JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
    JSStringRef made = JSStringCreateWithUTF8CString(
        sp_track_name(static_cast<sp_track*>(JSObjectGetPrivate(self))));
    const JSValueRef value = JSValueMakeString(context, made);
    JSStringRelease(made);
    return value;
}
JSValueRef takesNumber(JSContextRef context,
                       JSObjectRef,
                       JSObjectRef self,
                       size_t argc,
                       const JSValueRef argv[],
                       JSValueRef* exception) {
    if (argc < 1) {
        return nullptr;
    }
    const double value = JSValueToNumber(context, argv[0], exception);
    sp_session_set_cache_size(static_cast<sp_session*>(JSObjectGetPrivate(self)),
                              static_cast<size_t>(value));
    return JSValueMakeUndefined(context);
}

JSObjectRef object(JSContextRef context) {
    static const JSStaticFunction functions[] = {
        {"index", number, kJSPropertyAttributeReadOnly},
        {"isLoaded", boolean, kJSPropertyAttributeReadOnly},
        {"name", string, kJSPropertyAttributeReadOnly},
        {"setCacheSize", takesNumber, kJSPropertyAttributeReadOnly},
        {nullptr, nullptr, 0},
    };
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "Track";
    definition.staticFunctions = functions;
    JSClassRef made = JSClassCreate(&definition);
    const JSObjectRef object = JSObjectMake(context, made, benchHandle<sp_track>());
    JSClassRelease(made);
    return object;
}

JSObjectRef withProperty(JSContextRef context) {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "List";
    definition.getProperty = [](JSContextRef where, JSObjectRef, JSStringRef name,
                                JSValueRef*) -> JSValueRef {
        return JSStringIsEqualToUTF8CString(name, "length") ? JSValueMakeNumber(where, 7) : nullptr;
    };
    JSClassRef made = JSClassCreate(&definition);
    const JSObjectRef object = JSObjectMake(context, made, nullptr);
    JSClassRelease(made);
    return object;
}

struct Wrapped {
    void* handle;
};

// playlist.track() of a person who writes no more than this.
JSValueRef
track(JSContextRef context, JSObjectRef, JSObjectRef, size_t, const JSValueRef[], JSValueRef*) {
    static const JSClassRef trackClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Track";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        definition.finalize = [](JSObjectRef object) {
            delete static_cast<Wrapped*>(JSObjectGetPrivate(object));
        };
        return JSClassCreate(&definition);
    }();
    return JSObjectMake(context, trackClass, new Wrapped{benchHandle<sp_track>()});
}

// What the engine alone takes for an object as the host's are: behind a prototype of its own, which
// catches reads, and held weakly.
std::deque<WeakObject> held;
JSValueRef
caught(JSContextRef context, JSObjectRef, JSObjectRef, size_t, const JSValueRef[], JSValueRef*) {
    static const JSClassRef catcherClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Catcher";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        definition.getProperty = [](JSContextRef, JSObjectRef, JSStringRef, JSValueRef*) {
            return static_cast<JSValueRef>(nullptr);
        };
        definition.finalize = [](JSObjectRef) {};
        return JSClassCreate(&definition);
    }();
    const JSObjectRef front = JSObjectMake(context, nullptr, nullptr);
    const JSObjectRef catcher = JSObjectMake(context, catcherClass, nullptr);
    JSObjectSetPrototype(context, front, catcher);
    held.emplace_back().set(context, front);
    return front;
}

// The simplest queue from any thread to script.
class Queue final {
public:
    void push(std::function<void()> call) {
        const std::lock_guard<std::mutex> lock(mutex);
        calls.push_back(std::move(call));
    }
    void run() {
        std::vector<std::function<void()>> taken;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            taken.swap(calls);
        }
        for (const auto& call : taken) {
            call();
        }
    }

private:
    std::mutex mutex;
    std::vector<std::function<void()>> calls;
};

}  // namespace peer

// ---- The rows ----

void calls(Page& page) {
    constexpr int count = 100000;
    struct Row {
        const char* what;
        const char* ours;
        const char* theirs;
    };
    const Row rows[] = {
        {"a number", "last = track.index();", "last = peer.index();"},
        {"a boolean", "last = track.isLoaded();", "last = peer.isLoaded();"},
        {"a string of 12 characters", "last = track.name();", "last = peer.name();"},
    };
    const auto call = [&](const std::string& what, const char* ours, const char* theirs) {
        const Compared time = compare(rounds, count, threadSeconds, page.loop("", ours, count),
                                      page.loop("", theirs, count));
        report(atMost("call that " + what, time.subject, "ns", "JSClass with static functions",
                      time.peer, 1));
    };
    for (const Row& row : rows) {
        call(std::string("returns ") + row.what, row.ours, row.theirs);
    }
    call("takes a number", "session.setCacheSize(i);", "peer.setCacheSize(i);");

    const Compared read =
        compare(rounds, count, threadSeconds, page.loop("", "last = list.length;", count),
                page.loop("", "last = peerList.length;", count));
    report(atMost("read of an attribute that is not cacheable", read.subject, "ns",
                  "JSClass with getProperty", read.peer, 1.15));
}

void events(Page& page) {
    constexpr int events = 1000000;
    constexpr int batch = 10000;
    page.evaluate("events = 0; session.addEventListener('EndOfTrack', () => { ++events; });");
    const JSObjectRef listener = page.evaluate("peerEvents = 0; (() => { ++peerEvents; })");
    JSValueProtect(page.context, listener);
    peer::Queue queue;
    // A tenth in each round: a million of each in all.
    const Compared time = compare(
        9, events / 10.0, processSeconds,
        [&] {
            for (int done = 0; done < events / 10; done += batch) {
                std::thread([&] {
                    const sp_session_callbacks* const library = benchCallbacks();
                    for (int i = 0; i < batch; ++i) {
                        library->end_of_track(benchHandle<sp_session>());
                    }
                }).join();
                page.scheduler.run(100);
            }
        },
        [&] {
            for (int done = 0; done < events / 10; done += batch) {
                std::thread([&] {
                    for (int i = 0; i < batch; ++i) {
                        queue.push([&page, listener] {
                            JSObjectCallAsFunction(page.context, listener, nullptr, 0, nullptr,
                                                   nullptr);
                        });
                    }
                }).join();
                queue.run();
            }
        });
    page.evaluate("if (events !== 1000000 || peerEvents !== 1000000) throw 'lost events';");
    report(atMost("event from a foreign thread to a script listener", time.subject, "ns",
                  "mutex, closures, the engine's call", time.peer, 1.5));
}

void wrappers(Page& page) {
    constexpr int count = 50000;
    const auto ours = page.loop("", "last = playlist.track(0);", count);
    const auto theirs = page.loop("", "last = peerTrack();", count);
    // All that was made is dropped in the round that made it, but for what the engine holds back.
    const auto collected = [&page](const std::function<void()>& make) {
        return [&page, make] {
            make();
            page.document->letGo();
            JSSynchronousGarbageCollectForDebugging(page.context);
            page.document->letGo();
            peer::held.clear();
        };
    };
    const Compared time = compare(9, count, processSeconds, collected(ours), collected(theirs));
    report(atMost("Track wrapper made, exposed and dropped", time.subject, "ns",
                  "JSObjectMake with finalizer", time.peer, 2));
    const Compared engine =
        compare(9, count, processSeconds, collected(page.loop("", "last = caught();", count)),
                collected(theirs));
    report(plain("of it the engine: an object with a prototype of its own, held weakly",
                 engine.subject, "ns"));
}

void script() {
    const PluginLibrary plugin(SONOLET_BENCH_PLUGIN);
    Page page(plugin);
    const SecondThread second;
    page.define("peer", peer::object(page.context));
    page.define("peerList", peer::withProperty(page.context));
    for (const auto& [name, function] :
         {std::pair("peerTrack", &peer::track), std::pair("caught", &peer::caught)}) {
        page.define(name, JSObjectMakeFunctionWithCallback(
                              page.context, text::EngineString(name).get(), function));
    }
    page.evaluate("session = Spotify.Session.create(Spotify.SessionConfig);"
                  "track = Spotify.Track.create('spotify:track:1');"
                  "playlist = Spotify.Playlist.create('spotify:playlist:1');"
                  "list = playlist.subscribers();");
    calls(page);
    events(page);
    wrappers(page);
}

// ---- Loading ----

// Runs `work` in a process of its own, where nothing is loaded yet; its answer in milliseconds.
double inChild(const std::function<void()>& work) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        const double start = wallSeconds();
        int status = 0;
        try {
            work();
        } catch (const std::exception& error) {
            std::cerr << error.what() << '\n';
            status = 1;
        }
        const double taken = (wallSeconds() - start) * 1e3;
        status |= write(ends[1], &taken, sizeof taken) != sizeof taken;
        _exit(status);
    }
    close(ends[1]);
    double taken = 0;
    const bool got = child > 0 && read(ends[0], &taken, sizeof taken) == sizeof taken;
    close(ends[0]);
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0 || !got) {
        throw std::runtime_error("the plug-in could not be loaded");
    }
    return taken;
}

void* open(const char* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(dlerror());  // NOLINT(concurrency-mt-unsafe): one thread
    }
    return library;
}

void load() {
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < 31; ++i) {
        ours.push_back(inChild([] {
            BareHost host(reinterpret_cast<BareHost::Entry*>(
                dlsym(open(SONOLET_BENCH_PLUGIN), "jsplugin_capabilities")));
            host.global(host.open(), "Spotify");
        }));
        theirs.push_back(inChild([] { open(SONOLET_BENCH_EMPTY); }));
    }
    const double empty = median(theirs);
    report(plain("dlopen of an empty C++ library", empty, "ms"));
    report(within("load to first read of Spotify, above that", median(ours) - empty, "ms", 5));
}

}  // namespace

int main(int argc, char** argv) {
    return runGroups(argc, argv, {{"load", load}, {"script", script}});
}
