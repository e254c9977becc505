#include "Place.h"
#include "WebDriver.h"

namespace {

class Frames : public testing::Test {
protected:
    Frames() {
        // "Serving HTTP on 127.0.0.1 port 43210 (http://127.0.0.1:43210/) ..."
        const std::string line = server.awaitLine(" port ");
        port = std::to_string(std::stoi(line.substr(line.find(" port ") + 6)));
        page.open(address("127.0.0.1", "/frames.html"));
    }
    // 127.0.0.1 and localhost are two origins.
    std::string address(const std::string& host, const std::string& path) const {
        return "http://" + host + ':' + port + path;
    }

    Place place{testing::UnitTest::GetInstance()->current_test_info()->name()};
    Process server{{"/usr/bin/python3", "-u", "-m", "http.server", "0", "--bind", "127.0.0.1",
                    "--directory", PAGES_DIR}};
    std::string port;
    WebDriver page{{"--plugin", PROBE, "--audio", "null"}};
};

TEST_F(Frames, OfTheSameOriginAloneSeeThePlugin) {
    const std::string foreign = address("localhost", "/frame.html");
    EXPECT_EQ(page.evaluate("add('own', { src: '/frame.html' });"
                            "add('inner', { srcdoc: FRAME });"
                            "add('foreign', { src: '" +
                            foreign +
                            "' });"
                            "add('sandboxed', { src: '/frame.html', sandbox: 'allow-scripts' });"
                            "add('data', { src: 'data:text/html,' + FRAME });"
                            "await until(() => told.length === 5);"
                            "return told.sort();"),
              R"(["data undefined","foreign undefined","inner object","own object",)"
              R"("sandboxed undefined"])");
    // Another origin in the same frame, and back; and as the page itself it is its own.
    EXPECT_EQ(page.evaluate("told.length = 0;"
                            "const frame = document.querySelector('iframe');"
                            "frame.src = '" +
                            foreign +
                            "'; await until(() => told.length === 1);"
                            "frame.src = '/frame.html'; await until(() => told.length === 2);"
                            "return told;"),
              R"(["own undefined","own object"])");
    page.open(foreign);
    EXPECT_EQ(page.evaluate("return typeof Probe"), R"("object")");
    // The plug-in itself does not admit this one.
    page.open(address("refused.localhost", "/frame.html"));
    EXPECT_EQ(page.evaluate("return [location.hostname, typeof Probe]"),
              R"(["refused.localhost","undefined"])");
}

TEST_F(Frames, AreDocumentsThatEndWithTheFrameAndWithThePage) {
    // One function of the plug-in is alive when all frames have gone: the page's own.
    EXPECT_EQ(page.evaluate("const { inits } = Probe; Probe.echo; const { live } = Probe;"
                            "const own = add('own', { src: '/frame.html' });"
                            "await until(() => told.length === 1);"
                            "const other = own.contentWindow.Probe;"
                            "const differs = other !== Probe; other.make();"
                            "const more = Probe.live > live;"
                            "own.remove();"
                            "return [differs, Probe.inits - inits, more, Probe.live - live];"),
              "[true,1,true,0]");
    // A blank frame has a document of its own, and the page that follows in it another.
    EXPECT_EQ(page.evaluate("const { inits, live } = Probe; told.length = 0;"
                            "const blank = add('blank', {});"
                            "blank.contentWindow.Probe.make();"
                            "blank.src = '/frame.html'; await until(() => told.length === 1);"
                            "blank.contentWindow.Probe.make();"
                            "blank.remove();"
                            "return [Probe.inits - inits, Probe.live - live];"),
              "[2,0]");
    const std::string live = page.evaluate("return Probe.live");
    for (int i = 0; i < 20; ++i) {
        page.reload();
        page.evaluate("Probe.make(); add('own', { src: '/frame.html' });"
                      "await until(() => told.length === 1);");
    }
    page.reload();
    EXPECT_EQ(page.evaluate("Probe.echo; return Probe.live"), live);
}

// As after an event of the page: what a listener promised runs before the next listener, and what
// it throws is the window's.
TEST_F(Frames, TreatListenersAsThoseOfTheirOwnEvents) {
    EXPECT_EQ(page.evaluate("const order = [];"
                            "addEventListener('error', (event) => {"
                            "    order.push(event.message); event.preventDefault(); });"
                            "Probe.listen(() => { order.push('first');"
                            "    Promise.resolve().then(() => order.push('promised'));"
                            "    throw new Error('thrown'); });"
                            "Probe.listen(() => order.push('second'));"
                            "Probe.startPoll(1);"
                            "await until(() => order.includes('second'));"
                            "return order;"),
              R"(["first","Error: thrown","promised","second"])");
}

}  // namespace
