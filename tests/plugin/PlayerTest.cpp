#include "Player.h"

#include "../fakes/FakeBackend.h"
#include "../fakes/FakeLog.h"
#include "../fakes/Test.h"
#include "AudioTrack.h"

#include <future>

using TellusClientNamespace::AudioTrack;
using TellusClientNamespace::Player;

namespace {

class PlayerTest : public testing::Test {
protected:
    PlayerTest() {
        FakeLog::get().reset();
        TellusClientNamespace::TrackSettingsStruct format{0, 44100, 2, 0};
        track.initialize(&format);  // 48 bytes wait from the start
    }
    void TearDown() override {
        player.reset();
        EXPECT_EQ(FakeRequest::alive, 0);
        EXPECT_EQ(factory.held(), 0);
        factory.reset();
    }

    FakeBackend& play() {
        player->playTrack(&track);
        return factory.current();
    }
    void expectRefusal() {
        try {
            player->playTrack(&track);
            ADD_FAILURE() << "played";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Could not initialize backend");
        }
    }
    void deliver(unsigned bytes) {
        const std::vector<unsigned char> frames(bytes, 'f');
        ASSERT_EQ(track.write(frames.data(), bytes / 4), bytes);
    }
    // Serves the requests; "48/100:0 ..." for all answers so far: delivered, asked for and status.
    std::string served(const FakeBackend& backend) {
        player->handleEventQueue();
        std::string text;
        for (const FakeBackend::Write& write : backend.writes) {
            text += std::to_string(write.size) + '/' + std::to_string(write.asked) + ':' +
                    std::to_string(write.status) + ' ';
        }
        return text;
    }

    FakeFactory& factory = FakeFactory::get();
    AudioTrack track{10000};
    std::unique_ptr<Player> player = std::make_unique<Player>();
};

}  // namespace

TEST_F(PlayerTest, WithoutATrackEveryOperationIsHarmless) {
    player->pause();
    player->resume();
    player->handleEventQueue();
    player->releaseTrack();
    EXPECT_EQ(player->getPosition(), 0.0);
    EXPECT_EQ(player->getDRMBackend("any"), nullptr);
    EXPECT_TRUE(player->handleEvent(new FakeRequest(0, 4096)));
    EXPECT_EQ(FakeRequest::alive, 0) << "a request without a queue was not freed";
}

TEST_F(PlayerTest, RequestsWaitInOrderUntilMoreIsThereThanTheyAskFor) {
    FakeBackend& backend = play();
    backend.request(0, 48);
    backend.request(48, 8);
    backend.request(56, 1);
    EXPECT_EQ(served(backend), "") << "the small request overtook";
    deliver(8);
    EXPECT_EQ(served(backend), "48/48:0 ");
    deliver(4);
    EXPECT_EQ(served(backend), "48/48:0 8/8:0 1/1:0 ");
    EXPECT_EQ(backend.writes[1].bytes, std::vector<unsigned char>(8, 'f'));
    EXPECT_EQ(backend.writes[1].offset, 48U);
}

TEST_F(PlayerTest, AfterTheEndEveryRequestIsAnsweredWithTheEndMarkedFromTheFirstThatFails) {
    FakeBackend& backend = play();
    deliver(400);
    for (const unsigned size : {100U, 1000U, 100U, 1000U}) {
        backend.request(0, size);
    }
    EXPECT_EQ(served(backend), "100/100:0 ");
    track.setLoaded();
    EXPECT_EQ(served(backend), "100/100:0 0/1000:1 100/100:1 0/1000:1 ");
    backend.request(0, 100);
    EXPECT_EQ(served(backend), "100/100:0 0/1000:1 100/100:1 0/1000:1 100/100:0 ")
        << "the mark belongs to one pass";
}

TEST_F(PlayerTest, ARefusedBackendOrSourceIsToldAndTheNextTrackStartsAfresh) {
    factory.grants = false;
    expectRefusal();
    player->handleEventQueue();
    player->pause();
    factory.grants = true;
    factory.sourceResult = 0;
    expectRefusal();
    EXPECT_EQ(factory.held(), 1) << "the backend stays held until the release";
    factory.sourceResult = 1;
    EXPECT_EQ(play().log, "source(\"\", 2, end, 0) play ");
    EXPECT_EQ(factory.held(), 1);
}

TEST_F(PlayerTest, RequestsAndTheReleaseMayComeBeforeTheBackendIsHandedOver) {
    factory.whenRequested = [](FakeBackend& granted) { granted.request(0, 40); };
    FakeBackend& backend = play();
    EXPECT_EQ(served(backend), "40/40:0 ");
    backend.send(0);
    EXPECT_TRUE(backend.released());
    player->handleEventQueue();
    player->resume();
    factory.whenRequested = [](FakeBackend& granted) {
        granted.request(0, 16);
        granted.send(0);
    };
    play();
    EXPECT_EQ(FakeRequest::alive, 0);
    EXPECT_EQ(factory.held(), 0) << "a backend that asked for its release was kept";
}

TEST_F(PlayerTest, EventsMayComeFromTheBackendsThreadUntilTheReleaseReturns) {
    // A lock held over the release would never be given to the thread that is waited for.
    factory.whenReleased = [](FakeBackend& leaving) {
        std::thread([&] {
            leaving.request(0, 16);
            leaving.send(0);
        }).join();
    };
    play();
    player->releaseTrack();
    EXPECT_EQ(FakeRequest::alive, 0) << "a late request was kept";
}

TEST_F(PlayerTest, TheNextTrackWaitsForAReleaseThatAnotherThreadIsIn) {
    std::promise<void> inside;
    std::promise<void> asked;
    FakeBackend& first = play();
    factory.whenReleased = [&](FakeBackend& leaving) {
        inside.set_value();
        // Long enough for a track that does not wait; the one that does never ends it.
        EXPECT_EQ(asked.get_future().wait_for(std::chrono::milliseconds(200)),
                  std::future_status::timeout)
            << "a backend was asked for while another was on its way out";
        leaving.request(0, 16);
    };
    factory.whenRequested = [&](FakeBackend&) { asked.set_value(); };
    std::thread backend([&] { first.send(0); });
    inside.get_future().wait();
    const FakeBackend& second = play();
    EXPECT_EQ(served(second), "") << "a late request of the first met the second's queue";
    backend.join();
    factory.whenReleased = nullptr;
}

TEST_F(PlayerTest, EveryOtherEventIsOnlyTold) {
    FakeBackend& backend = play();
    backend.request(0, 4096);
    FakeLog::get().reset();
    for (unsigned type = 2; type <= 25; ++type) {
        VideoResizedEvent resized(640, 480, 1.5);
        UVAEvent plain(type);
        EXPECT_TRUE(player->handleEvent(type == 6 ? &resized : &plain));
    }
    EXPECT_EQ(FakeLog::get().count(2, "Player::handleEventUnhandled event received"), 4);
    EXPECT_EQ(FakeLog::get().count(2, "Player::handleEventEvent: VideoResized to 640x480 PAR=1.5"),
              1);
    EXPECT_EQ(FakeRequest::alive, 1) << "an informational event touched the queue";
    EXPECT_FALSE(backend.released());
    player.reset();
    EXPECT_EQ(FakeLog::get().lines.back().text,
              "Player::destroyEventQueueRelease unhandled the events in the QUEUE");
}
