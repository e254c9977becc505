// What the plug-in and the local music service take of a small device: the development host plays
// for two minutes while its page shows progress and searches, in the control groups that
// SONOLET_BENCH_GROUPS names (folders, separated by spaces); without any, in the whole machine.

#include "Command.h"
#include "Figures.h"
#include "Process.h"
#include "Program.h"
#include "playing/Listening.h"

#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace listening;
namespace fs = std::filesystem;

constexpr double shareOfCore = 0.25;         // that the control group leaves
constexpr std::uint32_t quiet = 0x03ff03ff;  // ten bits of each sample
constexpr std::chrono::seconds window(20);   // in which wake-ups and processor time are counted
constexpr double ringKibibytes = 640;        // of the track that plays; docs/integration.md

const std::string bin = fs::read_symlink("/proc/self/exe").parent_path();

// Starts a program in the control groups; without them, with the memory of a device at least.
// Stacks count there with all that they may grow to.
constexpr char inGroups[] = R"sh(
if [ -z "$SONOLET_BENCH_GROUPS" ]; then
    ulimit -s 1024 && ulimit -d 196608 || exit 3
fi
for group in $SONOLET_BENCH_GROUPS; do
    echo 0 >"$group/cgroup.procs" || exit 3
done
exec "$@"
)sh";

std::vector<std::string> hostCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"/bin/sh", "-c", inGroups, "sh", bin + "/sonolet-host"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

// A page that logs in, and plays the link when there is one: it shows its progress ten times a
// second, as a player does, and searches every three seconds.
std::string pageFor(const std::string& link) {
    return "const link = '" + link + R"js(';
const { Search, Session, SessionConfig, Sonolet, Track } = Spotify;
let shown = "", found = 0;
const ready = () => {
    console.log("ready");
    if (link === "") return;
    const track = Track.create(link);
    if (Session.playerLoad(track) !== 0 || Session.playerPlay(true) !== 0) {
        throw new Error("cannot play " + link);
    }
    const started = Date.now();
    setInterval(() => {
        const seconds = (Date.now() - started) / 1000;
        shown = `${track.name()} ${Math.floor(seconds / 60)}:${Math.floor(seconds % 60)} of ` +
            `${track.duration()} ${"#".repeat(seconds / 2)}`;
    }, 100);
    const words = ["a", "the", "tune", "no such thing"];
    setInterval(() => {
        Search.create(words[found++ % words.length], 0, 20, 0, 5, 0, 5, 0, 0, 0, (result) => {
            for (let i = 0; i < result.numTracks(); ++i) shown += result.track(i).name();
        });
    }, 3000);
};
Session.onLoggedIn = ready;
Sonolet.onTrackComplete = () => {
    console.log("played to the end", shown.length);
    close();
};
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
)js";
}

// What the kernel counts of the threads of a process, by their names.
struct Counted {
    double seconds = 0;  // of processor time
    double wakeUps = 0;
};
std::map<std::string, Counted> countedOf(int process) {
    std::map<std::string, Counted> all;
    std::error_code gone;
    for (const auto& thread :
         fs::directory_iterator("/proc/" + std::to_string(process) + "/task", gone)) {
        std::string name = contentsOf(thread.path() / "comm");
        name = name.substr(0, name.find('\n'));
        std::istringstream spent(contentsOf(thread.path() / "schedstat"));
        double nanoseconds = 0;
        spent >> nanoseconds;
        all[name].seconds += nanoseconds / 1e9;
        const std::string status = contentsOf(thread.path() / "status");
        const std::string line = "\nvoluntary_ctxt_switches:";
        if (const std::size_t at = status.find(line); at != std::string::npos) {
            all[name].wakeUps += std::stod(status.substr(at + line.size()));
        }
    }
    return all;
}

// The same in `window`, for each second of it.
std::map<std::string, Counted> ratesOf(int process) {
    const std::map<std::string, Counted> before = countedOf(process);
    const double start = figures::wallSeconds();
    std::this_thread::sleep_for(window);
    std::map<std::string, Counted> rates = countedOf(process);
    const double took = figures::wallSeconds() - start;
    for (auto& [name, rate] : rates) {
        if (const auto was = before.find(name); was != before.end()) {
            rate.seconds -= was->second.seconds;
            rate.wakeUps -= was->second.wakeUps;
        }
        rate.seconds /= took;
        rate.wakeUps /= took;
    }
    return rates;
}

Counted sumOf(const std::map<std::string, Counted>& rates) {
    Counted sum;
    for (const auto& [name, rate] : rates) {
        sum.seconds += rate.seconds;
        sum.wakeUps += rate.wakeUps;
    }
    return sum;
}

// Without the threads of the media backend: what feeds its pipeline, and the sound server's client.
// The script engine stays in, as it runs in the thread that the plug-in and the service are called
// in.
Counted withoutBackend(std::map<std::string, Counted> rates) {
    rates.erase("appsrc:src");
    rates.erase("threaded-ml");
    return sumOf(rates);
}

// Kibibytes of what a process has of a file: a line of /proc/PID/smaps that begins so.
double kibibytesOf(int process, const std::string& file, const std::string& field) {
    std::istringstream maps(contentsOf("/proc/" + std::to_string(process) + "/smaps"));
    double sum = 0;
    bool counts = false;
    for (std::string line; std::getline(maps, line);) {
        const std::string first = line.substr(0, line.find(' '));
        if (first.back() != ':') {
            counts =
                file.empty() || (line.size() >= file.size() &&
                                 line.compare(line.size() - file.size(), file.size(), file) == 0);
        } else if (counts && first.rfind(field, 0) == 0) {
            sum += std::stod(line.substr(first.size()));
        }
    }
    return sum;
}

// From the start of the process to the first sound in a file, in seconds.
double timeToSound(const std::string& page, const std::string& folder) {
    const std::string sound = folder + "/first.wav";
    fs::remove(sound);
    const double start = figures::wallSeconds();
    Process host(hostCommand({page, "--music", folder + "/music", "--audio", "wav:" + sound}));
    std::error_code none;
    constexpr std::uintmax_t header = 44;
    while (!fs::exists(sound, none) || fs::file_size(sound, none) <= header) {
        if (figures::wallSeconds() - start > 60) {
            throw std::runtime_error("no sound within a minute");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return figures::wallSeconds() - start;
}

void measure(const std::string& folder) {
    SoundServer server(folder);
    fs::create_directories(folder + "/music");
    const Frames tune = writeTune(folder + "/music/tune.flac", tuneLength, 1, quiet);
    const std::string link = linksOf(bin, folder + "/music").begin()->second;
    writeTo(folder + "/idle.js", pageFor(""));
    writeTo(folder + "/play.js", pageFor(link));

    std::cerr << "from the start to the first sound, five times\n";
    std::vector<double> times;
    while (times.size() < 5) {
        times.push_back(timeToSound(folder + "/play.js", folder));
    }
    figures::report(figures::within("from process start to first sound, known catalogue",
                                    figures::median(times), "s", 2));

    std::cerr << "at rest\n";
    {
        Process host(
            hostCommand({folder + "/idle.js", "--music", folder + "/music", "--audio", "null"}));
        host.awaitLine("ready");
        std::this_thread::sleep_for(std::chrono::seconds(3));
        const Counted rest = sumOf(ratesOf(host.id()));
        figures::report(figures::plain("wake-ups a second, at rest, whole host", rest.wakeUps, ""));
    }

    std::cerr << "playing for two minutes\n";
    server.record();
    Process host(
        hostCommand({folder + "/play.js", "--music", folder + "/music", "--audio", "auto"}));
    host.awaitLine("ready");
    std::this_thread::sleep_for(std::chrono::seconds(10));
    const std::map<std::string, Counted> rates = ratesOf(host.id());
    for (const auto& [name, rate] : rates) {
        std::cerr << "  thread " << name << ": " << rate.wakeUps << " wake-ups a second, "
                  << rate.seconds * 100 << " % of a core\n";
    }
    const Counted playing = sumOf(rates);
    figures::report(figures::plain("wake-ups a second, playing, whole host", playing.wakeUps, ""));
    figures::report(figures::plain("share of a quarter core, playing, whole host",
                                   playing.seconds / shareOfCore * 100, "%"));
    figures::report(figures::within("of that: page, plug-in and service",
                                    withoutBackend(rates).seconds / shareOfCore * 100, "%", 5));
    const std::string plugin = "/libSonolet.so.1.0";
    const std::string service = "/libspotify.so.12";
    figures::report(
        figures::plain("resident plug-in (PSS)", kibibytesOf(host.id(), plugin, "Pss:"), "KiB"));
    figures::report(
        figures::plain("resident service (PSS)", kibibytesOf(host.id(), service, "Pss:"), "KiB"));
    figures::report(
        figures::plain("resident whole host (PSS)", kibibytesOf(host.id(), "", "Pss:"), "KiB"));
    figures::report(figures::within("plug-in, private pages and ring",
                                    kibibytesOf(host.id(), plugin, "Private_") + ringKibibytes,
                                    "KiB", 1024));
    host.awaitLine("played to the end");
    figures::report(figures::within("underruns in two minutes of playing on the device",
                                    breaksIn(server.heard(), tune), "", 0));
}

}  // namespace

int main() {
    return figures::runProgram([] {
        const figures::WorkFolder folder;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread is there yet
        setenv("SONOLET_STATE", (folder.path() + "/state").c_str(), 1);
        measure(folder.path());
    });
}
