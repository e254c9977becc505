// What a call costs more when the layer writes it down: one of the plug-in's, while the browser is
// in it. With the layer loaded and nothing asked for, the plug-in's calls lead where they did:
// there is nothing to measure.

#include "Figures.h"
#include "Program.h"
#include "record/Recorder.h"
#include "tap/Call.h"
#include "tap/Taps.h"

#include "libspotify/api.h"

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

double costOfRecording(bool isReplayable) {
    const NameFunction real = [](sp_track*) { return title; };
    const auto tap =
        reinterpret_cast<NameFunction>(libraryTap("sp_track_name", reinterpret_cast<void*>(real)));
    Settings settings;
    settings.traceFile = "/dev/null";
    settings.traceBytes = std::numeric_limits<std::size_t>::max();
    settings.isReplayable = isReplayable;
    Recorder recorder(settings);
    Call::watchers[1] = &recorder;
    Call read(Fn::getter, nullptr, 0);
    const double nanoseconds = nanosecondsOf(tap, real);
    read.end();
    Call::watchers[1] = nullptr;
    return nanoseconds;
}

}  // namespace

int main() {
    return runProgram([] {
        report(within("a call that is recorded: what it costs more", costOfRecording(false), "ns",
                      150));
        report(within("a call that is recorded to be replayed", costOfRecording(true), "ns", 150));
    });
}
