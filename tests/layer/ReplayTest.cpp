// Recordings that are done again: as they are, altered in one place, and such as cannot be.

#include "Watched.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

Outcome replay(const std::string& file) {
    return run({programs + "/sonolet-replay", file}, {});
}

// A page that has some of everything, recorded once for all tests of a process: they may run beside
// each other, in processes of their own.
class Replay : public testing::Test {
protected:
    static void SetUpTestSuite() {
        watched = new Watched("replay-" + std::to_string(getpid()));
        const Outcome outcome = watched->page(R"js(
            test.run(async () => {
                Spotify.SessionConfig.proxyPassword = "proxy-secret-words";
                await test.login("listener", "wrong-secret-words");
                const blob = test.next(Spotify.Session, "CredentialsBlobUpdated");
                await test.login("listener", "listener", true);
                console.log("blob=" + (await blob)[0]);
                await test.login("listener", "", false, (await blob)[0]);
                const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
                track.name();
                await new Promise((found) => Spotify.Search.create("fog", 0, 5, 0, 5, 0, 5, 0, 5, 0, found));
                Spotify.Session.playerLoad(track);
                Spotify.Session.playerPlay(true);
                await test.next(Spotify.Sonolet, "TrackComplete");
            });
        )js",
                                              {"--trace", watched->trace, "--replayable"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
        recorded = contentsOf(watched->trace);
        blobLine = outcome.output.substr(outcome.output.find("blob=") + 5, 32);
    }
    static void TearDownTestSuite() {
        std::filesystem::remove_all(watched->folder);
        delete watched;
    }

    static inline Watched* watched = nullptr;
    static inline std::string recorded;
    static inline std::string blobLine;
};

TEST_F(Replay, OfAPageFindsNoDifferenceAndNeedsNoSecret) {
    const Outcome outcome = replay(watched->trace);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output,
                ContainsRegex("^no difference: [0-9]+ calls and returns of [3-9] threads, "));
    EXPECT_EQ(recorded.find("secret-words"), std::string::npos);
    EXPECT_EQ(recorded.find(blobLine), std::string::npos);
    EXPECT_THAT(recorded, HasSubstr("\"name\":\"call Session.login\""));
}

// The line that has all of these, and its end.
std::pair<std::size_t, std::size_t> lineWith(const std::string& text,
                                             const std::vector<std::string>& parts) {
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t end = text.find('\n', from) + 1;
        const std::string line = text.substr(from, end - from);
        if (std::all_of(parts.begin(), parts.end(), [&](const std::string& part) {
                return line.find(part) != std::string::npos;
            })) {
            return {from, end};
        }
        from = end;
    }
    throw std::runtime_error("the recording has no line with " + parts.front());
}

// What a plug-in that does otherwise would show, the other way round: the recording is altered.
TEST_F(Replay, TellsTheFirstDifferenceAndWhere) {
    const struct {
        std::vector<std::string> line;  // that is altered
        std::string from;               // empty: the whole line goes
        std::string to;
        const char* told;
    } cases[] = {
        // The library gives another name, and so does the plug-in.
        {{"\"sp_track_name\""},
         "Fog Signal",
         "Fog Horn",
         "expected  return from call Track.name = 1, \"Fog Signal\"\n"
         "  seen      return from call Track.name = 1, \"Fog Horn\"\n"},
        // Another argument, function and object than the plug-in's.
        {{"\"sp_session_player_play\""},
         "},true]",
         "},false]",
         "expected  sp_session_player_play.session [0-9a-f]+, false.\n"
         "  seen      sp_session_player_play.session [0-9a-f]+, true.\n"},
        {{"\"sp_track_duration\""},
         "sp_track_duration",
         "sp_track_popularity",
         "object    track [0-9a-f]+\n  expected  sp_track_popularity.*\n  seen      "
         "sp_track_duration"},
        {{"\"sp_session_player_load\""},
         "{\"track\":\"",
         "{\"track\":\"5",
         "expected  sp_session_player_load.*\n  seen      sp_session_player_load"},
        // One call less, one call more.
        {{"\"sp_search_create\""},
         "",
         "",
         "expected  sp_search_add_ref.*\n"
         "  seen      sp_search_create.*\"fog\", 0, 5"},
        {{"\"sp_track_name\""},
         "\n",
         "\n{\"ph\":\"X\",\"tid\":@,\"ts\":1,\"dur\":1,\"name\":\"sp_track_index\",\"args\":{"
         "\"in\":"
         "[{\"track\":\"1\"}],\"out\":[1]}},\n",
         "expected  sp_track_index.track 1.\n  seen      return from call Track.name"},
        // Events: one that says something else, one that is not there.
        {{"\"logged_in\""}, "},6]", "},0]", "expected  call_function.*, 1, 6.\n  seen  .*, 1, 0."},
        {{"\"handleEvent\"", ",4]"}, "", "", "expected  call_function|expected  return from poll"},
        // A secret that is another, and the way of sound.
        {{"\"sp_session_login\""},
         "{\"secret\":",
         "{\"secret\":7",
         "expected  sp_session_login.*secret 7[0-9]+.*\n  seen  .*secret [0-9]."},
        {{"\"music_delivery\""}, "\"out\":[2", "\"out\":[1", "return from music_delivery = 1"},
        {{"\"writeData\""}, ",4096,0]", ",2048,0]", "writeData.*2048, 0.\n.*writeData.*4096, 0."},
    };
    const std::string file = watched->folder + "/altered.json";
    for (const auto& each : cases) {
        const auto [begin, end] = lineWith(recorded, each.line);
        std::string line = recorded.substr(begin, end - begin);
        if (each.from.empty()) {
            line.clear();
        } else {
            const std::size_t at = line.find(each.from);
            ASSERT_NE(at, std::string::npos) << line;
            line.replace(at, each.from.size(), each.to);
        }
        if (const std::size_t thread = line.find('@'); thread != std::string::npos) {
            const std::size_t number = recorded.find("\"tid\":", begin) + 6;
            line.replace(thread, 1, recorded.substr(number, recorded.find(',', number) - number));
        }
        writeTo(file, recorded.substr(0, begin) + line + recorded.substr(end));
        const Outcome outcome = replay(file);
        EXPECT_EQ(outcome.exitCode, 1) << each.told << outcome.errors;
        EXPECT_THAT(outcome.output, ContainsRegex("^difference at [0-9]+[.][0-9]{6} s, call "
                                                  "[0-9]+ of [0-9]+, thread [0-9]+, line [0-9]+"));
        EXPECT_THAT(outcome.output, ContainsRegex(each.told)) << each.line.front();
    }
}

TEST_F(Replay, SaysWhyAFileCannotBeReplayed) {
    const auto replaced = [](const char* what, const char* with) {
        std::string text = recorded;
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        return text.replace(at, std::string(what).size(), with);
    };
    const struct {
        std::string text;
        const char* why;
    } cases[] = {
        {"", "is no timeline of the layer"},
        {"{\"a\":1}\n", "is no event of a timeline"},
        {replaced(",\"replayable\":true", ""), "was not recorded with --replayable"},
        {replaced("\"part\":1", "\"part\":2"), "its beginning was dropped"},
        {replaced("\"bits\":", "\"bits\":1"), "is of a "},
        {replaced("\"name\":\"init\"", "\"name\":\"begin\""), "nobody knows the call begin"},
        {replaced("{\"ph\":\"B\"", "{\"ph\":\"i\",\"name\":\"lost 3 calls\"},\n{\"ph\":\"B\""),
         "lost 3 calls"},
        {replaced("{\"ph\":\"B\"", "{\"ph\":B\""), "line [0-9]+: is no event"},
        {replaced("\"file\",\"\",0", "5,\"\",0"), "5 is no text"},
        {replaced("\"call\":\"getter\",\"in\":[{\"object\":\"",
                  "\"call\":\"getter\",\"in\":[{\"object\":\"9"),
         "line [0-9]+: .*(has given no getter|is no address)"},
        // Values that would have the plug-in read what is not there, or are read inside its calls.
        {replaced(",4,\"listener\",", ",5,\"listener\","),
         "line [0-9]+: 5 is no number of the 4 values there"},
        {replaced("\"listener\",{\"secret\":2,\"bytes\":",
                  "\"listener\",{\"secret\":2,\"bytes\":9999999"),
         "line [0-9]+: .*is no secret"},
        {replaced("},[0,44100,2],{},", "},[0,44100,2],{},99999999"),
         "line [0-9]+: [0-9]+ of 99999999[0-9]+ frames of 4 bytes are no delivery of sound"},
        // Of which 32 bits would have a few bytes.
        {replaced("},[0,44100,2],{},2048", "},[0,44100,2],{},1073743872"),
         "line [0-9]+: [0-9]+ of 1073743872 frames of 4 bytes are no delivery of sound"},
        {replaced("\"out\":[\"Fog Signal\"]", "\"out\":[7]"), "line [0-9]+: 7 is no text"},
        {replaced("\"name\":\"requestBackend\",\"args\":{\"in\":[1,{\"at\":\"",
                  "\"name\":\"requestBackend\",\"args\":{\"in\":[1,{\"at\":\"x"),
         "line [0-9]+: .*is no address"},
        {replaced("],\"out\":[true]}", "],\"out\":[\"yes\"]}"),
         "line [0-9]+: is not what the layer writes of such a call"},
    };
    const std::string file = watched->folder + "/refused.json";
    for (const auto& [text, why] : cases) {
        writeTo(file, text);
        const Outcome outcome = replay(file);
        EXPECT_EQ(outcome.exitCode, 2) << why << outcome.output;
        EXPECT_THAT(outcome.errors, ContainsRegex(std::string("sonolet-replay: .*") + why));
        if (std::string(why).rfind("line ", 0) == 0) {
            const auto broken = std::mismatch(text.begin(), text.end(), recorded.begin()).first;
            const auto line = std::count(text.begin(), broken, '\n') + 1;
            EXPECT_THAT(outcome.errors, HasSubstr("line " + std::to_string(line) + ": "));
        }
    }
    EXPECT_THAT(replay("nowhere.json").errors, HasSubstr("nowhere.json: No such file"));
    EXPECT_THAT(replay(watched->folder).errors, HasSubstr(watched->folder + ": Is a directory"));
}

// The end of a process that was killed, and a file that has grown into two.
TEST_F(Replay, GoesAsFarAsTheRecordingDoes) {
    const std::string file = watched->folder + "/part.json";
    const std::size_t inside = lineWith(recorded, {"\"sp_session_player_load\""}).second;
    writeTo(file, recorded.substr(0, inside + 20));
    const Outcome cut = replay(file);
    EXPECT_EQ(cut.exitCode, 0) << cut.output << cut.errors;
    EXPECT_THAT(cut.output, HasSubstr("; the recording ends inside a call\n"));

    const std::string head = recorded.substr(0, recorded.find('\n', 3) + 1);
    std::string second = head;
    second.replace(second.find("\"part\":1"), 8, "\"part\":2");
    writeTo(file + ".old", recorded.substr(0, inside) + "{}]\n");
    writeTo(file, second + recorded.substr(inside));
    const Outcome both = replay(file);
    EXPECT_EQ(both.exitCode, 0) << both.output << both.errors;
    EXPECT_EQ(both.output, replay(watched->trace).output);
}

}  // namespace
