#include "AudioTrack.h"
#include "Player.h"
#include "PluginTest.h"

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
    constexpr int threads = 3;
    constexpr int events = 500;
    std::array<int, threads> next{};
    bool inOrder = true;
    session("addEventListener", {"LogMessage", host->function(page, [&](const auto& arguments) {
                                     const int value = std::stoi(arguments[0].string);
                                     inOrder = inOrder &&
                                               next[static_cast<std::size_t>(value / 10000)]++ ==
                                                   value % 10000;
                                 })});
    std::array<std::thread, threads> library;
    std::atomic<int> running{threads};
    for (int thread = 0; thread < threads; ++thread) {
        library[static_cast<std::size_t>(thread)] = std::thread([&, thread] {
            for (int i = 0; i < events; ++i) {
                spotify.callbacks().log_message(spotify.session(),
                                                std::to_string(thread * 10000 + i).c_str());
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
    EXPECT_EQ(next, (std::array<int, threads>{events, events, events}));
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
    std::minstd_rand random(42);
    int refused = 0;
    for (int i = 0; i < 400; ++i) {
        switch (random() % 8) {
        case 0:
        case 1:
            refused += session("playerLoad", {create("Track", "track")}) == returned(0) ? 0 : 1;
            break;
        case 2:
            session("playerPlay", {i % 2 == 0});
            break;
        case 3:
            session("playerUnload");
            break;
        case 4:
            if (i % 16 == 0) {
                host->close(page);
                host->reopen(page);
            }
            break;
        default:
            host->advance(250);
        }
        host->calls.clear();
        spotify.calls.clear();
    }
    // The last track is heard before all ends.
    factory.whenRequested = [&](FakeBackend& granted) { granted.start(everyEvent(7, false)); };
    EXPECT_EQ(session("playerLoad", {create("Track", "track")}), returned(0));
    while (factory.current().writes.empty()) {
        host->advance(250);
        host->calls.clear();
        spotify.calls.clear();
    }
    EXPECT_EQ(refused, 0);
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
    session("playerLoad", {create("Track", "track")});
    const auto pass = [&] {
        for (const int before = rounds; rounds < before + 20;) {
            std::this_thread::yield();
        }
    };
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
    FakeFactory& factory = FakeFactory::get();
    constexpr unsigned blocks = 3;
    constexpr unsigned total = 48 + blocks * 4096;
    constexpr unsigned request = 1000;
    for (int round = 0; round < 1000; ++round) {
        AudioTrack track(10000);
        Player player;
        player.playTrack(&track);
        FakeBackend& backend = factory.current();
        std::atomic<bool> starving{false};
        std::thread library([&] {
            TellusClientNamespace::TrackSettingsStruct format{0, 44100, 2, 0};
            track.initialize(&format);
            for (unsigned i = 0; i < blocks; ++i) {
                const std::vector<unsigned char> frames(4096, static_cast<unsigned char>(i + 1));
                // The last block and the end come together, while serving looks for more.
                while (i + 1 == blocks && !starving) {
                    std::this_thread::yield();
                }
                track.write(frames.data(), 1024);
            }
            track.setLoaded();
        });
        // As a backend does that believes the mark: nothing follows it.
        unsigned heard = 0;
        unsigned given = 0;
        bool ended = false;
        bool inOrder = true;
        while (!ended) {
            if (FakeRequest::alive == 0) {
                backend.request(0, request);
            }
            player.handleEventQueue();
            starving = heard + request >= total - 4096;
            for (; given < backend.writes.size() && !ended; ++given) {
                const FakeBackend::Write& write = backend.writes[given];
                for (unsigned i = 0; i < write.size; ++i, ++heard) {
                    inOrder = inOrder && (heard < 48 || write.bytes[i] == (heard - 48) / 4096 + 1);
                }
                ended = write.status == UVABackend::WRITE_DATA_END_OF_STREAM;
            }
        }
        library.join();
        EXPECT_TRUE(inOrder);
        EXPECT_GE(heard, total - request) << "sound before the end mark was lost";
    }
    factory.reset();
    EXPECT_EQ(FakeRequest::alive, 0);
    FakeLog::get().reset();
}
