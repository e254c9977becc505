// What a call costs more when the layer writes it down. With the layer loaded and
// nothing asked for, the plug-in's calls lead where they did: there is nothing to measure.

#include "Figures.h"
#include "record/Recorder.h"
#include "tap/Call.h"
#include "tap/Taps.h"

#include "libspotify/api.h"

#include <cstdio>
#include <exception>
#include <limits>

using namespace figures;

namespace {

// Less than fills the recorder's buffer.
constexpr int calls = 4000;
constexpr int rounds = 41;

const char* const title = "Fog Signal";
int aTrack = 0;

using NameFunction = const char* (*)(sp_track*);

// What the plug-in calls; the compiler may not look through it.
double nanosecondsOf(NameFunction volatile subject, NameFunction volatile peer) {
    auto* const track = reinterpret_cast<sp_track*>(&aTrack);
    const auto batch = [track](NameFunction volatile& function) {
        for (int i = 0; i < calls; ++i) {
            keep(function(track));
        }
    };
    const Compared compared = compare(
        rounds, calls, threadSeconds, [&] { batch(subject); }, [&] { batch(peer); });
    return compared.subject - compared.peer;
}

}  // namespace

int main() {
    try {
        const NameFunction real = [](sp_track*) { return title; };
        const auto tap = reinterpret_cast<NameFunction>(
            libraryTap("sp_track_name", reinterpret_cast<void*>(real)));
        Settings settings;
        settings.traceFile = "/dev/null";
        settings.traceBytes = std::numeric_limits<std::size_t>::max();
        Recorder recorder(settings);
        Call::watchers[1] = &recorder;
        report(within("a call that is recorded: what it costs more", nanosecondsOf(tap, real), "ns",
                      150));
        Call::watchers[1] = nullptr;
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-bench-layer: %s\n", error.what());
        return 1;
    }
}
