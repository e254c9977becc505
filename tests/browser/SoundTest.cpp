#include "Command.h"
#include "Place.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// One frame of two 16-bit samples.
using Frames = std::vector<std::uint32_t>;

// The frames that are not silent: where a sound server's clock is late it puts silence between.
Frames soundOf(const std::string& pcm) {
    Frames frames(pcm.size() / sizeof(std::uint32_t));
    std::memcpy(frames.data(), pcm.data(), frames.size() * sizeof(std::uint32_t));
    Frames sound;
    for (const std::uint32_t frame : frames) {
        if (frame != 0) {
            sound.push_back(frame);
        }
    }
    return sound;
}

// A sound server of the test's own, whose loudspeaker goes nowhere.
class SoundServer final {
public:
    explicit SoundServer(const Place& place)
        : address("unix:" + place.file("pulse")),
          server({"pulseaudio", "--daemonize=no", "-n", "--exit-idle-time=-1", "--disable-shm=yes",
                  "--use-pid-file=no", "--log-level=info", "--log-target=stderr",
                  "--load=module-null-sink sink_name=nowhere format=s16le rate=44100 channels=2",
                  "--load=module-native-protocol-unix auth-anonymous=1 socket=" +
                      place.file("pulse")}) {
        // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
        setenv("PULSE_SERVER", address.c_str(), 1);
        setenv("PULSE_RUNTIME_PATH", place.file("pulse-runtime").c_str(), 1);
        // NOLINTEND(concurrency-mt-unsafe)
        server.awaitLine("Daemon startup complete");
    }

private:
    const std::string address;
    Process server;
};

}  // namespace

// What a sound server hears of a browser is what a file gets, frame for frame.
TEST(BrowserSound, ReachesTheSoundServerAsItIs) {
    const Place place("sound");
    const Outcome played = run({BIN_DIR "/sonolet-host", EXAMPLES_DIR "/hello.js", "--speed", "20",
                                "--audio", "wav:" + place.file("source.wav")},
                               {});
    ASSERT_EQ(played.exitCode, 0) << played.errors;
    {
        const SoundServer server(place);
        Process recorder({"/bin/sh", "-c",
                          "exec parec --device=nowhere.monitor --format=s16le --rate=44100"
                          " --channels=2 --latency-msec=100 --verbose '" +
                              place.file("heard.pcm") + "'"});
        recorder.awaitLine("Stream successfully created");
        Process player({BIN_DIR "/sonolet-browser", PAGES_DIR "/player.html", "--audio", "auto"});
        player.awaitLine("complete");
        player.signal(SIGTERM);
        player.wait();
        recorder.signal(SIGINT);
        recorder.wait();
    }
    const Frames source = soundOf(contentsOf(place.file("source.wav")).substr(44));
    const Frames heard = soundOf(contentsOf(place.file("heard.pcm")));
    ASSERT_GT(source.size(), 5U * 44100) << "the file has no sound to compare with";
    ASSERT_GT(heard.size(), source.size() / 2);
    // A monitor hears of a new stream once it has given away what it had of the silence before, and
    // what it holds when its listener leaves is lost.
    constexpr std::ptrdiff_t mostMissed = 44100 / 2;
    const auto start =
        std::search(source.begin(), source.begin() + mostMissed, heard.begin(), heard.begin() + 64);
    const auto differs = std::mismatch(start, source.end(), heard.begin(), heard.end());
    EXPECT_EQ(heard.end() - differs.second, 0) << "frames from the first that is not the same";
    EXPECT_LT(source.end() - differs.first, mostMissed);
}
