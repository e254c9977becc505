#include "../fakes/FakeBackend.h"
#include "../fakes/FakeLog.h"
#include "../fakes/Faults.h"
#include "Allocations.h"
#include "Spotify.h"
#include "Visitor.h"
#include "jspp/_detail/object_manager.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <iostream>
#include <map>
#include <memory>
#include <string>

// Millions of allocations: of each, only the nearest callers are kept.
extern "C" __attribute__((visibility("default"), used)) const char*
__asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "malloc_context_size=3:quarantine_size_mb=32";
}

namespace {

// The whole sweep takes minutes; the test command takes each seventh point.
constexpr unsigned long usualStride = 7;

unsigned long setting(const char* name, unsigned long otherwise) {
    const char* const text = getenv(name);
    return text == nullptr ? otherwise : strtoul(text, nullptr, 10);
}

// Lets the nth of the plug-in's points fail, for every n in turn, while a page uses everything.
class FaultTest : public testing::Test {
protected:
    FaultTest() {
        FakeLog::get().reset();
        FakeLog::get().threshold = 5;
        FakeLog::get().keepsLines = false;
        spotify.keepsCalls = false;
    }
    void TearDown() override {
        Faults::get().stop();
        g_spotify_instance_Spotify.reset();
        spotify.reset();
        factory.reset();
        FakeLog::get().reset();
    }

    // The life of a plug-in: a page uses everything, is loaded again, and goes.
    void live(unsigned long failing) {
        Faults& faults = Faults::get();
        g_spotify_instance_Spotify.reset();
        makeRoot();
        {
            FakeHost host;
            faults.start(failing);
            jsplugin_obj* const page = host.open();
            {
                Visitor visitor(host, samples, page);
                visitor.visitAll();
                samples.raiseAll();
                host.advance(250);
                visitor.visitArrived();
                host.collectGarbage(page);
                visitor.play();
                failures = visitor.failures;
                visitor.logout();
                undefined = visitor.undefined;
            }
            host.close(page);
            host.reopen(page);
            Visitor(host, samples, page).connect();
            host.close(page);
            faults.stop();
            host.reopen(page);
            work(host, page);
        }
        g_spotify_instance_Spotify.reset();
        samples.link->references = 0;  // of texts, kept on purpose
        EXPECT_EQ(spotify.imbalance(), "");
        EXPECT_EQ(spotify.sessionsReleased, spotify.sessionsCreated);
        EXPECT_EQ(factory.held(), 0);
        EXPECT_EQ(FakeRequest::alive, 0);
        EXPECT_EQ(jspp::__detail::objects().size(), 0U);
        factory.backends.clear();
    }

    static void makeRoot() { g_spotify_instance_Spotify = orvo::shared_ptr<Spotify>(new Spotify); }

    // After all that, a page hears music.
    void work(FakeHost& host, jsplugin_obj* page) {
        jsplugin_obj* const session = host.find(page, "Spotify.Session");
        ASSERT_EQ(host.call(session, "create", {host.find(page, "Spotify.SessionConfig")}),
                  returned(session));
        host.calls.clear();
        jsplugin_obj* const heard = host.function(page);
        host.call(session, "addEventListener", {"LoggedIn", heard});
        {
            const InPlugin inside;
            spotify.callbacks().logged_in(spotify.session(), SP_ERROR_OK);
        }
        jsplugin_obj* const track =
            host.call(host.find(page, "Spotify.Track"), "create", {"spotify:track"}).value.object;
        ASSERT_EQ(host.call(track, "name"), returned(spotify.sampleText));
        ASSERT_EQ(host.call(session, "playerLoad", {track}), returned(0));
        const std::string frames(4096, 'f');
        ASSERT_EQ(spotify.deliver(frames.data(), 1024), 1024);
        factory.current().request(0, 4048);
        host.advance(250);
        ASSERT_EQ(host.callsOf(heard), 1);
        ASSERT_EQ(factory.current().writes.size(), 1U);
        ASSERT_EQ(factory.current().writes[0].size, 4048U);
        ASSERT_EQ(host.call(session, "logout"), nothing());
    }

    FakeSpotify& spotify = FakeSpotify::get();
    FakeFactory& factory = FakeFactory::get();
    Samples samples;
    std::vector<std::string> failures;
    std::vector<std::string> undefined;
};

}  // namespace

TEST_F(FaultTest, EveryRefusalIsAnsweredAndForgotten) {
    live(0);  // what is made once and kept: tables, lists, room for a message
    live(1);
    live(0);
    const unsigned long points = Faults::get().passed;
    const auto kinds = Faults::get().points;
    const Allocations held = Allocations::held();
    ASSERT_EQ(failures, std::vector<std::string>()) << "the page itself is at fault";
    ASSERT_EQ(undefined, std::vector<std::string>());
    EXPECT_GT(points, 2000U);

    const unsigned long only = setting("SONOLET_FAULT_POINT", 0);
    const unsigned long stride = setting("SONOLET_FAULT_STRIDE", usualStride);
    std::map<std::string, unsigned> messages;
    unsigned long swept = 0;
    for (unsigned long point = only == 0 ? 1 : only; point <= points; point += stride) {
        SCOPED_TRACE("SONOLET_FAULT_POINT=" + std::to_string(point));
        live(point);
        EXPECT_TRUE(Faults::get().struck);
        EXPECT_EQ(undefined, std::vector<std::string>());
        EXPECT_EQ(Allocations::held().blocks, held.blocks);
        for (const std::string& failure : failures) {
            ++messages[failure.substr(failure.find(": ") + 2)];
        }
        ++swept;
        if (HasFailure() || only != 0) {
            break;
        }
    }
    for (const auto& [message, count] : messages) {
        std::cout << count << " x " << message << '\n';
    }
    std::cout << swept << " of " << points << " points: " << kinds[Faults::Memory]
              << " allocations, " << kinds[Faults::Host] << " calls of the host, "
              << kinds[Faults::Library] << " of the library, " << kinds[Faults::Backend]
              << " of the backend\n";
}
