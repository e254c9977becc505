#include "../fakes/Wav.h"
#include "Command.h"
#include "MusicServer.h"

namespace fs = std::filesystem;

namespace {

constexpr char bin[] = BIN_DIR "/";
constexpr char conformancePage[] = PAGES_DIR "/../../pages/conformance/conformance.js";

// The words of a variable that says how the pages are run.
std::vector<std::string> wordsOf(const char* variable) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): one thread
    std::istringstream text(value != nullptr ? value : "");
    return {std::istream_iterator<std::string>(text), {}};
}

// What runs a page: SONOLET_PAGES_UNDER is a program to run the host under, SONOLET_PAGES_OPTIONS
// are more options of the host, which win.
std::vector<std::string> hostCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = wordsOf("SONOLET_PAGES_UNDER");
    command.push_back(std::string(bin) + "sonolet-host");
    command.insert(command.end(), arguments.begin(), arguments.end());
    const std::vector<std::string> options = wordsOf("SONOLET_PAGES_OPTIONS");
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

// Where the files of a test are; other runs of it may go on beside this one.
std::string folderOf(std::string name) {
    for (const char* const variable : {"SONOLET_PAGES_UNDER", "SONOLET_PAGES_OPTIONS"}) {
        for (const std::string& word : wordsOf(variable)) {
            name += fs::path(word).filename();
        }
    }
    return WORK_DIR "/" + name;
}

// One folder of music, and the state of a service that has never seen it.
class Place {
public:
    // `server`: the address of one with this music, or empty.
    Place(const std::string& name, const std::string& music, const std::string& server = "")
        : musicFolder(music) {
        state = folderOf(name);
        fs::remove_all(state);
        fs::create_directories(state);
        environment = {{"SONOLET_MUSIC", musicFolder},
                       {"SONOLET_SERVER", server},
                       {"SONOLET_STATE", (state / "state").string()}};
    }

    // A constant LINKS for a page: the links of the folder's tracks, by title.
    std::string links() const {
        const Outcome index = run(
            {"/bin/bash", "-o", "pipefail", "-c",
             R"sh("$0sonolet-index" | awk -F'\t' '{ printf "\"%s\": \"%s\", ", $4, $1 }')sh", bin},
            environment);
        EXPECT_EQ(index.exitCode, 0) << index.errors;
        return "const LINKS = {" + index.output + "};\n";
    }

    // Runs the page, with the harness and the links before it.
    Outcome page(const std::string& script, const std::vector<std::string>& options = {}) const {
        const std::string file = (state / "page.js").string();
        writeTo(file, links() + contentsOf(PAGES_DIR "/harness.js") + script);
        std::vector<std::string> arguments{file,    "--speed", "20",        "--expose-gc", "--for",
                                           "12000", "--music", musicFolder, "--audio",     "null"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(hostCommand(arguments), environment);
    }

    const std::map<std::string, std::string>& variables() const { return environment; }

    fs::path state;

private:
    const std::string musicFolder;
    std::map<std::string, std::string> environment;
};

std::size_t count(const std::string& text, const std::string& wanted) {
    std::size_t found = 0;
    for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) {
        ++found;
    }
    return found;
}

// ---- Pages that check themselves ----

// The page's TAP is whole, with at least so many checks, and none of them failed.
void expectPassed(const Outcome& outcome, std::size_t atLeast) {
    EXPECT_EQ(outcome.exitCode, 0);
    const std::size_t passed = count("\n" + outcome.output, "\nok ");
    EXPECT_GE(passed, atLeast);
    EXPECT_EQ(count("\n" + outcome.output, "\nnot ok "), 0U);
    EXPECT_NE(outcome.output.find("\n1.." + std::to_string(passed) + "\n"), std::string::npos);
    EXPECT_EQ(outcome.errors, "====== SONOLET LOADED ======\n");
    if (testing::Test::HasFailure()) {
        std::cout << outcome.output << outcome.errors;
    }
}

class SelfCheckingPage : public testing::TestWithParam<const char*> {};

TEST_P(SelfCheckingPage, Passes) {
    const Place place(GetParam(), MUSIC_DIR);
    expectPassed(place.page(contentsOf(std::string(PAGES_DIR "/scripts/") + GetParam() + ".js"),
                            {"--log", "none"}),
                 3);
}

// The same pages over a server that others have written, without a letter changed.
class ServedPage : public testing::TestWithParam<const char*> {};

TEST_P(ServedPage, Passes) {
    const std::string name = std::string("served-") + GetParam();
    const MusicServer server(folderOf(name + "-server"), MUSIC_DIR);
    const Place place(name, MUSIC_DIR, server.url());
    const bool isConformance = GetParam() == std::string("conformance");
    // That at its own speed: its steps have limits in page time, which a busy machine keeps.
    expectPassed(isConformance ? run(hostCommand({conformancePage, "--for", "1200", "--audio",
                                                  "null", "--log", "none"}),
                                     place.variables())
                               : place.page(contentsOf(std::string(PAGES_DIR "/scripts/") +
                                                       GetParam() + ".js"),
                                            {"--log", "none"}),
                 isConformance ? 590 : 3);
}

INSTANTIATE_TEST_SUITE_P(Pages,
                         ServedPage,
                         testing::Values("events", "playback", "conformance"),
                         [](const auto& page) { return std::string(page.param); });

INSTANTIATE_TEST_SUITE_P(Pages,
                         SelfCheckingPage,
                         testing::Values("events", "playback"),
                         [](const auto& page) { return std::string(page.param); });

// The scan of a new state takes real time: the first fault waits until it is surely over.
TEST(Faults, ReachThePageAtTheirTimes) {
    const Place place("faults", MUSIC_DIR);
    const std::string links = place.links();
    const std::size_t at = links.find("spotify:track:", links.find("\"Salt Wind\""));
    const std::string spec = "login=bad-password@0s-40s,slow=3s@0s-50s,unavailable=" +
                             links.substr(at, links.find('"', at) - at) +
                             "@0s-150s,offline@100s-160s,token@200s,stream-error@220s,"
                             "message=Closed at 6 p.m.%2C sorry@240s";
    expectPassed(
        place.page(contentsOf(PAGES_DIR "/scripts/faults.js"), {"--log", "none", "--fault", spec}),
        14);
    for (const bool byOption : {true, false}) {
        const std::string wrong = "token@5s,ofline@5s-12s";
        std::map<std::string, std::string> variables = place.variables();
        std::vector<std::string> arguments = {(place.state / "page.js").string()};
        if (byOption) {
            arguments.insert(arguments.end(), {"--fault", wrong});
        } else {
            variables["SONOLET_FAULT"] = wrong;
        }
        const Outcome refused = run(hostCommand(arguments), variables);
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_EQ(refused.errors,
                  std::string("sonolet-host: ") + (byOption ? "--fault" : "SONOLET_FAULT") +
                      ": fault \"ofline@5s-12s\" at character 10: there are offline, token, login, "
                      "slow, stream-error, unavailable, message\n");
    }
}

TEST(Conformance, OfThisHostAndLibraryIsWhole) {
    const Place place("conformance", MUSIC_DIR);
    const Outcome made =
        run({std::string(bin) + "sonolet-playlist", "new", "A list"}, place.variables());
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    const Outcome outcome =
        run(hostCommand({conformancePage, "--for", "1200", "--audio", "null", "--log", "none"}),
            place.variables());
    expectPassed(outcome, 600);
    // What is skipped are events that no page can raise, and one call that no page can take back.
    const std::size_t skipped = count(outcome.output, "# SKIP ");
    EXPECT_EQ(skipped, count(outcome.output, "# SKIP nothing here raised it\n") + 1);
    EXPECT_LT(skipped, 30U) << outcome.output;
}

// ---- Sound ----

// The samples of a WAV file whose sizes tell the truth.
std::string samplesOf(const std::string& wav) {
    const std::size_t data = wav.find("data", 12);
    if (wav.compare(0, 4, "RIFF") != 0 || data == std::string::npos || wav.size() < data + 8) {
        ADD_FAILURE() << "no WAV file of " << wav.size() << " bytes";
        return {};
    }
    std::uint32_t size = 0;
    std::memcpy(&size, wav.data() + data + 4, sizeof size);
    EXPECT_EQ(size, wav.size() - data - 8);
    return wav.substr(data + 8);
}

// ---- The pages that come with the project ----

class ExamplePage : public testing::TestWithParam<const char*> {};

TEST_P(ExamplePage, PlaysItsTrackToTheEnd) {
    const Place place(std::string("example-") + GetParam(), MUSIC_DIR);
    const std::string file = (place.state / "out.wav").string();
    const Outcome outcome =
        run(hostCommand({std::string(PAGES_DIR "/../../pages/") + GetParam() + ".js", "--speed",
                         "20", "--for", "4000", "--audio", "wav:" + file}),
            place.variables());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(outcome.errors, "====== SONOLET LOADED ======\n");
    EXPECT_GT(samplesOf(contentsOf(file)).size(), 44100U * 4 * 8) << outcome.output;
}

INSTANTIATE_TEST_SUITE_P(Pages,
                         ExamplePage,
                         testing::Values("hello", "play", "search"),
                         [](const auto& page) { return std::string(page.param); });

// The page in one process, the changes in another, each once the page has told the one before.
TEST(ExamplePlaylists, PrintsTheTreeAndEachEventWithItsArguments) {
    const Place place("example-playlists", MUSIC_DIR);
    place.links();  // the library is known from the start
    const std::string file = PAGES_DIR "/../../pages/playlists.js";
    const std::string shell = R"sh(
        list=$1sonolet-playlist
        change() { "$list" "$@" >/dev/null; }
        change new Rock --folder
        change new Inside --in Rock
        coproc page { exec "${@:2}"; }
        expect() {
            while IFS= read -r line <&"${page[0]}"; do
                [[ $line == PlaylistMetadataUpdated* ]] || echo "$line"
                [[ $line != "$1" ]] || return
            done
            exit 3
        }
        expect "ContainerLoaded()"
        change new Mix; expect 'PlaylistAdded(playlist "Mix", 3)'
        change new Jazz --folder; expect 'PlaylistAdded(folder, 5)'
        done='PlaylistUpdateInProgress("Mix", true)'
        change add Mix "Fog Signal" "Salt Wind"; expect "$done"
        change move Mix 0 1; expect "$done"
        change message Mix 1 "for you"; expect "$done"
        change remove Mix 0; expect "$done"
        change describe Mix "all of it"; expect "$done"
        change remove Mix; expect 'PlaylistRemoved(playlist "Mix", 3)'
        page=$page_PID; kill "$page"; wait "$page"
    )sh";
    std::vector<std::string> command{"/bin/bash", "-c", shell, "bash", bin};
    const std::vector<std::string> host = hostCommand({file, "--audio", "null", "--for", "100"});
    command.insert(command.end(), host.begin(), host.end());
    const Outcome outcome = run(command, place.variables());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(outcome.errors, "====== SONOLET LOADED ======\n");
    std::string expected = R"(playlists of listener:
  Rock/
    Inside (0 tracks)  LINK
waiting for changes
ContainerLoaded()
PlaylistAdded(playlist "Mix", 3)
PlaylistAdded(folder, 4)
PlaylistAdded(folder, 5)
)";
    for (const char* event :
         {"TracksAddedEvent(\"Mix\", [\"Fog Signal\", \"Salt Wind\"], 0)",
          "TracksMoved(\"Mix\", [0], 1)", "TrackMessageChanged(\"Mix\", 1, \"for you\")",
          "TracksRemoved(\"Mix\", [0])", "DescriptionChanged(\"Mix\", \"all of it\")"}) {
        expected += std::string("PlaylistUpdateInProgress(\"Mix\", false)\n") + event +
                    "\nPlaylistStateChanged(\"Mix\")\nPlaylistUpdateInProgress(\"Mix\", true)\n";
    }
    expected += "PlaylistRemoved(playlist \"Mix\", 3)\n";
    std::string output = outcome.output;
    const std::size_t link = output.find("spotify:user:listener:playlist:");
    ASSERT_NE(link, std::string::npos) << output;
    EXPECT_EQ(output.replace(link, output.find('\n', link) - link, "LINK"), expected);
}

// ---- Sound, sample for sample ----

// A page plays noise, to its end or until it closes in the middle: what reaches the sink is a
// silent frame and the source, so that a block that is lost, repeated or moved shows.
TEST(Sound, OfATrackReachesTheSinkSampleForSampleAndStopsWithThePage) {
    std::mt19937 random(7);
    std::string source(44100 * 4 * 9 + 4 * 731, '\0');
    std::generate(source.begin(), source.end(), [&] { return static_cast<char>(random()); });
    const std::string music = WORK_DIR "/noise";
    fs::create_directories(music);
    writeTo(music + "/Noise.wav", wavFile(source));
    // Less than one request may be missing at the end.
    const std::size_t whole = source.size() + 4;
    for (const auto& [until, least, most] :
         {std::tuple("complete", whole - 4095, whole),
          {"test.next(Spotify.Sonolet, 'TrackProgress', (at) => at > 2)", std::size_t{44100} * 4,
           whole - 1}}) {
        const Place place("sound", music);
        const std::string file = (place.state / "out.wav").string();
        const Outcome outcome = place.page(std::string(R"js(
            test.run(async () => {
                await test.login();
                const session = Spotify.Session;
                session.playerLoad(await test.loaded(Spotify.Track.create(LINKS["Noise"])));
                const complete = test.next(Spotify.Sonolet, "TrackComplete");
                session.playerPlay(true);
                await )js") + until + "; test.ok(true, 'played'); });",
                                           {"--audio", "wav:" + file});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
        const std::string played = samplesOf(contentsOf(file));
        EXPECT_TRUE(played.size() >= least && played.size() <= most) << until << played.size();
        EXPECT_EQ(played.substr(0, 4), std::string(4, '\0'));
        EXPECT_TRUE(played.compare(4, played.size() - 4, source, 0, played.size() - 4) == 0);
    }
}

// ---- The page's life ----

TEST(Reloading, StopsTheSoundAndStartsThePageAfresh) {
    const Place place("reload", MUSIC_DIR);
    // The session is the process's: a page finds out whether it is the first to create it.
    const Outcome outcome = place.page(R"js(
        let runs = 0;
        try { Spotify.Session.numFriends(); runs = Spotify.SessionConfig.proxyUsername.length; }
        catch (error) { console.log("first page"); }
        Spotify.SessionConfig.proxyUsername = "x".repeat(runs + 1);
        test.run(async () => {
            test.same(await test.login(), 0, "logged in on page " + (runs + 1));
            const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
            Spotify.Session.playerLoad(track);
            Spotify.Session.playerPlay(true);
            await test.next(Spotify.Sonolet, "TrackProgress", (at) => at > 0.5);
            if (runs < 9) {
                location.reload();
                await new Promise(() => {});
            }
        });
    )js");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(count(outcome.output, "first page"), 1U);
    for (int page = 1; page <= 10; ++page) {
        EXPECT_NE(outcome.output.find("logged in on page " + std::to_string(page) + "\n"),
                  std::string::npos)
            << outcome.output;
    }
    EXPECT_EQ(count(outcome.output, "not ok"), 0U);
}

std::string onlyLine(const std::string& text, const std::string& start) {
    const std::size_t at = text.find(start);
    return at == std::string::npos
               ? ""
               : text.substr(at + start.size(), text.find('\n', at) - at - start.size());
}

TEST(Secrets, AreInNoLogLineAndNoFileThatOthersCouldRead) {
    const Place place("log", MUSIC_DIR);
    const mode_t before = umask(0);
    const Outcome added = run(
        {"/bin/sh", "-c", "echo very-secret-words | " + std::string(bin) + "sonolet-user add ann"},
        place.variables());
    ASSERT_EQ(added.exitCode, 0) << added.errors;
    const Outcome outcome = place.page(R"js(
        Spotify.Session.addEventListener("LogMessage", (line) => console.log(line));
        test.run(async () => {
            Spotify.SessionConfig.proxyPassword = "proxy-secret-words";
            await test.login("listener", "wrong-secret-words");
            await test.login("nobody", "other-secret-words");
            const blob = test.next(Spotify.Session, "CredentialsBlobUpdated");
            test.same(await test.login("ann", "very-secret-words", true), 0, "logged in");
            const [text] = await blob;
            test.same(await test.login("ann", "", false, text), 0, "with the blob");
            const cover = Spotify.Track.create(LINKS["Fog Signal"]);
            const image = Spotify.SpImage.create((await test.loaded(cover)).album().cover(0));
            await test.next(image, "ImageLoaded");
            console.log("the blob is " + text);
        });
    )js",
                                       {"--log", "trace"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.errors.find("Session::handleLoggedInEvent"), std::string::npos);
    EXPECT_NE(outcome.output.find("Logged in as ann"), std::string::npos) << outcome.output;
    umask(before);
    const std::string blob = onlyLine(outcome.output, "the blob is ");
    ASSERT_GE(blob.size(), 32U) << outcome.output;
    EXPECT_EQ(count(outcome.output + outcome.errors, blob), 1U);
    std::string all = outcome.output + outcome.errors + added.output + added.errors;
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(place.state / "state")) {
        const auto others = fs::perms::group_all | fs::perms::others_all;
        // A browser's engine sets its own below a folder that nobody else may enter.
        if (entry.path().string().find("/browser/") == std::string::npos) {
            EXPECT_EQ(entry.status().permissions() & others, fs::perms::none) << entry.path();
        }
        const std::string bytes = entry.is_regular_file() ? contentsOf(entry.path()) : "";
        files += bytes.empty() ? 0 : 1;
        EXPECT_EQ(bytes.find(blob), std::string::npos) << entry.path();
        all += bytes;
    }
    EXPECT_GE(files, 3U) << "accounts, a catalogue, an image";
    EXPECT_EQ(all.find("secret-words"), std::string::npos);
}

}  // namespace
