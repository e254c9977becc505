#include "../fakes/FakeBackend.h"
#include "../fakes/FakeLog.h"
#include "../fakes/Faults.h"
#include "../fakes/Inspection.h"
#include "../fakes/Test.h"
#include "Allocations.h"
#include "Spotify.h"
#include "Visitor.h"

#include <malloc.h>

namespace {

// What is in use, at a moment.
struct Figures {
    Figures()
        : registered(jspp::__detail::inspection::size()), plugin(Allocations::held()),
          heap(mallinfo2().uordblks) {}

    std::size_t registered;
    Allocations plugin;
    std::size_t heap;  // the test's own share included; 0 where a sanitizer allocates
};

}  // namespace

// SONOLET_SOAK_DAYS of a player's life, 3 by default: a clock that is set forward by hand, polls at
// every tick, a page that is loaded anew each hour and uses everything, a sign-out each night or
// none at all.
class Soak : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Nightly, Soak, testing::Bool(), [](const auto& signsOut) {
    return std::string(signsOut.param ? "SignOut" : "NoSignOut");
});

TEST_P(Soak, WeeksOfAPlayersLifeTakeNoMoreThanItsSecondDay) {
    const char* const text = getenv("SONOLET_SOAK_DAYS");  // NOLINT(concurrency-mt-unsafe)
    const long days = text == nullptr ? 3 : strtol(text, nullptr, 10);
    FakeLog::get().reset();
    FakeLog::get().threshold = 5;
    FakeLog::get().keepsLines = false;
    {
        const InPlugin inside;
        g_spotify_instance_Spotify = orvo::shared_ptr<Spotify>(new Spotify);
    }
    FakeSpotify& spotify = FakeSpotify::get();
    FakeFactory& factory = FakeFactory::get();
    Samples samples;
    spotify.keepsCalls = false;
    {
        FakeHost host;
        jsplugin_obj* const page = host.open();
        Figures onTheSecond;
        for (long day = 1; day <= days; ++day) {
            for (int hour = 0; hour < 24; ++hour) {
                host.close(page);
                host.reopen(page);
                Visitor visitor(host, samples, page);
                visitor.visitAll();
                for (int minute = 0; minute < 60; minute += 15) {
                    visitor.play();
                    samples.raiseAll();
                    host.advance(15 * 60000);
                    visitor.visitArrived();
                    host.collectGarbage(page);
                    host.calls.clear();
                    host.lifecycle.clear();
                    factory.backends.erase(factory.backends.begin(),
                                           factory.backends.end() - factory.held());
                }
                ASSERT_EQ(visitor.failures, std::vector<std::string>());
                if (hour == 23 && GetParam()) {
                    visitor.logout();
                }
            }
            host.advance(1000);
            const Figures now;
            std::cout << "day " << day << ": " << now.registered << " registered, "
                      << now.plugin.blocks << " blocks of " << now.plugin.bytes << " bytes, heap "
                      << now.heap / 1024 << " KiB\n";
            ASSERT_GT(now.registered, 100U) << "the page found nothing to use";
            if (day == 2) {
                onTheSecond = now;
            } else if (day > 2) {
                ASSERT_EQ(now.registered, onTheSecond.registered);
                // Until a sign-out the factory remembers some wrappers that have died.
                const std::size_t dead = GetParam() ? 0 : 100;
                ASSERT_LE(now.plugin.blocks, onTheSecond.plugin.blocks + dead);
                ASSERT_LE(now.plugin.bytes, onTheSecond.plugin.bytes + dead * sizeof(void*));
                ASSERT_LE(now.heap, onTheSecond.heap + onTheSecond.heap / 100);
            }
        }
    }
    g_spotify_instance_Spotify.reset();
    samples.link->references = 0;  // of texts, kept on purpose
    spotify.reset();
    factory.reset();
    FakeLog::get().reset();
}
