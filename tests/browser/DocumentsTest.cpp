#include "Place.h"
#include "WebDriver.h"

#include <fstream>

using testing::HasSubstr;

namespace {

// Kilobytes of a process that are neither a file's nor shared.
long anonymousOf(int process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        if (word == "RssAnon:") {
            long size = 0;
            status >> size;
            return size;
        }
    }
    return 0;
}

// By hand it passes in sonolet-browser too; under a driver the page does not come to its end there.
TEST(Documents, ConformInCogAsInTheRunner) {
    if (!WebDriver::inCog()) {
        GTEST_SKIP() << "of Cog alone";
    }
    const Place place("conformance");
    const Outcome made = run({BIN_DIR "/sonolet-playlist", "new", "A list"}, {});
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    WebDriver page({"--audio", "null"});
    page.open("file://" EXAMPLES_DIR "/conformance/index.html?run");
    const std::string summary =
        page.evaluate("while (document.documentElement.dataset.ready !== 'true') {"
                      "    await new Promise((later) => setTimeout(later, 100)); }"
                      "return document.querySelector('#summary').textContent + "
                      "    document.querySelector('tr.failed')?.textContent;");
    EXPECT_THAT(summary, HasSubstr(" passed, 0 failed, "));
    EXPECT_GE(std::stoi(summary.substr(1)), 600) << summary;
}

// What a page holds, and what holds it, goes with it.
TEST(Documents, LeaveNothingBehindAtAReload) {
    const Place place("memory");
    writeTo(place.file("page.html"), R"html(<!DOCTYPE html><script>
const megabytes = new Uint8Array(8 << 20).fill(1);
Spotify.Session.create(Spotify.SessionConfig);
Spotify.Session.addEventListener("LoggedIn", () => megabytes);
Spotify.Session.onMetaDataUpdated = () => megabytes;
</script>)html");
    WebDriver page({"--audio", "null"});
    page.open("file://" + place.file("page.html"));
    const auto reload = [&](int times) {
        for (int i = 0; i < times; ++i) {
            page.reload();
        }
        const std::vector<int> processes = page.webProcesses();
        EXPECT_EQ(processes.size(), 1U);
        return processes.empty() ? 0 : anonymousOf(processes[0]);
    };
    const long before = reload(10);
    EXPECT_GT(before, 0);
    EXPECT_LT(reload(30) - before, 120 * 1024);
}

}  // namespace
