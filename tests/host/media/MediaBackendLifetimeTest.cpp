#include "AudioOptions.h"
#include "ListenerClient.h"
#include "TestStream.h"

#include "uva.h"

#include <gst/gst.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

class MediaLifetime : public MediaTest {};

// Plays until the backend has asked for `count` requests in all.
void playUntilAsked(std::size_t count, ListenerClient& client, Backend& backend, Feed& feed) {
    while (client.offsetCount() < count) {
        ASSERT_TRUE(client.awaitRequests(1));
        client.answer(*backend, feed);
    }
}

TEST_F(MediaLifetime, ReleaseMidPlayLeavesAValidFileAndEndsTheEvents) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    const Bytes samples = noise(10 * secondOfStereo);
    Feed feed{stream(44100, 2, samples)};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    playUntilAsked(120, client, backend, feed);
    const double position = backend.position();
    backend.release();

    const std::size_t events = client.eventCountNow();
    const Bytes played = readWav(wavPath()).samples;
    EXPECT_TRUE(std::equal(played.begin(), played.end(), samples.begin()));
    EXPECT_NEAR(static_cast<double>(played.size()) / secondOfStereo, position, 0.2);
    EXPECT_FALSE(client.await([&] { return client.eventCount > events; }, milliseconds(20)));
}

TEST_F(MediaLifetime, RequestsMayComeBackOrBeFreedAfterTheRelease) {
    setAudioOptions({AudioOptions::Sink::Null, "", 20});
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    ASSERT_TRUE(client.awaitRequests(64));
    UVABackend* const released = &*backend;
    backend.release();
    // The sanitizer counts: every block and event is freed once, by one side or the other.
    released->writeData(client.pop(), 4096, UVABackend::WRITE_DATA_OK);
    released->writeData(client.pop(), 0, UVABackend::WRITE_DATA_END_OF_STREAM);
    EXPECT_EQ(client.requests.size(), 62U);
    client.dropRequests();
    EXPECT_EQ(client.eventCount, 64U);
}

TEST_F(MediaLifetime, TheClientMayReleaseInsideItsHandler) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 50});
    for (const unsigned type : {needData, streamUnderrun, playbackFinished, decodeError}) {
        SCOPED_TRACE(type);
        Feed feed{type == decodeError ? noise(100000) : stream(44100, 2, noise(secondOfStereo))};
        ListenerClient client;
        Backend backend(client);
        unsigned calls = 0;
        client.onEvent = [&](unsigned event) {
            if (event == type && ++calls == (type == needData ? 40 : 1)) {
                backend.release();
            }
        };
        UVABackend& alive = *backend;
        ASSERT_EQ(backend.open(), 1);
        alive.play();
        if (type == needData) {
            ASSERT_TRUE(client.awaitRequests(40));
        } else {
            // Without its end, the stream starves.
            ASSERT_TRUE(client.answerUntil(type, alive, feed, type != streamUnderrun));
        }
        const std::size_t events = client.eventCountNow();
        EXPECT_FALSE(client.await([&] { return client.eventCount > events; }, milliseconds(10)));
        client.dropRequests();
    }
}

TEST_F(MediaLifetime, ReleaseWaitsForAnEventUnderWay) {
    setAudioOptions({AudioOptions::Sink::Null, "", 20});
    ListenerClient client;
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false;
    bool mayLeave = false;
    bool released = false;
    client.onEvent = [&](unsigned) {
        std::unique_lock<std::mutex> lock(mutex);
        inside = true;
        changed.notify_all();
        changed.wait(lock, [&] { return mayLeave; });
    };
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    std::unique_lock<std::mutex> lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(10), [&] { return inside; }));
    std::thread releaser([&] {
        backend.release();
        const std::lock_guard<std::mutex> releaserLock(mutex);
        released = true;
        changed.notify_all();
    });
    EXPECT_FALSE(changed.wait_for(lock, milliseconds(20), [&] { return released; }));
    mayLeave = true;
    lock.unlock();
    changed.notify_all();
    releaser.join();
    EXPECT_EQ(client.eventCount, 1U);
}

TEST_F(MediaLifetime, HundredsOfTracksInQuickTurns) {
    setAudioOptions({AudioOptions::Sink::Null, "", 100});
    Feed feed{stream(44100, 2, noise(secondOfStereo))};
    for (int i = 0; i < 300; ++i) {
        ListenerClient client;
        Backend backend(client);
        ASSERT_EQ(backend.open(), 1);
        if (i % 2 == 0) {
            backend->play();
        }
        ASSERT_TRUE(client.awaitRequests(1 + static_cast<std::size_t>(i) % 64));
        if (i % 3 != 0) {
            feed.position = 0;
            client.answer(*backend, feed, i % 5 == 0);
        }
        if (i % 7 == 0) {
            backend->pause(0);
        }
    }
    feed.position = 0;
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    EXPECT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
}

TEST_F(MediaLifetime, StreamsThatFollowShareTheFileAndOnesBesideGetTheirOwn) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 50});
    const Bytes samples = noise(60000);
    const Bytes all = stream(44100, 2, samples);
    Feed firstFeed{stream(44100, 2, Bytes(samples.begin(), samples.begin() + 20000))};
    Feed secondFeed{stream(44100, 2, Bytes(samples.begin() + 20000, samples.end()))};
    Feed besideFeed{all};
    Feed otherFormat{stream(22050, 1, Bytes(22050))};
    {
        ListenerClient client;
        Backend backend(client);
        ASSERT_EQ(backend.open(), 1);
        backend->play();
        ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, firstFeed));
    }
    ListenerClient client;
    ListenerClient beside;
    {
        Backend backend(client);
        Backend besideBackend(beside);
        ASSERT_EQ(backend.open(), 1);
        ASSERT_EQ(besideBackend.open(), 1);
        backend->play();
        besideBackend->play();
        ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, secondFeed));
        ASSERT_TRUE(beside.answerUntil(playbackFinished, *besideBackend, besideFeed));
    }
    EXPECT_TRUE(readWav(wavPath()).samples == samples);
    EXPECT_TRUE(readWav(besidePath()).samples == samples);

    // What comes in another format is turned into the file's: half a second of silence.
    ListenerClient last;
    Backend backend(last);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    ASSERT_TRUE(last.answerUntil(playbackFinished, *backend, otherFormat));
    const WavContent wav = readWav(wavPath());
    EXPECT_EQ(wav.channels, 2U);
    EXPECT_EQ(wav.rate, 44100U);
    EXPECT_NEAR(static_cast<double>(wav.samples.size() - samples.size()), 0.5 * secondOfStereo,
                200);
}

TEST_F(MediaLifetime, AnOutputThatFailsAsksForTheRelease) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 50});
    Feed feed{stream(44100, 2, noise(2 * secondOfStereo))};
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit small = before;
    small.rlim_cur = 50000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    {
        ListenerClient client;
        Backend backend(client);
        EXPECT_EQ(backend.open(), 1);
        backend->play();
        EXPECT_TRUE(client.answerUntil(releaseAsked, *backend, feed));
        EXPECT_EQ(client.notices, (std::vector<unsigned>{releaseAsked}));
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);
    EXPECT_EQ(readWav(wavPath()).samples.size(), 50000U - 44);
}

TEST_F(MediaLifetime, WhatCannotPlayIsRefusedAndNamed) {
    EXPECT_THROW(setAudioOptions({AudioOptions::Sink::Wav, "/nowhere/x.wav", 1}),
                 std::runtime_error);
    EXPECT_THROW(setAudioOptions({AudioOptions::Sink::Wav, "", 1}), std::runtime_error);
    EXPECT_THROW(setAudioOptions({AudioOptions::Sink::Null, "", 0}), std::runtime_error);
    setAudioOptions({AudioOptions::Sink::Null, "", 20});

    ListenerClient client;
    EXPECT_EQ(UVAFactory::requestBackend(static_cast<UVABackend::UVABackendType>(2), &client),
              nullptr);
    Backend backend(client);
    UVABackend::SourceDescription description{2, {}};
    UVABackend::SourceDescription* list[] = {&description, nullptr};
    EXPECT_EQ(backend->setSource("http://somewhere/", list, 0), 0);
    EXPECT_EQ(backend->setSource("", nullptr, 0), 0);

    ASSERT_TRUE(gst_init_check(nullptr, nullptr, nullptr));
    GstRegistry* const elements = gst_registry_get();
    GstPluginFeature* const parser = gst_registry_lookup_feature(elements, "wavparse");
    ASSERT_NE(parser, nullptr);
    gst_registry_remove_feature(elements, parser);
    testing::internal::CaptureStderr();
    EXPECT_EQ(backend.open(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "audio: element wavparse is missing (package gstreamer1.0-plugins-good)\n");
    gst_registry_add_feature(elements, parser);
    EXPECT_EQ(client.eventCountNow(), 0U);

    EXPECT_EQ(backend.open(), 1);
    EXPECT_EQ(backend.open(), 0);
}

}  // namespace
