// Traces of pages, against what the pages did.

#include "Watched.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>

namespace {

using nlohmann::json;

std::size_t countOf(const std::vector<json>& events, const char* phases, const std::string& name) {
    return static_cast<std::size_t>(
        std::count_if(events.begin(), events.end(), [&](const json& event) {
            return std::string(phases).find(event.value("ph", "")) != std::string::npos &&
                   event.value("name", "") == name;
        }));
}

int numberAfter(const std::string& text, const std::string& word) {
    const std::size_t at = text.find(word);
    return at == std::string::npos ? -1 : std::stoi(text.substr(at + word.size()));
}

// What began ends on its thread, in order, and no time runs backwards there.
void expectNested(const std::vector<json>& events) {
    std::map<int, std::vector<double>> open;
    std::map<int, double> last;
    for (const json& event : events) {
        const std::string phase = event.value("ph", "");
        if (phase != "B" && phase != "E" && phase != "X") {
            continue;
        }
        const int thread = event["tid"];
        const double from = event["ts"];
        EXPECT_GE(from, last[thread]) << event;
        last[thread] = from + event.value("dur", 0.0);
        if (phase == "B") {
            open[thread].push_back(from);
        } else if (phase == "E") {
            ASSERT_FALSE(open[thread].empty()) << event;
            EXPECT_GE(from, open[thread].back());
            open[thread].pop_back();
        }
    }
    for (const auto& [thread, left] : open) {
        EXPECT_TRUE(left.empty()) << "thread " << thread;
    }
}

TEST(Trace, TellsWhatThePageDid) {
    const Watched watched("did");
    const Outcome outcome = watched.page(R"js(
        let progress = 0;
        Spotify.Sonolet.addEventListener("TrackProgress", () => ++progress);
        test.run(async () => {
            Spotify.SessionConfig.proxyPassword = "proxy-secret-words";
            await test.login("listener", "wrong-secret-words");
            const blob = test.next(Spotify.Session, "CredentialsBlobUpdated");
            await test.login("listener", "listener", true);
            console.log("blob=" + (await blob)[0]);
            const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
            for (let i = 0; i < 37; ++i) {
                track.name();
            }
            await new Promise((found) => Spotify.Search.create("fog", 0, 5, 0, 5, 0, 5, 0, 5, 0, found));
            Spotify.Session.playerLoad(track);
            Spotify.Session.playerPlay(true);
            await test.next(Spotify.Sonolet, "TrackComplete");
            console.log("progress=" + progress);
        });
    )js",
                                         {"--trace", watched.trace});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
    const std::vector<json> events = eventsOf(watched.trace);
    expectNested(events);

    EXPECT_EQ(countOf(events, "BX", "call Track.name"), 37U);
    EXPECT_EQ(countOf(events, "BX", "sp_track_name"), 37U);
    EXPECT_EQ(countOf(events, "BX", "on TrackProgress"),
              static_cast<std::size_t>(numberAfter(outcome.output, "progress=")));
    EXPECT_EQ(countOf(events, "i", "document opens"), 1U);
    EXPECT_EQ(countOf(events, "i", "played to the end"), 1U);

    // All that was delivered was written, and all requests but those at the end were answered.
    std::int64_t delivered = 0;
    std::int64_t written = 0;
    for (const json& event : events) {
        if (event.value("name", "") == "music_delivery" && event["ph"] == "X") {
            delivered += event["args"]["out"][0].get<int>() * 4;
        } else if (event.value("name", "") == "writeData") {
            written += event["args"]["in"][2].get<int>();
        }
    }
    EXPECT_GT(written, 44100 * 4 * 8);
    EXPECT_LE(delivered - written, 4096);

    // Arrows lead from what caused a listener's call to the call.
    std::map<int, json> begins;
    std::set<std::string> told;
    for (const json& event : events) {
        if (event.value("ph", "") == "s") {
            begins[event["id"]] = event;
        } else if (event.value("ph", "") == "f") {
            ASSERT_EQ(begins.count(event["id"]), 1U);
            EXPECT_LE(begins[event["id"]]["ts"].get<double>(), event["ts"].get<double>());
            told.insert(event["name"]);
        }
    }
    for (const char* const name :
         {"LoggedIn", "TrackComplete", "search_create", "request", "sound"}) {
        EXPECT_EQ(told.count(name), 1U) << name;
    }

    const std::string text = contentsOf(watched.trace);
    const std::size_t blob = outcome.output.find("blob=");
    ASSERT_NE(blob, std::string::npos);
    EXPECT_EQ(text.find("secret-words"), std::string::npos);
    EXPECT_EQ(text.find(outcome.output.substr(blob + 5, 32)), std::string::npos);
    struct stat status = {};
    ASSERT_EQ(stat(watched.trace.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 077U, 0U);
}

// A page in which nothing happens: some 2,800 polls in a few lines.
TEST(Trace, OfAnIdlePageIsSmall) {
    const Watched watched("idle");
    const Outcome outcome = watched.page(
        "test.run(async () => { await test.login(); setTimeout(() => console.log('idle='), 200e3);"
        " await new Promise((over) => setTimeout(over, 210e3)); });",
        {"--trace", watched.trace});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
    const std::vector<json> events = eventsOf(watched.trace);
    std::int64_t polls = 0;
    for (const json& event : events) {
        polls += event.value("name", "") == "idle" ? event["args"]["times"].get<int>() : 0;
    }
    EXPECT_GT(polls, 2000);
    EXPECT_LT(contentsOf(watched.trace).size(), 60000U);
}

// What is written is bounded, and the latest of it is there.
TEST(Trace, KeepsToItsSize) {
    const Watched watched("size");
    const Outcome outcome = watched.page(
        "for (let i = 0; i < 40000; ++i) { Spotify.Track.nothing; } Spotify.theEnd; close();",
        {"--trace", watched.trace}, {{"SONOLET_TRACE_SIZE", "2"}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    constexpr std::size_t half = 1U << 20U;
    constexpr std::size_t batch = 2U << 20U;  // the lines of one turn of the writing thread
    EXPECT_GT(contentsOf(watched.trace + ".old").size(), half);
    EXPECT_LT(contentsOf(watched.trace + ".old").size(), half + batch);
    EXPECT_LT(contentsOf(watched.trace).size(), half + batch);
    EXPECT_EQ(countOf(eventsOf(watched.trace), "X", "get Spotify.theEnd"), 1U);
    EXPECT_GT(countOf(eventsOf(watched.trace + ".old"), "X", "get Track.nothing"), 1000U);
}

TEST(Trace, IsWholeWhenItsProcessIsKilled) {
    const Watched watched("killed");
    // The shell kills the host once the page has told that it plays; what was written before is
    // there, a line an event.
    std::vector<std::string> command{"/bin/bash", "-c",
                                     R"sh(coproc page { exec "$@"; }
             pid=$page_PID
             while IFS= read -r line <&"${page[0]}"; do
                 [[ $line == plays ]] && kill -KILL "$pid"
             done
             wait "$pid")sh",
                                     "bash"};
    const std::vector<std::string> host = watched.command(
        R"js(test.run(async () => {
            await test.login();
            const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
            Spotify.Session.playerLoad(track);
            Spotify.Session.playerPlay(true);
            await test.next(Spotify.Sonolet, "TrackProgress", (at) => at > 2);
            console.log("plays");
            await new Promise(() => {});
        });)js",
        {"--trace", watched.trace});
    command.insert(command.end(), host.begin(), host.end());
    const Outcome outcome = run(command, watched.environment());
    ASSERT_EQ(outcome.exitCode, 137) << outcome.output << outcome.errors;
    const std::vector<json> events = eventsOf(watched.trace);
    EXPECT_EQ(countOf(events, "BX", "sp_session_player_load"), 1U);
    EXPECT_GT(countOf(events, "BX", "writeData"), 10U);
    EXPECT_EQ(contentsOf(watched.trace).back(), '\n');
}

}  // namespace
