// Each rule with somebody who breaks it: the layer's functions around a host, a plug-in, a library
// and a backend of the test's own. Findings have to name the rule and who is to blame, and nobody
// else may be blamed.

#include "validate/Rules.h"

#include "World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <thread>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

void onAnotherThread(const std::function<void()>& body) {
    std::thread(body).join();
}

struct Misdeed {
    int rule;
    const char* blame;
    std::function<void(World&)> commit;
};

// clang-format off
const Misdeed ofHostAndPlugin[] = {
    {101, "host", [](World& w) { jsplugin_value v = {}; given.getter(&w.object, "\xff", &v); }},
    {101, "plug-in", [](World& w) { slot.type = JSP_TYPE_STRING; slot.u.string = "\xc3"; w.get(); }},
    {102, "host", [](World& w) { w.table.gc_mark = nullptr; w.validator.check(&w.table); }},
    {103, "host", [](World& w) { onAnotherThread([&] { w.get(); }); }},
    {103, "plug-in", [](World& w) { onAnotherThread([&] { w.callPage(); }); }},
    {104, "host", [](World& w) { given.destructor(&w.object); w.get(); }},
    {104, "plug-in", [](World& w) {
        w.create(w.other); given.destructor(&w.other); slot.type = JSP_TYPE_NATIVE_OBJECT; slot.u.object = &w.other; w.get(); }},
    {105, "host", [](World& w) { given.destructor(&w.object); given.destructor(&w.object); }},
    {106, "host", [](World& w) { inside = [&] { given.destructor(&w.object); }; w.get(); }},
    {107, "plug-in", [](World& w) { code = 4; w.get(); }},
    {107, "plug-in", [](World& w) { code = 2; given.poll(&w.document); }},
    {108, "plug-in", [](World& w) { slot.type = 9; w.get(); }},
    {108, "plug-in", [](World& w) { code = JSP_GET_EXCEPTION; w.get(); }},
    {108, "host", [](World& w) {
        jsplugin_value v = {JSP_TYPE_STRING, {nullptr}}; code = JSP_PUT_OK; given.setter(&w.object, "x", &v); }},
    {109, "host", [](World& w) {
        w.createFunction(w.other); jsplugin_value v = {}; code = JSP_CALL_NO_VALUE; given.call(&w.object, &w.other, 2, nullptr, &v); }},
    {110, "host", [](World& w) { given.poll(&w.document); w.clock.time += 4000000000; given.poll(&w.document); }},
    {111, "host", [](World& w) { inside = [&] { given.poll(&w.document); }; given.poll(&w.document); }},
    {112, "host", [](World& w) { code = 0; given.poll(&w.document); given.poll(&w.document); }},
    {112, "host", [](World& w) { given.unload(&w.document); given.poll(&w.document); }},
    {113, "host", [](World& w) { given.unload(&w.document); given.unload(&w.document); }},
    {114, "plug-in", [](World& w) { given.unload(&w.document); w.create(w.other); }},
    {115, "host", [](World& w) { w.plugin->init(&w.document); }},
    {116, "plug-in", [](World& w) { w.host->gc_mark(&w.object); }},
};

const Misdeed ofPluginAndLibrary[] = {
    {201, "plug-in", [](World& w) { onAnotherThread([&] { w.name(w.track); }); }},
    {202, "plug-in", [](World& w) { w.name(nullptr); }},
    {203, "plug-in", [](World& w) { w.name(handle<sp_track>(0x99)); }},
    {203, "plug-in", [](World& w) { w.releaseSearch(); w.name(w.track); }},
    {203, "plug-in", [](World& w) { w.name(handle<sp_track>(0x30)); }},
    {204, "plug-in", [](World& w) { w.keep(); w.giveBack(); w.giveBack(); }},
    {205, "plug-in", [](World& w) { w.release(); }},
    {206, "plug-in", [](World& w) { w.releaseSearch(); w.release(); w.play(); }},
    {207, "plug-in", [](World& w) { w.process([&] {
        inside = [&] { w.process(nullptr); }; given.session->logged_in(w.session, SP_ERROR_OK); }); }},
    {208, "library", [](World& w) { given.session->logged_in(w.session, SP_ERROR_OK); }},
    {209, "library", [](World& w) { w.releaseSearch(); w.release(); given.session->end_of_track(w.session); }},
    {210, "library", [](World& w) { w.searched(); w.searched(); }},
    {210, "library", [](World& w) { w.releaseSearch(); w.searched(); }},
    {211, "library", [](World& w) { w.listen(); w.ignore(); w.process([&] {
        given.list->playlist_renamed(handle<sp_playlist>(0x40), given.userdata); }); }},
    {212, "plug-in", [](World& w) { w.listen(); w.ignore(); w.ignore(); }},
    {213, "library", [](World& w) { w.clock.time += 61000000000; w.process(nullptr); }},
    {214, "library", [](World& w) { w.play(); inside = [&] { w.deliver(); }; w.deliver(); }},
    {215, "library", [](World& w) { w.deliver(); }},
    {216, "plug-in", [](World& w) { w.play(); code = 101; w.deliver(100); }},
    {217, "library", [](World& w) { w.play(); w.deliver(100, 0); }},
    {218, "library", [](World& w) { LIBRARY(sp_track_popularity, [](sp_track*) { return 101; })(w.track); }},
    {219, "plug-in", [](World&) {
        sp_subscribers none = {}; LIBRARY(sp_playlist_subscribers_free, [](sp_subscribers*) { return SP_ERROR_OK; })(&none); }},
};

const Misdeed ofPluginAndBackend[] = {
    {301, "plug-in", [](World& w) { onAnotherThread([&] { w.backend->play(); }); }},
    {302, "plug-in", [](World& w) { w.releaseBackend(); w.backend->play(); }},
    {303, "backend", [](World& w) { w.releaseBackend(); w.ask(w.first); }},
    {304, "plug-in", [](World& w) { w.ask(w.first); w.write(w.first, 64); w.write(w.first, 64); }},
    {305, "plug-in", [](World& w) { w.ask(w.first); w.write(w.first, 65); }},
    {306, "plug-in", [](World& w) { w.ask(w.first); w.ask(w.second); w.write(w.second, 64); w.releaseBackend(); }},
    {307, "plug-in", [](World& w) {
        w.ask(w.first); w.ask(w.second); w.write(w.first, 1, UVABackend::WRITE_DATA_END_OF_STREAM); w.write(w.second, 1); }},
    {308, "backend", [](World& w) { NeedDataEvent none(0, 0); w.ask(none); delete[] none.data; }},
    {309, "plug-in", [](World& w) { w.backend->setSource("", nullptr, 0); }},
    {310, "backend", [](World& w) { realBackend.at = -1; double position = 0; w.backend->getPosition(position); }},
};
// clang-format on

std::set<int> broken;

void expectFound(const Misdeed& misdeed, const std::function<void(World&)>& prepare) {
    World world;
    prepare(world);
    EXPECT_THAT(world.findings, testing::IsEmpty()) << "before rule " << misdeed.rule;
    misdeed.commit(world);
    const std::string start = "rule " + std::to_string(misdeed.rule) + ", " + misdeed.blame + ": ";
    EXPECT_THAT(world.findings, testing::ElementsAre(StartsWith(start))) << start;
    broken.insert(misdeed.rule);
}

TEST(Rules, EachIsFoundBrokenAndWhoBrokeIt) {
    for (const Misdeed& misdeed : ofHostAndPlugin) {
        expectFound(misdeed, [](World& world) { world.open(); });
    }
    for (const Misdeed& misdeed : ofPluginAndLibrary) {
        expectFound(misdeed, [](World& world) {
            world.open();
            world.login();
        });
    }
    for (const Misdeed& misdeed : ofPluginAndBackend) {
        expectFound(misdeed, [](World& world) {
            world.open();
            world.request();
        });
    }
    for (const Rule& rule : rules) {
        EXPECT_EQ(broken.count(rule.number), 1U) << "nobody breaks rule " << rule.number;
    }
}

// What looks like one of these and is allowed.
TEST(Rules, AllowWhatTheHeadersAllow) {
    World world;
    world.open();
    world.login();
    // A busy page or machine makes no poll late.
    given.poll(&world.document);
    world.clock.time += 9000000000;
    world.clock.ran += 9000000000;
    given.poll(&world.document);
    world.clock.time += 9000000000;
    world.get();
    given.poll(&world.document);
    // A property that the plug-in does not know stays the page's.
    jsplugin_value value = {};
    code = JSP_GET_NO_PROPERTY;
    given.setter(&world.object, "x", &value);
    code = JSP_GET_VALUE;
    // Another object comes to the address of one that has gone.
    given.destructor(&world.object);
    world.create(world.object);
    world.get();
    // A track is lent anew, by who still lives.
    world.keep();
    world.releaseSearch();
    world.name(world.track);
    world.giveBack();
    world.search();
    EXPECT_EQ(LIBRARY(sp_search_track, [](sp_search*, int) { return handle<sp_track>(0x20); })(
                  handle<sp_search>(0x30), 0),
              world.track);
    world.name(world.track);
    EXPECT_THAT(world.findings, testing::IsEmpty());
}

TEST(Rules, FindingsTellTheLastEightCallsOnTheObject) {
    World world;
    world.open();
    jsplugin_value value = {};
    for (const char* const name : {"a", "b", "c", "d", "e", "f", "g"}) {
        given.getter(&world.object, name, &value);
    }
    for (int i = 0; i < 12; ++i) {
        code = 9;
        given.getter(&world.object, i == 0 ? "h" : "i", &value);
    }
    ASSERT_EQ(world.findings.size(), 10U) << "of each rule";
    EXPECT_THAT(world.findings[0], HasSubstr("answer 9 in getter, thread "));
    EXPECT_THAT(world.findings[0],
                testing::EndsWith("; before it: getter a, getter b, getter c, getter d, getter e, "
                                  "getter f, getter g"));
    EXPECT_EQ(world.validator.summary(), "12 findings: rule 107 plug-in 12");
}

}  // namespace
