#include "Place.h"
#include "Site.h"
#include "WebDriver.h"

#include <gtest/gtest.h>

namespace {

// A frame tells its name and what it sees of the plug-in.
constexpr const char* frame = "<script>parent.postMessage(`${name} ${typeof Probe}`, '*')</script>";

// Makes frames and hears what they tell.
constexpr const char* mainPage = R"html(<!DOCTYPE html>
<script>
    const FRAME = "<script>parent.postMessage(`${name} ${typeof Probe}`, '*')<\/script>";
    const told = [];
    addEventListener('message', (event) => told.push(event.data));
    const add = (name, attributes) => {
        const element = document.createElement('iframe');
        Object.assign(element, { name, ...attributes });
        document.body.append(element);
        return element;
    };
    const until = (condition) => new Promise((resolve) => {
        const look = () => (condition() ? resolve(true) : setTimeout(look, 5));
        look();
    });
</script>
<body>
)html";

class Frames : public testing::Test {
protected:
    Frames() { page.open(site.address("127.0.0.1", "/")); }

    Place place{testing::UnitTest::GetInstance()->current_test_info()->name()};
    Site site{{{"/", mainPage}, {"/frame", frame}}};
    WebDriver page{{"--plugin", PROBE, "--audio", "null"}};
};

TEST_F(Frames, OfTheSameOriginAloneSeeThePlugin) {
    const std::string foreign = site.address("localhost", "/frame");
    EXPECT_EQ(page.evaluate("add('own', { src: '/frame' });"
                            "add('inner', { srcdoc: FRAME });"
                            "add('foreign', { src: '" +
                            foreign +
                            "' });"
                            "add('sandboxed', { src: '/frame', sandbox: 'allow-scripts' });"
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
                            "frame.src = '/frame'; await until(() => told.length === 2);"
                            "return told;"),
              R"(["own undefined","own object"])");
    page.open(foreign);
    EXPECT_EQ(page.evaluate("return typeof Probe"), R"("object")");
    // The plug-in itself does not admit this one.
    page.open(site.address("refused.localhost", "/frame"));
    EXPECT_EQ(page.evaluate("return [location.hostname, typeof Probe]"),
              R"(["refused.localhost","undefined"])");
}

TEST_F(Frames, AreDocumentsThatEndWithTheFrameAndWithThePage) {
    // One function of the plug-in is alive when all frames have gone: the page's own.
    EXPECT_EQ(page.evaluate("const { inits } = Probe; Probe.echo; const { live } = Probe;"
                            "const own = add('own', { src: '/frame' });"
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
                            "blank.src = '/frame'; await until(() => told.length === 1);"
                            "blank.contentWindow.Probe.make();"
                            "blank.remove();"
                            "return [Probe.inits - inits, Probe.live - live];"),
              "[2,0]");
    const std::string live = page.evaluate("return Probe.live");
    for (int i = 0; i < 20; ++i) {
        page.reload();
        page.evaluate("Probe.make(); add('own', { src: '/frame' });"
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
