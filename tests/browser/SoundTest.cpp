#include "Command.h"
#include "Place.h"
#include "SoundServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

namespace {

using Frames = SoundServer::Frames;

// The frames that are not silent: where a sound server's clock is late it puts silence between.
Frames soundOf(Frames frames) {
    frames.erase(std::remove(frames.begin(), frames.end(), 0U), frames.end());
    return frames;
}

}  // namespace

// What a sound server hears of a browser is what a file gets, frame for frame.
TEST(BrowserSound, ReachesTheSoundServerAsItIs) {
    const Place place("sound");
    const Outcome played = run({BIN_DIR "/sonolet-host", EXAMPLES_DIR "/hello.js", "--speed", "20",
                                "--audio", "wav:" + place.file("source.wav")},
                               {});
    ASSERT_EQ(played.exitCode, 0) << played.errors;
    const Frames source =
        soundOf(SoundServer::framesOf(contentsOf(place.file("source.wav")).substr(44)));
    SoundServer server(place.file(""));
    server.record();
    Process player({BIN_DIR "/sonolet-browser", PAGES_DIR "/player.html", "--audio", "auto"});
    player.awaitLine("complete");
    player.signal(SIGTERM);
    player.wait();
    const Frames heard = soundOf(server.heard());
    ASSERT_GT(source.size(), 5U * 44100) << "the file has no sound to compare with";
    ASSERT_GT(heard.size(), source.size() / 2);
    constexpr std::ptrdiff_t mostMissed = 44100 / 2;
    const auto start =
        std::search(source.begin(), source.begin() + mostMissed, heard.begin(), heard.begin() + 64);
    const auto differs = std::mismatch(start, source.end(), heard.begin(), heard.end());
    EXPECT_EQ(heard.end() - differs.second, 0) << "frames from the first that is not the same";
    EXPECT_LT(source.end() - differs.first, mostMissed);
}
