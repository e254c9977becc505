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

// What a sound server hears of a browser is what a file gets, frame for frame, of a track that
// wakes the server and of the one that follows it.
TEST(BrowserSound, ReachesTheSoundServerAsItIs) {
    const Place place("sound");
    const Outcome played = run({BIN_DIR "/sonolet-host", PAGES_DIR "/two-tracks.js", "--speed",
                                "20", "--audio", "wav:" + place.file("source.wav")},
                               {});
    ASSERT_EQ(played.exitCode, 0) << played.errors;
    const Frames source =
        soundOf(SoundServer::framesOf(contentsOf(place.file("source.wav")).substr(44)));
    ASSERT_GT(source.size(), 10U * 44100) << "the file has no sound to compare with";
    SoundServer server(place.file(""));
    server.record();
    Process player({BIN_DIR "/sonolet-browser", PAGES_DIR "/two-tracks.html", "--audio", "auto"});
    player.awaitLine("both complete");
    player.signal(SIGTERM);
    player.wait();
    const Frames heard = soundOf(server.heard());
    const auto differs = std::mismatch(source.begin(), source.end(), heard.begin(), heard.end());
    EXPECT_EQ(source.end() - differs.first, 0) << "frames of the file from the first that differs";
    EXPECT_EQ(heard.end() - differs.second, 0) << "frames heard from the first that differs";
}
