#include "AudioOptions.h"
#include "ListenerClient.h"
#include "TestStream.h"

#include "uva.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class MediaPlayback : public MediaTest {};

double secondsSince(steady_clock::time_point start) {
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

TEST_F(MediaPlayback, WavHasTheSamplesDelivered) {
    struct Case {
        unsigned rate;
        unsigned channels;
        std::size_t size;
        std::size_t pieceLimit;
    };
    for (const Case& c : {Case{44100, 2, 400004, 4096}, Case{44100, 1, 100002, 4096},
                          Case{48000, 2, 200000, 1001}, Case{48000, 1, 30006, 37}}) {
        SCOPED_TRACE(testing::Message() << c.rate << " Hz, " << c.channels << " channels");
        setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 50});
        const Bytes samples = noise(c.size);
        Feed feed{stream(c.rate, c.channels, samples), 0, c.pieceLimit};
        ListenerClient client;
        Backend backend(client);
        ASSERT_EQ(backend.open(), 1);
        backend->play();
        ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
        const WavContent wav = readWav(wavPath());
        EXPECT_EQ(wav.rate, c.rate);
        EXPECT_EQ(wav.channels, c.channels);
        EXPECT_TRUE(wav.samples == samples) << wav.samples.size() << " bytes of " << c.size;
        const double duration = static_cast<double>(c.size) / (2.0 * c.channels * c.rate);
        EXPECT_NEAR(backend.position(), duration, 1e-3);
    }
}

TEST_F(MediaPlayback, PullsInSequenceAndNotMoreThanItsWindow) {
    setAudioOptions({AudioOptions::Sink::Null, "", 40});
    Feed feed{stream(44100, 2, noise(6 * secondOfStereo))};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    constexpr std::size_t window = secondOfStereo * 3 / 2 / 4096;
    ASSERT_TRUE(client.awaitRequests(window));
    EXPECT_EQ(backend.position(), 0.0);

    // Not played yet, the answers leave no room for more.
    client.answer(*backend, feed, false);
    EXPECT_FALSE(
        client.await([&] { return client.offsets.size() > window + 2; }, milliseconds(50)));

    backend->play();
    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
    for (std::size_t i = 0; i * 4096 < feed.bytes.size(); ++i) {
        ASSERT_EQ(client.offsets[i], i * 4096);
    }
}

TEST_F(MediaPlayback, PositionFollowsTimeAtTheSpeedAndStaysAtTheEnd) {
    setAudioOptions({AudioOptions::Sink::Null, "", 20});
    Feed feed{stream(44100, 2, noise(10 * secondOfStereo))};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    ASSERT_TRUE(client.awaitRequests(64));
    const auto start = steady_clock::now();
    backend->play();
    double last = 0;
    while (!client.await([&] { return client.has(playbackFinished); }, milliseconds(0))) {
        ASSERT_TRUE(
            client.await([&] { return client.has(playbackFinished) || !client.requests.empty(); }));
        client.answer(*backend, feed);
        const double position = backend.position();
        EXPECT_GE(position, last);
        EXPECT_LE(position, secondsSince(start) * 20);
        last = position;
    }
    EXPECT_GE(secondsSince(start), 0.5);
    EXPECT_LT(secondsSince(start), 1.5);
    EXPECT_NEAR(backend.position(), 10.0, 1e-3);
    backend->pause(0);
    EXPECT_NEAR(backend.position(), 10.0, 1e-3);
}

TEST_F(MediaPlayback, PauseStopsPositionAndPullingAndLosesNothing) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    const Bytes samples = noise(5 * secondOfStereo);
    Feed feed{stream(44100, 2, samples)};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    for (std::size_t asked = 100; asked <= 200; asked += 25) {
        while (client.await([&] { return client.offsets.size() < asked; }, milliseconds(0))) {
            ASSERT_TRUE(client.awaitRequests(1));
            client.answer(*backend, feed);
        }
        backend->pause(0);
        const double position = backend.position();
        EXPECT_GT(position, 0.0);
        client.answer(*backend, feed);
        const std::size_t before = client.offsetCount();
        EXPECT_FALSE(
            client.await([&] { return client.offsets.size() > before + 2; }, milliseconds(20)));
        EXPECT_EQ(backend.position(), position);
        backend->play();
    }
    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
    EXPECT_TRUE(readWav(wavPath()).samples == samples);
}

TEST_F(MediaPlayback, UnderrunIsToldOnceAndItsEndToo) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    const Bytes samples = noise(3 * secondOfStereo);
    const Bytes whole = stream(44100, 2, samples);
    Feed first{Bytes(whole.begin(), whole.begin() + secondOfStereo)};
    Feed second{Bytes(whole.begin() + secondOfStereo, whole.end())};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    ASSERT_TRUE(client.answerUntil(streamUnderrun, *backend, first, false));
    // The sound stops at most one of the parser's blocks (4096 frames) and its play time early.
    const double position = backend.position();
    EXPECT_NEAR(position, 0.9, 0.1);
    EXPECT_FALSE(client.await([&] { return client.notices.size() > 1; }, milliseconds(20)));
    EXPECT_EQ(backend.position(), position);

    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, second));
    EXPECT_EQ(client.notices,
              (std::vector<unsigned>{streamUnderrun, streamBuffered, playbackFinished}));
    EXPECT_TRUE(readWav(wavPath()).samples == samples);
}

TEST_F(MediaPlayback, EmptyAnswersAreAskedAgain) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    const Bytes samples = noise(40000);
    Feed feed{stream(44100, 2, samples)};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    ASSERT_TRUE(client.awaitRequests(64));
    const std::size_t before = client.offsetCount();
    for (int i = 0; i < 64; ++i) {
        backend->writeData(client.pop(), 0, UVABackend::WRITE_DATA_OK);
    }
    ASSERT_TRUE(client.await([&] { return client.offsets.size() >= before + 64; }));
    // A dropped request is an empty answer, too.
    client.dropRequests();
    ASSERT_TRUE(client.awaitRequests(64));
    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
    EXPECT_TRUE(readWav(wavPath()).samples == samples);
}

TEST_F(MediaPlayback, DataMarkedAsTheEndIsPlayedUntilTheLastAnswer) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    const Bytes samples = noise(12000);
    const Bytes whole = stream(44100, 2, samples);
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    ASSERT_TRUE(client.awaitRequests(64));
    Feed feed{whole};
    const auto give = [&](std::size_t size) {
        NeedDataEvent* const request = client.pop();
        std::copy_n(whole.begin() + static_cast<std::ptrdiff_t>(feed.position), size,
                    request->data);
        feed.position += size;
        backend->writeData(request, static_cast<unsigned>(size),
                           UVABackend::WRITE_DATA_END_OF_STREAM);
    };
    give(4096);
    give(0);
    give(4096);
    give(feed.left());
    const std::size_t asked = client.offsetCount();
    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
    EXPECT_TRUE(readWav(wavPath()).samples == samples);
    EXPECT_EQ(client.offsetCount(), asked);
}

TEST_F(MediaPlayback, StreamsWithoutSoundFinish) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath(), 20});
    for (const Bytes& bytes : {Bytes{}, stream(44100, 2, {}), stream(44100, 2, Bytes(4))}) {
        SCOPED_TRACE(bytes.size());
        Feed feed{bytes};
        ListenerClient client;
        Backend backend(client);
        ASSERT_EQ(backend.open(), 1);
        backend->play();
        ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
        EXPECT_EQ(client.notices, (std::vector<unsigned>{playbackFinished}));
    }
    EXPECT_EQ(readWav(wavPath()).samples, Bytes(4));
}

TEST_F(MediaPlayback, GarbageIsADecodeErrorAndEndsTheAsking) {
    setAudioOptions({AudioOptions::Sink::Null, "", 20});
    for (const std::size_t size : {std::size_t{20}, std::size_t{300000}}) {
        SCOPED_TRACE(size);
        Feed feed{noise(size)};
        ListenerClient client;
        Backend backend(client);
        ASSERT_EQ(backend.open(), 1);
        backend->play();
        ASSERT_TRUE(client.answerUntil(decodeError, *backend, feed));
        client.answer(*backend, feed);
        const std::size_t events = client.eventCountNow();
        EXPECT_FALSE(client.await([&] { return client.eventCount > events; }, milliseconds(20)));
        EXPECT_EQ(client.notices, (std::vector<unsigned>{decodeError}));
    }
}

TEST_F(MediaPlayback, AutoPlaysWithAndWithoutASoundDevice) {
    setAudioOptions({AudioOptions::Sink::Auto, "", 20});
    Feed feed{stream(44100, 2, Bytes(secondOfStereo / 4))};
    ListenerClient client;
    Backend backend(client);
    ASSERT_EQ(backend.open(), 1);
    backend->play();
    ASSERT_TRUE(client.answerUntil(playbackFinished, *backend, feed));
    EXPECT_NEAR(backend.position(), 0.25, 0.01);
}

}  // namespace
