// Lets the development host play through a sound server, and compares what the loudspeaker got with
// the files: what is silent between tracks and missing of them, and, while every core is busy with
// something else, the gaps in two minutes.

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
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace sonolet;
using Frames = SoundServer::Frames;

constexpr std::size_t rate = 44100;
constexpr std::size_t requestFrames = 1024;  // of one request of the backend
constexpr std::ptrdiff_t known = 64;         // so many frames tell where one is in a tune
constexpr std::size_t measured = 120 * rate;
constexpr std::size_t tuneLength = 126 * rate;  // some of it is lost at either end

const std::string bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();

// Noise, no two places alike and never silent.
Frames writeTune(const std::string& file, std::size_t length, unsigned seed) {
    Frames tune(length);
    std::mt19937 random(seed);
    std::generate(tune.begin(), tune.end(), [&random] { return random() | 1; });
    service::encode(tune.data(), tune.size() * sizeof(tune[0]),
                    "audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2",
                    "audioconvert ! flacenc", file);
    return tune;
}

// A page that plays the links one after the other, as the documentation says.
std::string pageFor(const std::map<std::string, std::string>& links) {
    std::string queue;
    for (const auto& [file, link] : links) {
        queue += "'" + link + "', ";
    }
    return "const queue = [" + queue + R"js(];
const { Session, SessionConfig, Sonolet, Track } = Spotify;
const play = () => {
    const link = queue.shift();
    if (Session.playerLoad(Track.create(link)) !== 0 || Session.playerPlay(true) !== 0) {
        throw new Error("cannot play " + link);
    }
};
Session.onLoggedIn = play;
Session.onEndOfTrack = () => {
    if (queue.length > 0) {
        Session.playerPrefetch(Track.create(queue[0]));
    }
};
Sonolet.onTrackComplete = () => {
    if (queue.length > 0) {
        play();
    } else {
        console.log("played to the end");
        close();
    }
};
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
)js";
}

// What the loudspeaker gets of all tunes in `folder`, in the order of their files.
Frames listenTo(const std::string& folder, SoundServer& server) {
    // By file; of the listing, the first word and the last.
    std::map<std::string, std::string> links;
    std::istringstream listed(::run({bin + "/sonolet-index"}, {{"SONOLET_MUSIC", folder}}).output);
    for (std::string line; std::getline(listed, line);) {
        links[line.substr(line.rfind('\t') + 1)] = line.substr(0, line.find('\t'));
    }
    const std::string page = folder + ".js";
    writeTo(page, pageFor(links));
    server.record();
    Process host(
        {bin + "/sonolet-host", page, "--music", folder, "--audio", "auto", "--for", "180"});
    host.awaitLine("played to the end");
    return server.heard();
}

// Ten tracks whose ends lie everywhere between two polls.
void measureGaps(const std::string& folder, SoundServer& server) {
    std::filesystem::create_directories(folder);
    std::vector<Frames> tunes;
    for (unsigned i = 0; i < 10; ++i) {
        tunes.push_back(writeTune(folder + "/" + std::to_string(i) + ".flac",
                                  2 * rate + i * rate * 37 / 1000, i + 2));
    }
    std::cerr << "playing ten tracks of two seconds\n";
    const Frames heard = listenTo(folder, server);
    std::ptrdiff_t longest = 0;
    std::ptrdiff_t missing = 0;
    auto end = heard.end();  // of the track before
    for (const Frames& tune : tunes) {
        const auto start = std::search(end == heard.end() ? heard.begin() : end, heard.end(),
                                       tune.begin(), tune.begin() + known);
        if (start == heard.end()) {
            throw std::runtime_error("the start of a track was not heard");
        }
        if (end != heard.end()) {
            longest = std::max(longest, start - end);
        }
        const auto differs = std::mismatch(tune.begin(), tune.end(), start, heard.end());
        missing = std::max(missing, tune.end() - differs.first);
        end = differs.second;
    }
    figures::report(figures::within("longest silence between two of ten tracks",
                                    static_cast<double>(longest) * 1000 / rate, "ms", 450));
    figures::report(figures::within("frames missing at the end of a track, most",
                                    static_cast<double>(missing), "", requestFrames));
}

// How often what the loudspeaker got stops to follow the tune: silence, a skip or a repetition.
int breaksIn(const Frames& heard, const Frames& tune) {
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

// Two minutes beside as many busy processes as there are cores.
void countUnderruns(const std::string& folder, SoundServer& server) {
    std::filesystem::create_directories(folder);
    const Frames tune = writeTune(folder + "/tune.flac", tuneLength, 1);
    const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
    std::cerr << "playing for two minutes beside " << cores << " busy processes\n";
    std::vector<std::unique_ptr<Process>> busy(cores);
    for (std::unique_ptr<Process>& process : busy) {
        process.reset(new Process({"/bin/sh", "-c", "while :; do :; done"}));
    }
    figures::report(figures::within("underruns in two minutes of playing with busy processors",
                                    breaksIn(listenTo(folder, server), tune), "", 0));
}

void run() {
    const std::string root =
        std::filesystem::temp_directory_path() / ("sonolet-playing-" + std::to_string(getpid()));
    const std::unique_ptr<const std::string, void (*)(const std::string*)> cleaning(
        &root, [](const std::string* folder) {
            std::error_code ignored;
            std::filesystem::remove_all(*folder, ignored);
        });
    std::filesystem::create_directories(root);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread is there yet
    setenv("SONOLET_STATE", (root + "/state").c_str(), 1);
    SoundServer server(root);
    measureGaps(root + "/tracks", server);
    countUnderruns(root + "/tune", server);
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
