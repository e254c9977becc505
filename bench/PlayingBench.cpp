// Lets the development host play for two minutes through a sound server while every core is busy
// with something else, and counts the gaps in what the loudspeaker got.

#include "Command.h"
#include "Figures.h"
#include "SoundServer.h"
#include "demo/Encoder.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace sonolet;
using Frames = SoundServer::Frames;

constexpr std::size_t rate = 44100;
constexpr std::size_t measured = 120 * rate;
constexpr std::size_t tuneLength = 126 * rate;  // some of it is lost at either end

const std::string bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();

// Noise, no two places alike and never silent.
Frames writeTune(const std::string& file) {
    Frames tune(tuneLength);
    std::mt19937 random(1);
    std::generate(tune.begin(), tune.end(), [&random] { return random() | 1; });
    service::encode(tune.data(), tune.size() * sizeof(tune[0]),
                    "audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2",
                    "audioconvert ! flacenc", file);
    return tune;
}

std::string pageFor(const std::string& link) {
    return "const track = '" + link + R"js(';
const { Session, SessionConfig, Sonolet, Track } = Spotify;
Session.onLoggedIn = () => {
    if (Session.playerLoad(Track.create(track)) !== 0 || Session.playerPlay(true) !== 0) {
        throw new Error("cannot play " + track);
    }
};
Sonolet.onTrackComplete = () => {
    console.log("played to its end");
    close();
};
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
)js";
}

// How often what the loudspeaker got stops to follow the tune: silence, a skip or a repetition.
int breaksIn(const Frames& heard, const Frames& tune) {
    constexpr std::ptrdiff_t known = 64;
    const auto isSound = [](std::uint32_t frame) { return frame != 0; };
    auto at = std::find_if(heard.begin(), heard.end(), isSound);
    const auto end = std::find_if(heard.rbegin(), heard.rend(), isSound).base();
    int breaks = -1;  // the beginning is none
    std::size_t followed = 0;
    while (at != end) {
        const auto some = std::min(at + known, end);
        const auto from = std::search(tune.begin(), tune.end(), at, some);
        auto next = some;
        if (from != tune.end()) {
            next = std::mismatch(at, end, from, tune.end()).first;
            followed += static_cast<std::size_t>(next - at);
            ++breaks;
        }
        if (next != end) {
            std::cerr << "a break after " << (next - heard.begin()) * 1000 / rate << " ms\n";
        }
        at = std::find_if(next, end, isSound);
    }
    if (followed < measured) {
        throw std::runtime_error("heard " + std::to_string(followed / rate) + " s of the tune");
    }
    return breaks;
}

void run() {
    const std::string root =
        std::filesystem::temp_directory_path() / ("sonolet-playing-" + std::to_string(getpid()));
    const std::unique_ptr<const std::string, void (*)(const std::string*)> cleaning(
        &root, [](const std::string* folder) {
            std::error_code ignored;
            std::filesystem::remove_all(*folder, ignored);
        });
    std::filesystem::create_directories(root + "/music");
    // No other thread is there yet. NOLINTBEGIN(concurrency-mt-unsafe)
    setenv("SONOLET_MUSIC", (root + "/music").c_str(), 1);
    setenv("SONOLET_STATE", (root + "/state").c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
    SoundServer server(root);
    const Frames tune = writeTune(root + "/music/tune.flac");
    const std::string listed = ::run({bin + "/sonolet-index"}, {}).output;
    writeTo(root + "/page.js", pageFor(listed.substr(0, listed.find('\t'))));

    const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
    std::cerr << "playing for two minutes beside " << cores << " busy processes\n";
    std::vector<std::unique_ptr<Process>> busy(cores);
    for (std::unique_ptr<Process>& process : busy) {
        process.reset(new Process({"/bin/sh", "-c", "while :; do :; done"}));
    }
    server.record();
    Process host({bin + "/sonolet-host", root + "/page.js", "--audio", "auto", "--for", "180"});
    host.awaitLine("played to its end");
    const int breaks = breaksIn(server.heard(), tune);
    figures::report(
        figures::within("underruns in two minutes of playing with busy processors", breaks, "", 0));
}

}  // namespace

int main() {
    try {
        run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-bench-playing: " << error.what() << '\n';
        return 1;
    }
}
