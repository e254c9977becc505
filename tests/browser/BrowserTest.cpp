#include "Command.h"
#include "Place.h"
#include "WebDriver.h"

using testing::HasSubstr;
using testing::Not;

namespace {

const std::string browser = BIN_DIR "/sonolet-browser";
const std::string player = PAGES_DIR "/player.html";

bool hasSound(const std::string& wav) {
    return wav.find_first_not_of('\0', 44) != std::string::npos;
}

TEST(Browser, ShowsAFileWithModulesWhenItIsReadyAndUnloadsIt) {
    const Place place("screenshot");
    const Outcome outcome = run({browser, player, "--audio", "wav:" + place.file("out.wav"),
                                 "--screenshot", place.file("page.png"), "--size", "320x200"},
                                {});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.errors, HasSubstr("plays from file://"));
    EXPECT_THAT(outcome.errors, HasSubstr("unload: true"));
    EXPECT_THAT(run({"/usr/bin/file", place.file("page.png")}, {}).output,
                HasSubstr("PNG image data, 320 x 200"));
    EXPECT_TRUE(hasSound(contentsOf(place.file("out.wav"))));
}

TEST(Browser, TellsWhatIsWrong) {
    const Place place("wrong");
    const std::string page = place.file("page.html");
    const auto screenshotOf = [&](const std::string& html) {
        writeTo(page, html);
        return std::vector<std::string>{browser, page, "--screenshot", place.file("page.png")};
    };
    const auto with = [](std::vector<std::string> command, const std::string& option,
                         const std::string& value) {
        command.insert(command.end(), {option, value});
        return command;
    };
    const std::vector<std::string> good = screenshotOf("<p>good");
    const struct {
        std::vector<std::string> command;
        int exitCode;
        std::string message;
    } cases[] = {
        {{browser, place.file("none.html")}, 2, "none.html: no such file"},
        {{browser, PAGES_DIR}, 2, "is a folder without an index.html"},
        {with(good, "--size", "10x"), 2, "--size takes WIDTHxHEIGHT"},
        {with(good, "--plugin", place.file("none.so")), 2, "none.so: cannot open shared object"},
        {with(good, "--audio", "wav:" + place.file("none/out.wav")), 2, "none/out.wav: No such"},
        {with(good, "--screenshot", place.file("none/page.png")), 2,
         "none/page.png: No such file or directory"},
        {with(good, "--fault", "slow=x"), 2, "fault \"x\" at character 6: a time is a number"},
        {{browser, "http://127.0.0.1:65534/", "--screenshot", place.file("page.png")},
         1,
         "refused"},
        {{browser, "http://127.0.0.1:1/", "--screenshot", place.file("page.png")},
         1,
         "sonolet-browser: http://127.0.0.1:1/: "},
    };
    for (const auto& each : cases) {
        const Outcome outcome = run(each.command, {});
        EXPECT_EQ(outcome.exitCode, each.exitCode) << outcome.errors;
        EXPECT_THAT(outcome.errors, HasSubstr(each.message));
    }
    for (const std::string exception : {"null.member", "Promise.reject(new Error('late'))"}) {
        const Outcome outcome = run(screenshotOf("<script>" + exception + "</script>"), {});
        EXPECT_EQ(outcome.exitCode, 1) << exception << outcome.errors;
    }
    const std::vector<std::string> parts = {"x.js", "x.mjs", "x.css", "x.png", "x.html"};
    const Outcome lacking =
        run(screenshotOf("<link rel=stylesheet href=x.css><script src=x.js></script>"
                         "<script type=module>import './x.mjs'</script>"
                         "<img src=x.png><iframe src=x.html></iframe>"),
            {});
    EXPECT_EQ(lacking.exitCode, 0) << lacking.errors;
    for (const std::string& part : parts) {
        const std::string line = "sonolet-browser: file://" + place.file(part) + ": ";
        const std::size_t at = lacking.errors.find(line);
        ASSERT_NE(at, std::string::npos) << part << lacking.errors;
        EXPECT_THAT(lacking.errors.substr(at, lacking.errors.find('\n', at) - at),
                    HasSubstr("No such file or directory"));
        EXPECT_EQ(lacking.errors.find(line, at + 1), std::string::npos) << part;
    }
    const Outcome noDisplay = run(good, {{"DISPLAY", ""}});
    EXPECT_EQ(noDisplay.exitCode, 2);
    EXPECT_THAT(noDisplay.errors, HasSubstr("no display"));
}

// A plug-in that answers what there is not, in the page's process.
TEST(Browser, EndsWithAnotherCodeWhenARuleWasBroken) {
    const Place place("rules");
    const std::string page = place.file("page.html");
    writeTo(page, "<script>Probe.garbageType; Probe.brokenText; Probe.garbageType;</script>");
    const std::vector<std::string> command{browser, page,           "--plugin",
                                           PROBE,   "--screenshot", place.file("page.png")};
    EXPECT_EQ(run(command, {}).exitCode, 0);
    std::vector<std::string> checked = command;
    checked.emplace_back("--validate");
    const Outcome told = run(checked, {});
    EXPECT_EQ(told.exitCode, 3);
    EXPECT_THAT(told.errors, HasSubstr("libSonolet-layer: rule 108, plug-in: a value has a type"));
    EXPECT_THAT(told.errors,
                HasSubstr("sonolet-browser: 3 findings: rule 101 plug-in 1, rule 108 plug-in 2\n"));
    const std::string file = place.file("findings.txt");
    writeTo(file, "libSonolet-layer: rule 108, plug-in: of another day\n");
    const Outcome kept = run(checked, {{"SONOLET_FINDINGS", file}});
    EXPECT_EQ(kept.exitCode, 3);
    EXPECT_EQ(kept.errors, "sonolet-browser: 3 findings: rule 101 plug-in 1, rule 108 plug-in 2\n");
    EXPECT_THAT(contentsOf(file), HasSubstr("before it: getter garbageType, getter brokenText"));
}

TEST(Browser, SurvivesTheDeathOfThePagesProcess) {
    const Place place("crash");
    const bool inCog = WebDriver::inCog();
    std::vector<std::string> command = {
        BIN_DIR + std::string(inCog ? "/sonolet-cog" : "/sonolet-browser"), player, "--audio",
        "wav:" + place.file("out.wav")};
    if (inCog) {
        command.insert(command.end(),
                       {"--", "--platform=headless", "--webprocess-failure=restart"});
    }
    Process process(command);
    process.awaitLine("plays from");
    const std::vector<int> pages =
        childrenOf(process.id(), inCog ? "WPEWebProcess" : "WebKitWebProcess");
    ASSERT_EQ(pages.size(), 1U);
    kill(pages[0], SIGKILL);
    if (!inCog) {
        EXPECT_THAT(process.awaitLine("crashed"), HasSubstr("player.html"));
        process.signal(SIGUSR2);
    }
    process.awaitLine("plays from");
    process.signal(SIGINT);
    process.awaitLine("unload: true");
    EXPECT_EQ(process.wait(), inCog ? 0 : 1);
    EXPECT_TRUE(hasSound(contentsOf(place.file("out.wav"))));
    EXPECT_TRUE(inCog || hasSound(contentsOf(place.file("out-p2.wav"))));
}

TEST(Browser, ReloadsAHundredTimesWhilePlaying) {
    const Place place("reload");
    WebDriver page({"--audio", "null"});
    page.open("file://" + player);
    const std::string playing = "return until(() => state.position > 0)";
    ASSERT_EQ(page.evaluate(playing), "true");
    const std::vector<int> before = page.webProcesses();
    for (int i = 0; i < 100; ++i) {
        page.reload();
        // Most are left while they log in, some while they play.
        if (i % 20 == 0) {
            ASSERT_EQ(page.evaluate(playing), "true");
        }
    }
    EXPECT_EQ(page.evaluate(playing), "true");
    EXPECT_EQ(page.webProcesses(), before);
    page.evaluate("document.querySelector('#pause').click()");
    EXPECT_EQ(page.evaluate("return state.paused"), "true");
}

}  // namespace
