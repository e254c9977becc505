// sonolet-bench-search: how fast the music service answers and scans, beside what it promises.

#include "Figures.h"
#include "Program.h"
#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "catalogue/Catalogue.h"
#include "catalogue/Scanner.h"
#include "service/MusicSession.h"
#include "service/SyntheticMusic.h"
#include "store/StatePaths.h"

#include "libspotify/api.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sonolet;
using Clock = std::chrono::steady_clock;

constexpr std::size_t catalogueTracks = 100000;
constexpr std::size_t taggedFiles = 10000;
constexpr int queryCount = 4000;
constexpr int resultsAsked = 20;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Runs in a process of its own, so that its memory does not count.
void inChild(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        try {
            work();
            _exit(0);
        } catch (const std::exception& error) {
            std::cerr << error.what() << '\n';
            _exit(1);
        }
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("the input could not be made");
    }
}

// From asking to the completion callback. Says how many tracks there are; negative: it failed.
int search(bench::MusicSession& session, const std::string& query, sp_search_type type) {
    bool completed = false;
    sp_search* asked = sp_search_create(
        session.get(), query.c_str(), 0, resultsAsked, 0, resultsAsked, 0, resultsAsked, 0, 0, type,
        [](sp_search*, void* done) { *static_cast<bool*>(done) = true; }, &completed);
    session.until([&] { return completed; });
    const int total = sp_search_error(asked) == SP_ERROR_OK ? sp_search_total_tracks(asked) : -1;
    sp_search_release(asked);
    return total;
}

std::string firstLetters(const std::string& text, std::size_t count) {
    std::size_t place = 0;
    for (; place < text.size() && count > 0; --count) {
        ++place;
        while (place < text.size() && (text[place] & 0xc0) == 0x80) {
            ++place;
        }
    }
    return text.substr(0, place);
}

std::string someWord(const std::string& text, std::mt19937& random) {
    std::vector<std::string> words;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        words.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return words[random() % words.size()];
}

// What people type, of everything a share.
std::vector<std::string> queries(const std::vector<bench::SyntheticTrack>& tracks) {
    std::mt19937 random(3);
    std::vector<std::string> all;
    for (int index = 0; index < queryCount; ++index) {
        const bench::SyntheticTrack& track = tracks[random() % tracks.size()];
        const unsigned kind = random() % 100;
        if (kind < 25) {
            all.push_back(someWord(track.title, random));
        } else if (kind < 45) {
            all.push_back(track.title);
        } else if (kind < 60) {
            all.push_back(track.artist);
        } else if (kind < 70) {
            all.push_back(track.artist + ' ' + someWord(track.title, random));
        } else if (kind < 85) {
            all.push_back(firstLetters(track.title, 1 + random() % 5));
        } else if (kind < 90) {
            all.push_back("artist:" + someWord(track.artist, random) + " year:1990-1999");
        } else if (kind < 95) {
            all.push_back('"' + track.title + '"');
        } else {
            std::string wrong = someWord(track.title, random);
            wrong[random() % wrong.size()] = 'q';
            all.push_back(wrong);
        }
    }
    return all;
}

double percentile(std::vector<double> sorted, double share) {
    std::sort(sorted.begin(), sorted.end());
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

// Of all threads. Unlike the time on the clock it does not grow when the machine is busy.
double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// One iteration is one query.
void measureSearch(benchmark::State& state,
                   bench::MusicSession& session,
                   const std::vector<std::string>& asked,
                   sp_search_type type) {
    std::vector<double> samples;
    std::vector<double> processorSamples;
    double sumOfTotals = 0;
    std::string slowest;
    double slowestTime = 0;
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores)
        const std::string& query = asked[samples.size() % asked.size()];
        const double processorStart = processorMilliseconds();
        const Clock::time_point start = Clock::now();
        const int total = search(session, query, type);
        const Clock::duration taken = Clock::now() - start;
        processorSamples.push_back(processorMilliseconds() - processorStart);
        if (total < 0) {
            state.SkipWithError(("failed: " + query).c_str());
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(taken).count());
        samples.push_back(milliseconds(taken));
        sumOfTotals += total;
        if (samples.back() > slowestTime) {
            slowestTime = samples.back();
            slowest = query;
        }
    }
    if (samples.empty()) {
        return;
    }
    const bool suggest = type == SP_SEARCH_SUGGEST;
    const std::string name = suggest ? "suggestion" : "search";
    state.counters["tracks_found"] = sumOfTotals / static_cast<double>(samples.size());
    state.SetLabel("slowest: " + slowest);
    figures::report(figures::within(name + ", median", percentile(samples, 0.5), "ms", 5));
    figures::report(
        figures::within(name + ", 99th percentile", percentile(samples, 0.99), "ms", 20));
    figures::report(figures::plain(name + ", slowest", slowestTime, "ms"));
    figures::report(
        figures::plain(name + ", processor time, median", percentile(processorSamples, 0.5), "ms"));
    figures::report(figures::plain(name + ", processor time, 99th percentile",
                                   percentile(processorSamples, 0.99), "ms"));
}

double scan(const std::string& music, const std::string& file) {
    std::promise<void> finished;
    service::ScanEvents events;
    events.log = [](const std::string& line) {
        if (line.rfind("Scanned ", 0) == 0) {
            std::cerr << line << '\n';
        }
    };
    events.finished = [&finished](bool) { finished.set_value(); };
    const Clock::time_point start = Clock::now();
    const service::Scanner scanner(music, file, events);
    finished.get_future().wait();
    return milliseconds(Clock::now() - start) / 1000;
}

double residentMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stod(line.substr(6)) / 1024;
        }
    }
    return 0;
}

void run() {
    const figures::WorkFolder folder;
    const std::string& root = folder.path();
    const std::string music = root + "/music";
    const std::string tagged = root + "/tagged";
    std::filesystem::create_directories(music);
    std::filesystem::create_directories(tagged);
    // No other thread is there yet. NOLINTBEGIN(concurrency-mt-unsafe)
    setenv("SONOLET_MUSIC", music.c_str(), 1);
    setenv("SONOLET_STATE", (root + "/state").c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)

    std::cerr << "Making the input\n";
    inChild([&] {
        const auto paths = service::StatePaths::prepare(nullptr, nullptr);
        const auto tracks = bench::syntheticTracks(catalogueTracks);
        bench::writeCatalogue(tracks, music, paths.catalogueFile(service::musicFolder()));
        // Plays and stars of two users.
        service::Accounts accounts(paths.accountsFile());
        service::Catalogue catalogue(paths.catalogueFile(service::musicFolder()));
        std::vector<service::Id> starred = catalogue.tracks();
        std::shuffle(starred.begin(), starred.end(), std::mt19937(4));
        starred.resize(2000);
        std::vector<service::NewEntry> entries;
        entries.reserve(starred.size());
        for (const service::Id& track : starred) {
            entries.push_back({service::EntryKind::item, track, std::nullopt});
        }
        service::ListStore lists(accounts.connection());
        const auto listener = accounts.find("listener");
        lists.insert(*lists.ofAccount(listener->id, service::ListKind::starred), 0, entries,
                     listener->name);
    });
    inChild([&] { bench::writeTaggedFiles(bench::syntheticTracks(taggedFiles), tagged); });
    std::vector<std::string> asked;
    {
        const auto tracks = bench::syntheticTracks(catalogueTracks);
        asked = queries(tracks);
    }
    malloc_trim(0);
    const double before = residentMegabytes();

    auto session = std::make_unique<bench::MusicSession>();
    session->until([&] { return session->scanned(); });
    const double opened = residentMegabytes();
    const Clock::time_point start = Clock::now();
    search(*session, "the first of all", SP_SEARCH_STANDARD);
    figures::report(
        figures::plain("the very first search", milliseconds(Clock::now() - start), "ms"));
    for (const sp_search_type type : {SP_SEARCH_STANDARD, SP_SEARCH_SUGGEST}) {
        benchmark::RegisterBenchmark(
            type == SP_SEARCH_STANDARD ? "search" : "suggest",
            [&, type](benchmark::State& state) { measureSearch(state, *session, asked, type); })
            ->Iterations(queryCount)
            ->MeasureProcessCPUTime()
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    // Standard output is for the figures.
    benchmark::ConsoleReporter console;
    console.SetOutputStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&console);
    figures::report(figures::within("memory, catalogue opened", opened, "MB", 64));
    figures::report(figures::within("memory, after all searches", residentMegabytes(), "MB", 64));
    figures::report(figures::plain("memory, of it the benchmark before", before, "MB"));
    session.reset();

    const std::string file = root + "/tagged.db";
    figures::report(figures::within("first scan", scan(tagged, file), "s", 30));
    figures::report(figures::within("scan with nothing changed", scan(tagged, file), "s", 1));
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    return figures::runProgram(run);
}
