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
    constexpr int events = 500;
    std::array<int, 3> next{};
    bool inOrder = true;
    session("addEventListener", {"LogMessage", host->function(page, [&](const Values& arguments) {
                                     const int value = std::stoi(arguments[0].string);
                                     int& expected = next[static_cast<std::size_t>(value % 3)];
                                     inOrder = expected++ == value / 3 && inOrder;
                                 })});
    std::vector<std::thread> library;
    std::atomic<int> running{3};
    for (int thread = 0; thread < 3; ++thread) {
        library.emplace_back([&, thread] {
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
    constexpr unsigned block = 4096;
    constexpr unsigned total = 48 + 3 * block;
    constexpr unsigned request = 1000;
    for (int round = 0; round < 1000; ++round) {
        AudioTrack track(10000);
        Player player;
        player.playTrack(&track);
        FakeBackend& backend = FakeFactory::get().current();
        std::atomic<bool> starving{false};
        std::thread library([&] {
            TellusClientNamespace::TrackSettingsStruct format{0, 44100, 2, 0};
            track.initialize(&format);
            for (unsigned char value = 1; value <= 3; ++value) {
                const std::vector<unsigned char> frames(block, value);
                // The last block and the end come together, while serving looks for more.
                while (value == 3 && !starving) {
                    std::this_thread::yield();
                }
                track.write(frames.data(), block / 4);
            }
            track.setLoaded();
        });
        // As a backend does that believes the mark: nothing follows it.
        std::vector<unsigned char> heard;
        std::size_t given = 0;
        for (bool ended = false; !ended;) {
            if (FakeRequest::alive == 0) {
                backend.request(0, request);
            }
            player.handleEventQueue();
            for (; given < backend.writes.size() && !ended; ++given) {
                const FakeBackend::Write& write = backend.writes[given];
                heard.insert(heard.end(), write.bytes.begin(), write.bytes.end());
                ended = write.status == UVABackend::WRITE_DATA_END_OF_STREAM;
            }
            starving = heard.size() + request >= total - block;
        }
        library.join();
        ASSERT_GE(heard.size(), total - request) << "sound before the end mark was lost";
        for (std::size_t i = 48; i < heard.size(); ++i) {
            ASSERT_EQ(heard[i], (i - 48) / block + 1);
        }
    }
    FakeFactory::get().reset();
    EXPECT_EQ(FakeRequest::alive, 0);
    FakeLog::get().reset();
}
