// sonolet-bench-browser and sonolet-bench-runner: what the plug-in costs a page, measured the same
// way over both interfaces of the engine: GLib's, which is all that browsers show of theirs, and
// the C one of the runner.

#include "Figures.h"
#include "Program.h"
#include "script/ScriptPage.h"

#ifdef SONOLET_BENCH_GLIB
#include "engine/glib/Context.h"
#endif

#include <glib.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

using namespace figures;

namespace {

JSGlobalContextRef makeContext() {
#ifdef SONOLET_BENCH_GLIB
    return new OpaqueJSContext(jsc_context_new());
#else
    return JSGlobalContextCreateInGroup(nullptr, nullptr);
#endif
}

// What waits for the main loop.
void settle() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

double residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

// As from timers: so many at a time, and the main loop between. Collections are part of it.
std::function<void()> inSlices(const ScriptPage& page, const std::string& body, int count) {
    constexpr int slice = 500;
    return [make = page.loop(body, slice), count] {
        for (int done = 0; done < count; done += slice) {
            make();
            settle();
        }
    };
}

void browser(ScriptPage& page) {
    const double before = residentMegabytes();
    page.evaluate("all = []; for (let i = 0; i < 10000; ++i) {"
                  "const made = playlist.track(i); made.name(); all.push(made); }");
    const double after = residentMegabytes();
    page.evaluate("all = null;");
    constexpr int calls = 100000;
    constexpr int count = 20000;
    const auto row = [&](const char* what, const char* body, int times) {
        report(plain(what, measure(9, times, processSeconds, inSlices(page, body, times)), "ns"));
    };
    row("kept call", "last = track.index();", calls);
    row("wrapper made, called once and dropped", "last = track.album().name();", count);
    row("row of a list (two wrappers, five first calls)",
        "const track = playlist.track(i), album = track.album();"
        "last = track.name() + track.duration() + album.name() + album.year();",
        count);
    report(plain("memory of 10,000 wrappers, each called once", after - before, "MB"));
}

#ifdef SONOLET_BENCH_GLIB
// What no way from script to native code over this interface can do without.
void bare() {
    JSCContext* const context = jsc_context_new();
    constexpr int calls = 100000;
    const auto call = [&](const char* what, GType result, GCallback function) {
        JSCValue* const native = jsc_value_new_function(context, nullptr, function, nullptr,
                                                        nullptr, result, 0, G_TYPE_NONE);
        JSCValue* const loop = jsc_context_evaluate(
            context, "(function (call, n) { for (let i = 0; i < n; ++i) { call(); } })", -1);
        report(plain(what,
                     measure(9, calls, processSeconds,
                             [&] {
                                 g_object_unref(jsc_value_function_call(
                                     loop, JSC_TYPE_VALUE, native, G_TYPE_INT, calls, G_TYPE_NONE));
                             }),
                     "ns"));
        g_object_unref(loop);
        g_object_unref(native);
    };
    call("call of nothing over GLib's interface", G_TYPE_NONE, G_CALLBACK(+[] {}));
    call("call of nothing that may answer a text", G_TYPE_STRING,
         G_CALLBACK(+[]() -> char* { return nullptr; }));
    g_object_unref(context);
}
#endif

}  // namespace

int main() {
    // Where the engine's own tasks come, as in a browser.
    g_main_context_push_thread_default(g_main_context_default());
    return figures::runProgram([] {
        const PluginLibrary plugin(SONOLET_BENCH_PLUGIN);
        ScriptPage page(plugin, makeContext());
        const SecondThread second;
        page.evaluate("track = Spotify.Track.create('spotify:track:1');"
                      "playlist = Spotify.Playlist.create('spotify:playlist:1');");
        browser(page);
#ifdef SONOLET_BENCH_GLIB
        bare();
#endif
    });
}
