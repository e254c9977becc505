#include "Place.h"
#include "WebDriver.h"

#include <fstream>

using testing::HasSubstr;
using testing::Not;

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

// In the environment, as long as this lives. REQUIRES: no other thread runs.
class Variable final {
public:
    Variable(const char* variable, const char* value) : name(variable) {
        setenv(name, value, 1);  // NOLINT(concurrency-mt-unsafe)
    }
    ~Variable() { unsetenv(name); }  // NOLINT(concurrency-mt-unsafe)
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* const name;
};

// A page script of the runner's as a web page: what it writes is in `lines`, and `isClosed` says
// when it has come to its end.
std::string webPage(const std::string& script) {
    return R"html(<!DOCTYPE html><script>
const lines = [];
let isClosed = false;
console.log = (line) => lines.push(line);
const gc = () => {};
close = () => { isClosed = true; };
onerror = onunhandledrejection = (event) => { lines.push(`not ok ${event.reason ?? event}`); close(); };
</script><script>)html" +
           script + "</script>";
}

// The engine collects twenty times a second meanwhile, and not as often as it can: beside busy
// processes each collection waits for its turn many times over.
TEST(Documents, RunThePagesOfTheRunner) {
    const Place place("suite");
    const Outcome links = run(
        {"/bin/bash", "-c",
         R"sh("$0/sonolet-index" | awk -F'\t' '{ printf "\"%s\": \"%s\", ", $4, $1 }')sh", BIN_DIR},
        {});
    const std::string before = "const LINKS = {" + links.output + "};\n" +
                               contentsOf(EXAMPLES_DIR "/../tests/pages/harness.js");
    const Variable collects("JSC_collectContinuously", "true");
    const Variable pauses("JSC_collectContinuouslyPeriodMS", "50");
    // No faster: beside the collector a busy machine would do nothing but polls.
    WebDriver page({"--audio", "null", "--speed", "5"});
    for (const std::string name : {"tests/pages/scripts/events", "tests/pages/scripts/playback",
                                   "pages/hello", "pages/play", "pages/search"}) {
        const bool checksItself = name.rfind("tests", 0) == 0;
        const std::string file = place.file("page.html");
        writeTo(file, webPage((checksItself ? before : "") +
                              contentsOf(EXAMPLES_DIR "/../" + name + ".js")));
        page.open("file://" + file);
        const std::string output = page.evaluate(
            "while (!isClosed) { await new Promise((later) => setTimeout(later, 10)); }"
            "return lines.join(' | ')");
        EXPECT_THAT(output, Not(HasSubstr("not ok"))) << name;
        EXPECT_THAT(output, Not(HasSubstr("threw"))) << name;
        if (checksItself) {
            EXPECT_THAT(output, HasSubstr("| 1..")) << name;
        }
    }
}

TEST(Documents, ConformAsInTheRunner) {
    const Place place("conformance");
    const Outcome made = run({BIN_DIR "/sonolet-playlist", "new", "A list"}, {});
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    WebDriver page({"--audio", "null", "--speed", "5"});
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
