#include "AudioOptions.h"
#include "Player.h"
#include "TestStream.h"

#include "uva.h"

#include <gst/gst.h>
#include <sys/resource.h>

namespace {

class MediaLifetime : public MediaTest {};

TEST_F(MediaLifetime, ReleaseMidPlayLeavesAValidFileAndEndsTheEvents) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 20});
    const Bytes samples = noise(10 * secondOfStereo);
    Player player(stream(samples));
    ASSERT_TRUE(player.start());
    ASSERT_TRUE(player.answerUntilAsked(120));
    ASSERT_TRUE(player.awaitRequests(3));
    const auto before = std::chrono::steady_clock::now();
    const double position = player.position();
    player.release();
    const std::chrono::duration<double> releasing = std::chrono::steady_clock::now() - before;

    const std::size_t asked = player.asked();
    const Bytes played = readWav(wavPath).samples;
    const double seconds = static_cast<double>(played.size()) / secondOfStereo;
    EXPECT_TRUE(std::equal(played.begin(), played.end(), samples.begin()));
    EXPECT_GT(seconds, position - 0.2);
    EXPECT_LT(seconds, position + releasing.count() * 20 + 0.2);
    // Requests may still come back, or be freed by the client as the rest is. The sanitizer counts:
    // every block and event is freed once, by one side or the other.
    player.give(player.pop(), 4096, UVABackend::WRITE_DATA_OK);
    player.give(player.pop(), 0, UVABackend::WRITE_DATA_END_OF_STREAM);
    EXPECT_TRUE(player.staysQuiet());
    EXPECT_EQ(player.asked(), asked);
}

TEST_F(MediaLifetime, TheClientMayReleaseInsideItsHandler) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 50});
    for (const unsigned type : {needData, streamUnderrun, playbackFinished, decodeError}) {
        SCOPED_TRACE(type);
        Player player(type == decodeError ? noise(100000) : stream(noise(secondOfStereo)));
        unsigned calls = 0;
        player.onEvent = [&](unsigned event) {
            if (event == type && ++calls == (type == needData ? 40 : 1)) {
                player.release();
            }
        };
        ASSERT_TRUE(player.start());
        if (type == needData) {
            ASSERT_TRUE(player.awaitRequests(40));
        } else {
            // Without its end, the stream starves.
            ASSERT_TRUE(player.answerUntil(type, type != streamUnderrun));
        }
        EXPECT_TRUE(player.staysQuiet());
    }
}

TEST_F(MediaLifetime, ReleaseWaitsForAnEventUnderWay) {
    setAudioOptions({AudioOptions::Sink::Null, "", 20});
    Player player;
    std::promise<void> inside;
    std::promise<void> mayLeave;
    // Until the release has begun, others may follow the first.
    player.onEvent = [&, first = true](unsigned) mutable {
        if (std::exchange(first, false)) {
            inside.set_value();
            mayLeave.get_future().wait();
        }
    };
    ASSERT_EQ(player.open(), 1);
    ASSERT_EQ(inside.get_future().wait_for(std::chrono::minutes(10)), std::future_status::ready);
    const auto released = std::async(std::launch::async, [&] { player.release(); });
    EXPECT_EQ(released.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    mayLeave.set_value();
    released.wait();
    EXPECT_TRUE(player.staysQuiet());
    EXPECT_TRUE(player.notices.empty());
}

TEST_F(MediaLifetime, HundredsOfTracksInQuickTurns) {
    setAudioOptions({AudioOptions::Sink::Null, "", 100});
    const Bytes track = stream(noise(secondOfStereo));
    for (int i = 0; i < 300; ++i) {
        Player player(track);
        ASSERT_TRUE(i % 2 == 0 ? player.start() : player.open() == 1);
        ASSERT_TRUE(player.awaitRequests(1 + static_cast<std::size_t>(i) % 64));
        if (i % 3 != 0) {
            player.answer(i % 5 == 0);
        }
        if (i % 7 == 0) {
            player->pause(0);
        }
    }
    Player player(track);
    EXPECT_TRUE(player.playOut());
}

TEST_F(MediaLifetime, StreamsThatFollowShareTheFileAndOnesBesideGetTheirOwn) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 50});
    const Bytes samples = noise(60000);
    {
        Player first(stream(Bytes(samples.begin(), samples.begin() + 20000)));
        ASSERT_TRUE(first.playOut());
    }
    {
        Player second(stream(Bytes(samples.begin() + 20000, samples.end())));
        Player beside(stream(samples));
        ASSERT_TRUE(second.start());
        ASSERT_TRUE(beside.start());
        ASSERT_TRUE(second.answerUntil(playbackFinished));
        ASSERT_TRUE(beside.answerUntil(playbackFinished));
    }
    EXPECT_TRUE(readWav(wavPath).samples == samples);
    EXPECT_TRUE(readWav(besidePath).samples == samples);

    // What comes in another format is turned into the file's: half a second of silence.
    Player last(stream(Bytes(22050), 22050, 1));
    ASSERT_TRUE(last.playOut());
    const WavContent wav = readWav(wavPath);
    EXPECT_EQ(wav.header.channels, 2U);
    EXPECT_EQ(wav.header.rate, 44100U);
    EXPECT_NEAR(static_cast<double>(wav.samples.size() - samples.size()), 0.5 * secondOfStereo,
                200);
}

TEST_F(MediaLifetime, AnOutputThatFailsAsksForTheRelease) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 50});
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit small = before;
    small.rlim_cur = 50000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    {
        Player player(stream(noise(2 * secondOfStereo)));
        EXPECT_TRUE(player.start());
        EXPECT_TRUE(player.answerUntil(releaseAsked));
        EXPECT_EQ(player.notices, (std::vector<unsigned>{releaseAsked}));
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);
    EXPECT_EQ(readWav(wavPath).samples.size(), 50000U - 44);
}

TEST_F(MediaLifetime, WhatCannotPlayIsRefusedAndNamed) {
    for (const AudioOptions& options : {AudioOptions{AudioOptions::Sink::Wav, "/nowhere/x.wav", 1},
                                        AudioOptions{AudioOptions::Sink::Wav, "", 1},
                                        AudioOptions{AudioOptions::Sink::Null, "", 0}}) {
        EXPECT_THROW(setAudioOptions(options), std::runtime_error);
    }
    setAudioOptions({AudioOptions::Sink::Null, "", 20});

    Player player;
    EXPECT_EQ(UVAFactory::requestBackend(static_cast<UVABackend::UVABackendType>(2), &player),
              nullptr);
    UVABackend::SourceDescription description{2, {}};
    UVABackend::SourceDescription* list[] = {&description, nullptr};
    EXPECT_EQ(player->setSource("http://somewhere/", list, 0), 0);
    EXPECT_EQ(player->setSource("", nullptr, 0), 0);

    ASSERT_TRUE(gst_init_check(nullptr, nullptr, nullptr));
    GstRegistry* const elements = gst_registry_get();
    GstPluginFeature* const parser = gst_registry_lookup_feature(elements, "wavparse");
    ASSERT_NE(parser, nullptr);
    gst_registry_remove_feature(elements, parser);
    testing::internal::CaptureStderr();
    EXPECT_EQ(player.open(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "audio: element wavparse is missing (package gstreamer1.0-plugins-good)\n");
    gst_registry_add_feature(elements, parser);
    EXPECT_EQ(player.asked(), 0U);

    EXPECT_EQ(player.open(), 1);
    EXPECT_EQ(player.open(), 0);
}

}  // namespace
