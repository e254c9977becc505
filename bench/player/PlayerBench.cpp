// Lets sonolet-browser show the player over large libraries, on a display that no graphics
// processor draws: how soon a search shows something, and what a frame of a list that scrolls
// takes. The page (measure.js) does it and tells; processor time is read from outside.

#include "Command.h"
#include "Figures.h"
#include "Process.h"
#include "Program.h"
#include "service/SyntheticMusic.h"
#include "store/StatePaths.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace sonolet;

const std::string bin = fs::read_symlink("/proc/self/exe").parent_path();

// What the programs of the project print.
std::string outputOf(const std::vector<std::string>& command) {
    const Outcome outcome = run(command, {});
    if (outcome.exitCode != 0) {
        throw std::runtime_error(command.front() + ": " + outcome.errors);
    }
    return outcome.output;
}

// A playlist of so many of the folder's tracks; its link.
std::string makePlaylist(std::size_t length) {
    const std::string created = outputOf({bin + "/sonolet-playlist", "new", "Long"});
    std::istringstream index(outputOf({bin + "/sonolet-index"}));
    std::vector<std::string> some = {bin + "/sonolet-playlist", "add", "Long"};
    const std::size_t names = some.size();
    constexpr std::size_t atOnce = 1000;
    std::size_t added = 0;
    for (std::string line; added < length && std::getline(index, line); ++added) {
        some.push_back(line.substr(0, line.find('\t')));
        if (some.size() == names + atOnce) {
            outputOf(some);
            some.resize(names);
        }
    }
    return created.substr(0, created.find('\n'));
}

// Processor seconds that a process and all below it have taken.
double processorSeconds(int process) {
    const std::string directory = "/proc/" + std::to_string(process);
    std::ifstream file(directory + "/stat");
    std::string stat((std::istreambuf_iterator<char>(file)), {});
    std::istringstream fields(stat.substr(stat.rfind(')') + 1));
    std::string field;
    double ticks = 0;
    for (int number = 3; fields >> field && number <= 15; ++number) {
        ticks += number >= 14 ? std::stod(field) : 0;  // utime, stime
    }
    double seconds = ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
    std::ifstream list(directory + "/task/" + std::to_string(process) + "/children");
    for (int child = 0; list >> child;) {
        seconds += processorSeconds(child);
    }
    return seconds;
}

// What the page tells next has to begin with `word`; the numbers that follow.
std::vector<double> told(Process& browser, const std::string& word) {
    const std::string sign = "bench: ";
    const std::string line = browser.awaitLine(sign);
    std::istringstream rest(line.substr(line.find(sign) + sign.size()));
    std::string first;
    if (rest >> first; first != word) {
        throw std::runtime_error(line);
    }
    return {std::istream_iterator<double>(rest), {}};
}

struct Scrolled {
    double rate;       // frames a second
    double processor;  // milliseconds a frame
};

Scrolled scrolled(Process& browser) {
    told(browser, "begins");
    const double before = processorSeconds(browser.id());
    const std::vector<double> ends = told(browser, "ends");  // frames, milliseconds
    const double taken = processorSeconds(browser.id()) - before;
    return {ends.at(0) / ends.at(1) * 1000, taken / ends.at(0) * 1000};
}

void measure(const std::string& folder, std::size_t tracks, std::size_t length) {
    const std::string music = folder + "/music";
    fs::create_directories(music);
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread is there yet
    setenv("SONOLET_MUSIC", music.c_str(), 1);
    setenv("SONOLET_STATE", (folder + "/state").c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
    std::cerr << "making " << tracks << " tracks\n";
    bench::writeCatalogue(
        bench::syntheticTracks(tracks), music,
        service::StatePaths::prepare(nullptr, nullptr).catalogueFile(service::musicFolder()));
    const std::string link = makePlaylist(length);
    std::cerr << "searching and scrolling\n";
    Process browser({bin + "/sonolet-browser", "file://" SONOLET_BENCH_PAGE "?playlist=" + link,
                     "--audio", "null"});
    const std::vector<double> found = told(browser, "searched");
    const std::string among = " among " + std::to_string(tracks);
    figures::report(
        figures::plain("last letter to first results, median," + among, found.at(0), "ms"));
    figures::report(figures::within("last letter to first results, 2nd slowest of 40," + among,
                                    found.at(1), "ms", 350));
    figures::report(
        figures::plain("last letter to first results drawn, median," + among, found.at(2), "ms"));
    const Scrolled list = scrolled(browser);
    const Scrolled rows = scrolled(browser);
    const std::string of = " of " + std::to_string(length);
    figures::report(figures::atLeast("frames a second, list" + of + " scrolls", list.rate, "",
                                     "limit", 60, .95));
    figures::report(
        figures::within("processor time of such a frame", list.processor, "ms", 1000.0 / 60));
    figures::report(figures::atMost("processor time of such a frame", list.processor, "ms",
                                    "rows that are there already", rows.processor, 1.5));
}

void run() {
    const figures::WorkFolder folder;
    const std::string& root = folder.path();
    Process display(
        {"/bin/sh", "-c",
         "exec Xvfb -displayfd 1 -noreset -screen 0 1920x1200x24 -nolisten tcp 2>/dev/null"});
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread is there yet
    setenv("DISPLAY", (":" + display.awaitLine("")).c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");  // NOLINT(concurrency-mt-unsafe)
    measure(root + "/small", 6000, 5000);
    measure(root + "/large", 100000, 50000);
}

}  // namespace

int main() {
    return figures::runProgram([] { run(); });
}
