// Lets the development host play through a sound server, and compares what the loudspeaker got with
// the files: what is silent between tracks and missing of them, and, while every core is busy with
// something else, the gaps in two minutes.

#include "Command.h"
#include "Figures.h"
#include "Process.h"
#include "Program.h"
#include "playing/Listening.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace listening;

constexpr std::size_t requestFrames = 1024;  // of one request of the backend

const std::string bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();

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
    const std::string page = folder + ".js";
    writeTo(page, pageFor(linksOf(bin, folder)));
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
    const figures::WorkFolder folder;
    const std::string& root = folder.path();
    std::filesystem::create_directories(root);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread is there yet
    setenv("SONOLET_STATE", (root + "/state").c_str(), 1);
    SoundServer server(root);
    measureGaps(root + "/tracks", server);
    countUnderruns(root + "/tune", server);
}

}  // namespace

int main() {
    return figures::runProgram([] { run(); });
}
