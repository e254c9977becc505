#include "Command.h"
#include "Place.h"
#include "SoundServer.h"

namespace {

// The frames that are not silent: where a sound server's clock is late it puts silence between.
SoundServer::Frames soundOf(SoundServer::Frames frames) {
    frames.erase(std::remove(frames.begin(), frames.end(), 0U), frames.end());
    return frames;
}

}  // namespace

// What a sound server hears of a browser is what a file gets, frame for frame, of a track that
// wakes the server and of the one that follows it.
TEST(BrowserSound, ReachesTheSoundServerAsItIs) {
    const Place place("sound");
    const std::string page = PAGES_DIR "/two-tracks.js";
    const std::string host = BIN_DIR "/sonolet-host";
    const Outcome played =
        run({host, page, "--speed", "20", "--audio", "wav:" + place.file("source.wav")}, {});
    ASSERT_EQ(played.exitCode, 0) << played.errors;
    const SoundServer::Frames source =
        soundOf(SoundServer::framesOf(contentsOf(place.file("source.wav")).substr(44)));
    ASSERT_GT(source.size(), 10U * 44100) << "the file has no sound to compare with";
    SoundServer server(place.file(""));
    server.record();
    Process player({BIN_DIR "/sonolet-browser", PAGES_DIR "/two-tracks.html", "--audio", "auto"});
    player.awaitLine("both complete");
    player.signal(SIGTERM);
    player.wait();
    const SoundServer::Frames heard = soundOf(server.heard());
    // A machine so busy that nobody runs for a second leaves sound out, never at the ends.
    auto next = source.begin();
    std::ptrdiff_t missing = 0;
    for (auto at = heard.begin(); at != heard.end();) {
        const auto known = std::min(at + 64, heard.end());
        const auto found = std::search(next, source.end(), at, known);
        ASSERT_NE(found, source.end()) << heard.end() - at << " frames before the end";
        ASSERT_TRUE(at != heard.begin() || found == source.begin()) << "the start is missing";
        missing += found - next;
        std::tie(next, at) = std::mismatch(found, source.end(), at, heard.end());
    }
    EXPECT_EQ(source.end() - next, 0) << "frames missing at the end";
    EXPECT_LT(missing, 44100);
}
