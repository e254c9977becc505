#include "AudioTrack.h"
#include "Player.h"
#include "PluginTest.h"

#include <sched.h>

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
std::function<UVAEvent*()> everyEvent(unsigned seed) {
    return [random = std::minstd_rand(seed)]() mutable -> UVAEvent* {
        if (random() % 5000 == 0) {
            return new UVAEvent(0);
        }
        const auto type = static_cast<unsigned>(1 + random() % 127);
        if (type == 6) {
            return new VideoResizedEvent(1, 2, 3.0);
        }
        if ((type == 1 || type > 26) && FakeRequest::alive < 32) {
            return new FakeRequest(0, 4 * static_cast<unsigned>(1 + random() % 2200));
        }
        std::this_thread::yield();
        return new UVAEvent(type == 1 ? 4 : type);
    };
}

}  // namespace

// For SONOLET_TORTURE_SECONDS, 3 by default.
TEST_F(ThreadsTest, NothingIsLostOrRepeatedWhilePagesLoadSeekAndUnloadUnderBusyThreads) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it
    const char* const text = getenv("SONOLET_TORTURE_SECONDS");
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::seconds(text == nullptr ? 3 : strtol(text, nullptr, 10));
    spotify.keepsCalls = false;
    unsigned seed = 1;
    factory.whenRequested = [&](FakeBackend& granted) { granted.start(everyEvent(++seed)); };

    // Frames and messages are numbered. The library offers a refused delivery again.
    unsigned nextFrame = 0;
    std::mutex delivering;
    std::atomic<bool> done{false};
    std::thread library([&] {
        std::minstd_rand random(7);
        std::vector<unsigned> frames;
        for (unsigned i = 0; !done; ++i) {
            // Multiples of 64 bytes: none ends where the ring does.
            frames.resize(16 * (1 + random() % 256));
            std::iota(frames.begin(), frames.end(), nextFrame);
            {
                const std::lock_guard<std::mutex> lock(delivering);
                const int count = static_cast<int>(frames.size());
                nextFrame += static_cast<unsigned>(spotify.deliver(frames.data(), count));
            }
            spotify.callbacks().log_message(spotify.session(), std::to_string(i).c_str());
            if (random() % 500 == 0) {
                spotify.callbacks().end_of_track(spotify.session());
            }
            std::this_thread::yield();
        }
    });
    unsigned expectedFrame = 0;
    spotify.duringPlayerLoad = [&] {
        const std::lock_guard<std::mutex> lock(delivering);
        expectedFrame = nextFrame;
    };
    std::size_t heard = 0;  // bytes of the current track
    unsigned long allHeard = 0;
    const auto listen = [&] {
        for (const FakeBackend::Write& write : factory.current().writes) {
            ASSERT_EQ((heard + write.size) % 4, 0U);
            for (unsigned at = 0; at < write.size; at += 4, heard += 4) {
                if (heard >= 48) {
                    unsigned frame = 0;
                    memcpy(&frame, &write.bytes[at], 4);
                    ASSERT_EQ(frame, expectedFrame++);
                } else if (heard == 0) {
                    ASSERT_EQ(memcmp(write.bytes.data(), "RIFF", 4), 0);
                }
            }
            allHeard += write.size;
        }
        factory.current().writes.clear();
    };
    const auto load = [&] {
        EXPECT_EQ(session("playerLoad", {create("Track", "track")}), returned(0));
        heard = 0;
    };

    // From its listener's adding on, a page hears every message.
    long lastMessage = -1;
    unsigned long messages = 0;
    const auto greet = [&] {
        lastMessage = -1;
        session("addEventListener",
                {"LogMessage", host->function(page, [&](const Values& arguments) {
                     const long message = std::stol(arguments[0].string);
                     EXPECT_TRUE(lastMessage == -1 || message == lastMessage + 1)
                         << message << " after " << lastMessage;
                     lastMessage = message;
                     ++messages;
                 })});
    };
    greet();
    load();
    std::minstd_rand random(42);
    int reloads = 0;
    for (int i = 0;
         (std::chrono::steady_clock::now() < end || allHeard == 0 || reloads == 0) && !HasFailure();
         ++i) {
        const unsigned what = static_cast<unsigned>(random() % 64);
        if (what == 0) {
            load();
        } else if (what == 1) {
            session("playerPlay", {i % 2 == 0});
        } else if (what == 2) {
            session("playerSeek", {1000});
        } else if (what == 3) {
            session("playerUnload");
        } else if (what == 4) {
            host->close(page);  // under full traffic
            host->reopen(page);
            ++reloads;
            greet();
            load();
        } else if (what < 12) {
            jsplugin_obj* const passing = host->function(page);
            session("addEventListener", {"LogMessage", passing});
            host->set(find("Spotify.Session"), "onLogMessage", passing);
            host->advance(100);
            host->collectGarbage(page);
            session("removeEventListener", {"LogMessage", passing});
        } else {
            host->advance(250);
            listen();
            host->calls.clear();
        }
        if (factory.backends.size() > 8) {
            factory.backends.erase(factory.backends.begin(), factory.backends.end() - 1);
        }
    }
    host->close(page);
    done = true;
    library.join();
    EXPECT_EQ(factory.held(), 0);
    std::cout << allHeard << " bytes and " << messages << " events heard, " << reloads
              << " reloads\n";
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
    createSession();
    int heard = 0;
    session("addEventListener",
            {"LogMessage", host->function(page, [&](const Values&) { ++heard; })});
    while (heard == 0) {
        host->advance(250);
    }
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
