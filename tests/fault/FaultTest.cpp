#include "../fakes/FakeBackend.h"
#include "../fakes/FakeLog.h"
#include "../fakes/Faults.h"
#include "../fakes/Inspection.h"
#include "../fakes/Test.h"
#include "Allocations.h"
#include "Spotify.h"
#include "Visitor.h"

#include <sys/mman.h>

// Millions of allocations: of each, only the nearest callers are kept.
extern "C" __attribute__((visibility("default"), used)) const char*
__asan_default_options() {  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
    return "malloc_context_size=3:quarantine_size_mb=32";
}

namespace {

// The whole sweep takes minutes; the test command takes each seventh point.
constexpr unsigned long usualStride = 7;

unsigned long setting(const char* name, unsigned long otherwise) {
    const char* const text = getenv(name);  // NOLINT(concurrency-mt-unsafe)
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
        dropRoot();
        spotify.reset();
        factory.reset();
        FakeLog::get().reset();
    }

    // The life of a plug-in: a page uses everything, is loaded again, and goes.
    void live(unsigned long failing) {
        Faults& faults = Faults::get();
        dropRoot();
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
        dropRoot();
        samples.link->references = 0;  // of texts, kept on purpose
        EXPECT_EQ(spotify.imbalance(), "");
        EXPECT_EQ(spotify.sessionsReleased, spotify.sessionsCreated);
        EXPECT_EQ(factory.held(), 0);
        EXPECT_EQ(FakeRequest::alive, 0);
        EXPECT_EQ(jspp::__detail::inspection::size(), 0U);
        factory.backends.clear();
    }

    // False when something failed in there, which standard output then tells.
    template <class Body>
    static bool inChild(const Body& body) {
        std::cout.flush();
        const pid_t child = fork();
        if (child == 0) {
            body();
            std::cout.flush();
            fflush(stdout);
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        return waitpid(child, &status, 0) == child && status == 0;
    }

    static void makeRoot() {
        const InPlugin inside;
        g_spotify_instance_Spotify = orvo::shared_ptr<Spotify>(new Spotify);
    }
    static void dropRoot() {
        const InPlugin inside;
        g_spotify_instance_Spotify.reset();
    }

    // After all that, a page hears music.
    void work(FakeHost& host, jsplugin_obj* page) {
        // The last message to a caller without an object is kept: so each life has one.
        host.refusesObjects = true;
        ASSERT_EQ(host.global(page, "Spotify").code, JSP_GET_EXCEPTION);
        host.refusesObjects = false;
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

// Each point in a process of its own, in which the plug-in does everything for the first time.
TEST_F(FaultTest, EveryRefusalIsAnsweredAndForgotten) {
    struct Counts {
        Faults faults;
        std::size_t blocks;
    };
    auto* const counted = static_cast<Counts*>(
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(counted, MAP_FAILED);
    ASSERT_TRUE(inChild([&] {
        live(0);
        counted->faults = Faults::get();
        ASSERT_EQ(failures, std::vector<std::string>()) << "the page itself is at fault";
        ASSERT_EQ(undefined, std::vector<std::string>());
        live(0);
        counted->blocks = Allocations::held().blocks;
    }));
    const unsigned long points = counted->faults.passed;
    EXPECT_GT(points, 2000U);

    const unsigned long only = setting("SONOLET_FAULT_POINT", 0);
    const unsigned long stride = setting("SONOLET_FAULT_STRIDE", usualStride);
    unsigned long swept = 0;
    for (unsigned long point = only == 0 ? 1 : only; point <= points; point += stride) {
        SCOPED_TRACE("SONOLET_FAULT_POINT=" + std::to_string(point));
        ++swept;
        ASSERT_TRUE(inChild([&] {
            live(point);
            EXPECT_TRUE(Faults::get().struck);
            EXPECT_EQ(undefined, std::vector<std::string>());
            live(0);
            EXPECT_EQ(failures, std::vector<std::string>()) << "later";
            EXPECT_EQ(Allocations::held().blocks, counted->blocks);
        }));
        if (only != 0) {
            break;
        }
    }
    const auto& kinds = counted->faults.points;
    std::cout << swept << " of " << points << " points: " << kinds[Faults::Memory]
              << " allocations, " << kinds[Faults::Host] << " calls of the host, "
              << kinds[Faults::Library] << " of the library, " << kinds[Faults::Backend]
              << " of the backend\n";
}
