#include "AudioTrack.h"
#include "Player.h"
#include "PluginTest.h"

#include <sched.h>

#include <array>
#include <atomic>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

using TellusClientNamespace::AudioTrack;
using TellusClientNamespace::Player;

namespace {

class ThreadsTest : public PluginTest {
protected:
    ThreadsTest() {
        createSession();
        spotify.add<sp_track>("track");
        log.threshold = 9;  // not a log's test: the lines of a million events are not kept
        log.keepsLines = false;
    }
};

// What a backend's own thread sends: requests while few are open, and every type in between.
std::function<UVAEvent*()> everyEvent(unsigned seed, bool withRelease) {
    return [random = std::minstd_rand(seed), withRelease]() mutable -> UVAEvent* {
        const auto type = static_cast<unsigned>(random() % 128);
        if (type == 0) {
            return new UVAEvent(withRelease ? 0 : 2);
        }
        if (type == 6) {
            return new VideoResizedEvent(1, 2, 3.0);
        }
        if ((type == 1 || type > 26) && FakeRequest::alive < 32) {
            return new FakeRequest(0, static_cast<unsigned>(random() % 9000));
        }
        std::this_thread::yield();
        return new UVAEvent(type == 1 ? 4 : type);
    };
}

}  // namespace

TEST_F(ThreadsTest, EventsOfManyThreadsArriveOnceEachInTheirOrder) {
    constexpr int events = 500;
    std::array<int, 3> next{};
    bool inOrder = true;
    session("addEventListener", {"LogMessage", host->function(page, [&](const Values& arguments) {
                                     const int value = std::stoi(arguments[0].string);
                                     int& expected = next[static_cast<std::size_t>(value % 3)];
                                     inOrder = expected++ == value / 3 && inOrder;
                                 })});
    std::array<std::thread, 3> library;
    std::atomic<int> running{3};
    for (int thread = 0; thread < 3; ++thread) {
        library[static_cast<std::size_t>(thread)] = std::thread([&, thread] {
            for (int i = 0; i < events; ++i) {
                spotify.callbacks().log_message(spotify.session(),
                                                std::to_string(i * 3 + thread).c_str());
            }
            --running;
        });
    }
    // Meanwhile other listeners and other documents come and go.
    jsplugin_obj* visitor = host->open();
    while (running != 0) {
        jsplugin_obj* seen = host->find(visitor, "Spotify.Session");
        jsplugin_obj* function = host->function(visitor);
        host->call(seen, "addEventListener", {"LogMessage", function});
        host->set(seen, "onLogMessage", function);
        tick();
        host->collectGarbage(page);
        host->call(seen, "removeEventListener", {"LogMessage", function});
        host->close(visitor);
        host->reopen(visitor);
        host->calls.clear();
    }
    for (std::thread& thread : library) {
        thread.join();
    }
    tick();
    EXPECT_TRUE(inOrder);
    EXPECT_EQ(next, (std::array<int, 3>{events, events, events}));
}

TEST_F(ThreadsTest, LoadingPlayingAndUnloadingUnderABackendAndALibraryOfTheirOwnThreads) {
    unsigned seed = 1;
    factory.whenRequested = [&](FakeBackend& granted) { granted.start(everyEvent(++seed, true)); };
    std::atomic<bool> done{false};
    std::atomic<int> delivered{0};
    std::thread library([&] {
        const std::vector<unsigned char> frames(8192, 'f');
        for (unsigned i = 1; !done; ++i) {
            delivered += spotify.deliver(frames.data(), 2048) != 0 ? 1 : 0;
            if (i % 50 == 0) {
                spotify.callbacks().end_of_track(spotify.session());
            }
            std::this_thread::yield();
        }
    });
    const auto load = [&] {
        EXPECT_EQ(session("playerLoad", {create("Track", "track")}), returned(0));
    };
    const auto advance = [&] {
        host->advance(250);
        host->calls.clear();
        spotify.calls.clear();
    };
    std::minstd_rand random(42);
    for (int i = 0; i < 400; ++i) {
        const unsigned what = static_cast<unsigned>(random() % 8);
        if (what < 2) {
            load();
        } else if (what == 2) {
            session("playerPlay", {i % 2 == 0});
        } else if (what == 3) {
            session("playerUnload");
        } else if (what == 4 && i % 16 == 0) {
            host->close(page);
            host->reopen(page);
        } else {
            advance();
        }
    }
    // The last track is heard before all ends.
    factory.whenRequested = [&](FakeBackend& granted) { granted.start(everyEvent(7, false)); };
    load();
    while (factory.current().writes.empty()) {
        advance();
    }
    EXPECT_GT(delivered, 0);
    host->close(page);  // under full traffic, too
    done = true;
    library.join();
    EXPECT_EQ(factory.held(), 0);
}

TEST_F(ThreadsTest, TheRootMayGoWhileTheLibrarysThreadStillTalks) {
    const sp_session_callbacks on = spotify.callbacks();
    sp_session* const from = spotify.session();
    std::atomic<bool> done{false};
    std::atomic<int> rounds{0};
    std::thread library([&] {
        const sp_audioformat format{SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, 2};
        const int frame = 0;
        while (!done) {
            on.log_message(from, "x");
            on.music_delivery(from, &format, &frame, 1);
            on.end_of_track(from);
            ++rounds;
        }
    });
    const auto pass = [&] {
        for (const int before = rounds; rounds < before + 20;) {
            std::this_thread::yield();
        }
    };
    session("playerLoad", {create("Track", "track")});
    pass();
    host.reset();
    g_spotify_instance_Spotify.reset();
    pass();
    host = std::make_unique<FakeHost>();
    renewRoot();
    page = host->open();
    pass();
    done = true;
    library.join();
}

TEST(PlayerThreads, NothingIsLostWhenTheEndOfTheTrackRacesWithServing) {
    FakeLog::get().threshold = 9;
    constexpr unsigned request = 1000;
    const std::vector<unsigned char> last(request + 4, 'l');
    // On one processor the library's turn comes between any two steps of serving.
    cpu_set_t before;
    cpu_set_t one;
    CPU_ZERO(&one);
    sched_getaffinity(0, sizeof before, &before);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
    for (int round = 0; round < 300; ++round) {
        AudioTrack track(10000);
        TellusClientNamespace::TrackSettingsStruct format{0, 44100, 2, 0};
        track.initialize(&format);
        Player player;
        player.playTrack(&track);
        FakeBackend& backend = FakeFactory::get().current();
        backend.request(0, request);  // more than the 48 bytes that wait from the start
        std::thread library([&] {
            track.write(last.data(), request / 4 + 1);
            track.setLoaded();
        });
        while (backend.writes.empty()) {
            player.handleEventQueue();
        }
        library.join();
        ASSERT_EQ(backend.writes[0].size, request);
        ASSERT_EQ(backend.writes[0].status, UVABackend::WRITE_DATA_OK)
            << "a backend that believes the end mark never hears the rest";
    }
    sched_setaffinity(0, sizeof before, &before);
    FakeFactory::get().reset();
    EXPECT_EQ(FakeRequest::alive, 0);
    FakeLog::get().reset();
}
