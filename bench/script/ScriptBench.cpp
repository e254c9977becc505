// sonolet-bench-script: what the plug-in costs a page, in the development host's script engine,
// beside what classes written by hand for that engine cost.

#include "Figures.h"
#include "Program.h"
#include "around/BareHost.h"
#include "around/Library.h"
#include "script/ScriptPage.h"
#include "script/ScriptPeer.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <functional>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

using namespace figures;

namespace {

constexpr int rounds = 15;
constexpr char handWritten[] = "JSClass with static functions";

// ---- What pages do ----

// A line of a list: two fresh wrappers, five first calls.
constexpr char ourRow[] = "const track = playlist.track(i), album = track.album();"
                          "last = track.name() + track.duration() + album.name() + album.year();";
constexpr char theirRow[] = "const track = peerPlaylist.track(i), album = track.album();"
                            "last = track.name() + track.duration() + album.name() + album.year();";

void rows(ScriptPage& page) {
    constexpr int count = 20000;
    const auto row = [&](const char* what, const std::function<void()>& ours) {
        const Compared time = compare(9, count, processSeconds, page.collected(ours),
                                      page.collected(page.loop(theirRow, count)));
        report(atMost(what, time.subject / 1e3, "us", handWritten, time.peer / 1e3, 5));
    };
    row("row of a list (two wrappers, five first calls), in a listener",
        page.loopInListener(ourRow, count));
    // A timer's share of a long list is one call of the engine.
    const auto slice = page.loop(ourRow, 500);
    row("row of a list, from timers", [slice] {
        for (int i = 0; i < count / 500; ++i) {
            slice();
        }
    });

    const auto wrapper = [&](const char* what, const char* ours, const char* theirs) {
        const Compared time =
            compare(9, count, processSeconds, page.collected(page.loop(ours, count)),
                    page.collected(page.loop(theirs, count)));
        report(atMost(what, time.subject, "ns", handWritten, time.peer, 5));
    };
    wrapper("wrapper made and dropped", "last = track.album();", "last = peer.album();");
    wrapper("wrapper made, called once and dropped", "last = track.album().name();",
            "last = peer.album().name();");
}

// A playlist's lines, at several lengths: each line costs the same.
void lists(ScriptPage& page) {
    constexpr int all = 10000;
    std::vector<double> times;
    for (const int tracks : {100, 1000, all}) {
        const auto show = page.loop("for (let n = 0; n < " + std::to_string(tracks) +
                                        "; ++n) { const track = playlist.track(n); last ="
                                        "track.name() + track.artist(0).name() +"
                                        "track.album().name() + track.duration(); }",
                                    all / tracks);
        times.push_back(measure(7, all, processSeconds, page.collected(show)));
        report(plain("row of a playlist of " + std::to_string(tracks) +
                         " (name, artist, album, duration)",
                     times.back() / 1e3, "us"));
    }
    report(within("rows of a playlist, slope from 1000 to 10000",
                  1 + std::log10(times[2] / times[1]), "", 1.3));
}

// ---- Single calls ----

void calls(ScriptPage& page, const std::string& setting, double goal) {
    constexpr int count = 100000;
    const auto call = [&](const std::string& what, const char* ours, const char* theirs) {
        const Compared time =
            compare(rounds, count, threadSeconds, page.loop(ours, count), page.loop(theirs, count));
        const std::string name = "call that " + what + setting;
        report(goal > 0 ? atMost(name, time.subject, "ns", handWritten, time.peer, goal)
                        : plain(name + " (" + std::to_string(std::lround(time.peer)) +
                                    " ns written by hand)",
                                time.subject, "ns"));
    };
    call("returns a number", "last = track.index();", "last = peer.index();");
    call("returns a boolean", "last = track.isLoaded();", "last = peer.isLoaded();");
    call("returns a string of 12 characters", "last = track.name();", "last = peer.name();");
    call("takes a number", "session.setCacheSize(i);", "peerSession.setCacheSize(i);");
}

void reads(ScriptPage& page) {
    constexpr int count = 100000;
    const Compared read =
        compare(rounds, count, threadSeconds, page.loop("last = list.length;", count),
                page.loop("last = peerList.length;", count));
    report(atMost("read of an attribute that is not cacheable", read.subject, "ns",
                  "JSClass with getProperty", read.peer, 1));
}

// The simplest queue from any thread to script.
class PeerQueue final {
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

void events(ScriptPage& page) {
    constexpr int events = 1000000;
    constexpr int batch = 10000;
    page.evaluate("events = 0; hear = () => { ++events; };"
                  "session.addEventListener('EndOfTrack', hear);");
    const JSObjectRef listener = page.evaluate("peerEvents = 0; (() => { ++peerEvents; })");
    JSValueProtect(page.context, listener);
    PeerQueue queue;
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
    page.evaluate("if (events !== 1000000 || peerEvents !== 1000000) throw 'lost events';"
                  "session.removeEventListener('EndOfTrack', hear);");
    report(atMost("event from a foreign thread to a script listener", time.subject, "ns",
                  "mutex, closures, the engine's call", time.peer, 1.5));
}

// ---- Processes of their own ----

// Runs `work` in a process of its own, where neither engine nor plug-in is loaded yet. Throws
// std::runtime_error when it fails.
void inChild(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        int status = 0;
        try {
            work();
        } catch (const std::exception& error) {
            std::cerr << error.what() << '\n';
            status = 1;
        }
        _exit(status);
    }
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a process of the benchmark failed");
    }
}

void onPage(const std::function<void(ScriptPage&)>& measured) {
    const PluginLibrary plugin(SONOLET_BENCH_PLUGIN);
    ScriptPage page(plugin, JSGlobalContextCreateInGroup(nullptr, nullptr));
    const SecondThread second;
    page.define("peer", peer::track(page.context));
    page.define("peerPlaylist", peer::playlist(page.context));
    page.define("peerSession", peer::session(page.context));
    page.define("peerList", peer::list(page.context));
    page.evaluate("track = Spotify.Track.create('spotify:track:1');"
                  "playlist = Spotify.Playlist.create('spotify:playlist:1');"
                  "list = playlist.subscribers();");
    measured(page);
}

void script() {
    inChild([] {
        onPage([](ScriptPage& page) {
            page.loopInListener(ourRow, 1000000)();
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            report(within("memory of the process, a million rows in one listener",
                          static_cast<double>(usage.ru_maxrss) / 1e3, "MB", 200));
        });
    });
    inChild([] {
        onPage([](ScriptPage& page) {
            rows(page);
            lists(page);
            events(page);
            calls(page, "", 1);
            reads(page);
        });
    });
    // As the engine is on many devices.
    for (const auto& [option, setting, goal] :
         {std::tuple("JSC_useDFGJIT", ", baseline JIT alone", 1.2),
          std::tuple("JSC_useJIT", ", no JIT", 0.0)}) {
        inChild([option = option, setting = setting, goal = goal] {
            setenv(option, "0", 1);  // NOLINT(concurrency-mt-unsafe): one thread
            onPage([&](ScriptPage& page) { calls(page, setting, goal); });
        });
    }
}

// ---- Loading ----

void* open(const char* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(dlerror());  // NOLINT(concurrency-mt-unsafe): one thread
    }
    return library;
}

// Milliseconds of `work` in a process of its own.
double milliseconds(const std::function<void()>& work) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    double taken = 0;
    inChild([&] {
        const double start = wallSeconds();
        work();
        taken = (wallSeconds() - start) * 1e3;
        if (write(ends[1], &taken, sizeof taken) != sizeof taken) {
            throw std::runtime_error("no answer");
        }
    });
    const bool got = read(ends[0], &taken, sizeof taken) == sizeof taken;
    close(ends[0]);
    close(ends[1]);
    if (!got) {
        throw std::runtime_error("no answer");
    }
    return taken;
}

void load() {
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < 31; ++i) {
        ours.push_back(milliseconds([] {
            BareHost host(reinterpret_cast<BareHost::Entry*>(
                dlsym(open(SONOLET_BENCH_PLUGIN), "jsplugin_capabilities")));
            host.global(host.open(), "Spotify");
        }));
        theirs.push_back(milliseconds([] { open(SONOLET_BENCH_EMPTY); }));
    }
    const double empty = median(theirs);
    report(plain("dlopen of an empty C++ library", empty, "ms"));
    report(within("load to first read of Spotify, above that", median(ours) - empty, "ms", 5));
}

}  // namespace

int main(int argc, char** argv) {
    return runGroups(argc, argv, {{"load", load}, {"script", script}});
}
