// Traces of pages, against what the pages did.

#include "../fakes/Folder.h"
#include "Watched.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>

namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

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

Outcome summaryOf(const std::string& trace, const std::vector<std::string>& options = {}) {
    std::vector<std::string> command{programs + "/sonolet-trace", trace};
    command.insert(command.end(), options.begin(), options.end());
    return run(command, {});
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
    // One or two come between the page's last word and its end.
    const int progress = numberAfter(outcome.output, "progress=");
    EXPECT_GE(countOf(events, "BX", "on TrackProgress"), static_cast<std::size_t>(progress));
    EXPECT_LE(countOf(events, "BX", "on TrackProgress"), static_cast<std::size_t>(progress) + 2);
    EXPECT_EQ(countOf(events, "i", "document opens"), 1U);
    EXPECT_EQ(countOf(events, "i", "played to the end"), 1U);

    // All that was delivered was written, and all requests but those at the end were answered.
    std::int64_t delivered = 0;
    std::int64_t written = 0;
    for (const json& event : events) {
        if (event.value("name", "") == "music_delivery" && event["ph"] == "X") {
            delivered += event["args"]["out"][0].get<std::int64_t>() * 4;
        } else if (event.value("name", "") == "writeData") {
            written += event["args"]["in"][2].get<int>();
        }
    }
    EXPECT_GT(written, 44100 * 4 * 8);
    EXPECT_LE(delivered - written, 4096);

    // Arrows lead from what caused a listener's call to the call.
    std::map<int, json> begins;
    std::set<std::string> arrows;
    for (const json& event : events) {
        if (event.value("ph", "") == "s") {
            begins[event["id"]] = event;
        } else if (event.value("ph", "") == "f") {
            ASSERT_EQ(begins.count(event["id"]), 1U);
            EXPECT_LE(begins[event["id"]]["ts"].get<double>(), event["ts"].get<double>())
                << event["name"];
            arrows.insert(event["name"]);
        }
    }
    for (const char* const name :
         {"LoggedIn", "TrackComplete", "search_create", "request", "sound"}) {
        EXPECT_EQ(arrows.count(name), 1U) << name;
    }

    // The same, as it is told to people.
    const Outcome told = summaryOf(watched.trace, {"--rows", "200"});
    EXPECT_EQ(told.exitCode, 0) << told.errors;
    EXPECT_THAT(told.output, ContainsRegex("call Track[.]name +37 "));
    EXPECT_THAT(told.output, ContainsRegex("\n  search +1 "));
    EXPECT_THAT(told.output, ContainsRegex(" yes .* " + std::to_string(written / 1024) +
                                           " KiB .*played to the end"));

    const std::string text = contentsOf(watched.trace);
    const std::size_t blob = outcome.output.find("blob=");
    ASSERT_NE(blob, std::string::npos);
    EXPECT_EQ(text.find("secret-words"), std::string::npos);
    EXPECT_EQ(text.find(outcome.output.substr(blob + 5, 32)), std::string::npos);
    struct stat status = {};
    ASSERT_EQ(stat(watched.trace.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 077U, 0U);
}

// A page in which nothing happens: some thousand polls in a few lines.
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
    EXPECT_GT(polls, 200);
    EXPECT_LT(contentsOf(watched.trace).size(), 60000U);
}

// What is written is bounded, and the latest of it is there.
TEST(Trace, KeepsToItsSize) {
    const Watched watched("size");
    const Outcome outcome = watched.page(
        "for (let i = 0; i < 20000; ++i) { Spotify.Track.nothing; } Spotify.theEnd; close();",
        {"--trace", watched.trace}, {{"SONOLET_TRACE_SIZE", "2"}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    constexpr std::size_t half = 1U << 20U;
    constexpr std::size_t batch = 512U << 10U;  // what is written at once, and something
    EXPECT_GT(contentsOf(watched.trace + ".old").size(), half);
    EXPECT_LT(contentsOf(watched.trace + ".old").size(), half + batch);
    EXPECT_LT(contentsOf(watched.trace).size(), half + batch);
    std::vector<json> events = eventsOf(watched.trace + ".old");
    EXPECT_GT(countOf(events, "X", "get Track.nothing"), 1000U);
    const std::vector<json> newer = eventsOf(watched.trace);
    events.insert(events.end(), newer.begin(), newer.end());
    EXPECT_EQ(countOf(events, "X", "get Spotify.theEnd"), 1U);
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

// Three faults, planted as they come in life, and where the summary shows them.
TEST(Summary, AnswersWhatPeopleAsk) {
    const Watched watched("asked");
    // The second track is loaded and never played; the answer to a search takes two seconds of page
    // time; a page keeps what it should have let go.
    const Outcome outcome = watched.page(R"js(
        const kept = [];
        test.run(async () => {
            await test.login();
            const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
            const search = (done) => Spotify.Search.create("fog", 0, 5, 0, 5, 0, 5, 0, 5, 0, done);
            await new Promise(search);
            for (let i = 0; i < 321; ++i) {
                kept.push(Spotify.Track.create(LINKS["Fog Signal"]));
            }
            Spotify.Session.playerLoad(track);
            Spotify.Session.playerPlay(true);
            await test.next(Spotify.Sonolet, "TrackComplete");
            Spotify.Session.playerLoad(track);
            await new Promise((over) => setTimeout(over, 5000));
        });
    )js",
                                         {"--trace", watched.trace, "--fault", "slow=2s@0s-100s"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
    const std::string text = summaryOf(watched.trace).output;
    EXPECT_THAT(text, ContainsRegex("\n  [0-9.]+ +yes .*played to the end\n"
                                    "  [0-9.]+ +NO +none +0 B"));
    // At 20 times the speed two seconds are at least a tenth.
    EXPECT_THAT(text, ContainsRegex("\n  search +1 +([1-9][0-9][0-9][.0-9]* ms|[0-9.]+ s) "));
    EXPECT_THAT(text, ContainsRegex("\n +32[12]  call Track.create\n"));
    EXPECT_THAT(text, ContainsRegex("\n +3[2-9][0-9]  track\n"));
    EXPECT_THAT(text, ContainsRegex("\n  wrappers +[0-9]+ +3[2-9][0-9] "));
}

TEST(Reader, SaysWhatItIsGivenAndLeavesOutWhatIsBroken) {
    const Folder watched;
    const std::string head = "[\n{\"ph\":\"M\",\"name\":\"sonolet_trace\",\"args\":{}},\n";
    const std::string call =
        "{\"ph\":\"X\",\"tid\":7,\"ts\":1.5,\"dur\":2,\"cat\":\"plugin>library\",\"name\":"
        "\"sp_track_name\",\"args\":{\"in\":[{\"track\":\"5f\"}],\"out\":[\"</script>\"]}},\n";
    watched.write("none.json", "{\"a\": 1}\n");
    // What goes through values one within another runs out of stack.
    const std::string deep = "{\"ph\":\"X\",\"name\":\"x\",\"args\":{\"in\":[" +
                             std::string(500000, '[') + std::string(500000, ']') + "]}},\n";
    watched.write("ok.json", head + call + "{\"ph\":\"X\",\"tid\n" + deep + call + "{\"ph");
    const struct {
        std::vector<std::string> words;
        int exitCode;
        const char* line;
    } cases[] = {
        {{"nowhere.json"}, 2, "nowhere.json: No such file"},
        {{}, 2, "no file given"},
        {{"none.json"}, 1, "none.json: is no timeline of the layer"},
        {{"ok.json", "--rows", "0"}, 2, "--rows takes a number above 0, not \"0\""},
        {{"ok.json", "--rows=-1"}, 2, "--rows takes a number above 0, not \"-1\""},
        {{"ok.json", "--member", "x"}, 2, "belong to --follow"},
        {{"ok.json", "--html", "--follow"}, 2, "not for one call"},
        {{"ok.json"}, 0, "2 broken lines are left out"},
        {{"ok.json"}, 0, "sp_track_name                  2      2.0 us"},
        {{"ok.json", "--follow", "--object", "track 5f"},
         0,
         "0.000002      7 sp_track_name(track 5f) = \"</script>\"  [2.0 us]"},
    };
    for (const auto& [words, exitCode, line] : cases) {
        std::vector<std::string> command{"/bin/sh", "-c", "cd \"$0\" && exec \"$@\"",
                                         watched.path(""), programs + "/sonolet-trace"};
        command.insert(command.end(), words.begin(), words.end());
        const Outcome outcome = run(command, {});
        EXPECT_EQ(outcome.exitCode, exitCode) << line;
        EXPECT_THAT(outcome.output + outcome.errors, HasSubstr(line));
    }
    const std::string file = watched.path("ok.json");
    EXPECT_THAT(summaryOf(file, {"--follow", "--member", "other"}).output, Not(HasSubstr("track")));
    ASSERT_EQ(summaryOf(file, {"--html"}).exitCode, 0);
    const std::string page = contentsOf(file + ".html");
    EXPECT_THAT(page, HasSubstr("sp_track_name(track 5f) = \\\"\\u003c/script>"));
    EXPECT_EQ(page.find("</script>"), page.rfind("</script>"));
}

}  // namespace
