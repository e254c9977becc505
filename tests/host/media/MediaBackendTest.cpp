#include "AudioOptions.h"
#include "Player.h"
#include "TestStream.h"
#include "WavFile.h"

#include "uva.h"

#include <fcntl.h>

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
        std::uint16_t channels;
        std::size_t size;
        std::size_t pieceLimit;
    };
    for (const Case& c : {Case{44100, 2, 400004, 4096}, Case{44100, 1, 100002, 4096},
                          Case{48000, 2, 200000, 1001}, Case{48000, 1, 30006, 37}}) {
        SCOPED_TRACE(testing::Message() << c.rate << " Hz, " << c.channels << " channels");
        setAudioOptions({AudioOptions::Sink::Wav, wavPath, 50});
        const Bytes samples = noise(c.size);
        Player player(stream(samples, c.rate, c.channels));
        player.pieceLimit = c.pieceLimit;
        ASSERT_TRUE(player.playOut());
        const WavContent wav = readWav(wavPath);
        EXPECT_EQ(wav.header.rate, c.rate);
        EXPECT_EQ(wav.header.channels, c.channels);
        EXPECT_TRUE(wav.samples == samples) << wav.samples.size() << " bytes of " << c.size;
        const double duration = static_cast<double>(c.size) / (2.0 * c.channels * c.rate);
        EXPECT_NEAR(player.position(), duration, 1e-3);
    }
}

// Of all but the last piece the room on the disk is given back at once.
TEST_F(MediaPlayback, WavGrowsPast2GiB) {
    const Bytes piece = noise(std::size_t{32} << 20);
    const std::uint64_t whole = piece.size() * std::uint64_t{65};
    WavFile file(wavPath);
    const int disk = open(wavPath.c_str(), O_RDWR | O_CLOEXEC);
    for (std::uint64_t at = 0; at < whole; at += piece.size()) {
        fallocate(disk, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 4096, static_cast<off_t>(at));
        file.append({}, piece.data(), piece.size());
    }
    WavHeader header;
    EXPECT_EQ(pread(disk, &header, sizeof header, 0), 44);
    EXPECT_EQ(header.dataSize, whole);
    EXPECT_EQ(header.size, whole + 36);
    EXPECT_EQ(std::filesystem::file_size(wavPath), whole + 44);
    Bytes last(piece.size());
    EXPECT_EQ(pread(disk, last.data(), last.size(), static_cast<off_t>(whole + 44 - last.size())),
              static_cast<ssize_t>(last.size()));
    EXPECT_TRUE(last == piece);
    close(disk);
}

TEST_F(MediaPlayback, PullsItsWindowInSequenceWhilePositionFollowsTime) {
    setAudioOptions({AudioOptions::Sink::Null, "", 100});
    Player player(stream(noise(50 * secondOfStereo)));
    ASSERT_EQ(player.open(), 1);
    constexpr std::size_t window = secondOfStereo * 3 / 2 / 4096;
    ASSERT_TRUE(player.awaitRequests(window));
    EXPECT_EQ(player.position(), 0.0);

    // Not played yet, the answers leave no room for more.
    player.answer(false);
    EXPECT_FALSE(
        player.await([&] { return player.offsets.size() > window + 2; }, milliseconds(50)));

    const auto start = steady_clock::now();
    player->play();
    double last = 0;
    while (!player.await([&] { return player.has(playbackFinished); }, milliseconds(0))) {
        ASSERT_TRUE(
            player.await([&] { return player.has(playbackFinished) || !player.requests.empty(); }));
        player.answer();
        const double position = player.position();
        EXPECT_GE(position, last);
        EXPECT_LE(position, secondsSince(start) * 100);
        last = position;
    }
    EXPECT_GE(secondsSince(start), 0.5);
    EXPECT_LT(secondsSince(start), 50.0) << "the pace is that of the sound, not 100 times that";
    EXPECT_NEAR(player.position(), 50.0, 1e-3);
    player->pause(0);
    EXPECT_NEAR(player.position(), 50.0, 1e-3);
    for (std::size_t i = 0; i * 4096 < player.feed.size(); ++i) {
        ASSERT_EQ(player.offsets[i], i * 4096);
    }
}

// A busy machine may be behind with what was played before a pause: by no more than the window.
TEST_F(MediaPlayback, PauseStopsPositionAndPullingAndLosesNothing) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 20});
    const Bytes samples = noise(20 * secondOfStereo);
    Player player(stream(samples));
    ASSERT_TRUE(player.start());
    for (std::size_t asked = 100; asked <= 500; asked += 100) {
        ASSERT_TRUE(player.answerUntilAsked(asked));
        player->pause(0);
        const double position = player.position();
        EXPECT_GT(position, 0.0);
        const std::size_t most = player.asked() + 72;
        while (player.asked() <= most &&
               player.await([&] { return !player.requests.empty(); }, milliseconds(20))) {
            player.answer();
        }
        EXPECT_LE(player.asked(), most);
        EXPECT_LT(player.position(), position + 1.6);
        player->play();
    }
    ASSERT_TRUE(player.answerUntil(playbackFinished));
    EXPECT_TRUE(readWav(wavPath).samples == samples);
}

TEST_F(MediaPlayback, UnderrunIsToldOnceAndItsEndToo) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 20});
    const Bytes samples = noise(3 * secondOfStereo);
    const Bytes whole = stream(samples);
    Player player(Bytes(whole.begin(), whole.begin() + secondOfStereo));
    ASSERT_TRUE(player.start());
    ASSERT_TRUE(player.answerUntil(streamUnderrun, false));
    // The sound stops at most one of the parser's blocks (4096 frames) and its play time early.
    const double position = player.position();
    EXPECT_NEAR(position, 0.9, 0.1);
    EXPECT_FALSE(player.await([&] { return player.notices.size() > 1; }, milliseconds(20)));
    EXPECT_EQ(player.position(), position);

    player.feed = whole;
    ASSERT_TRUE(player.answerUntil(playbackFinished));
    // A busy machine may starve it again.
    ASSERT_GE(player.notices.size(), 3U);
    EXPECT_EQ(player.notices.size() % 2, 1U);
    for (std::size_t i = 0; i + 1 < player.notices.size(); ++i) {
        EXPECT_EQ(player.notices[i], i % 2 == 0 ? streamUnderrun : streamBuffered);
    }
    EXPECT_EQ(player.notices.back(), playbackFinished);
    EXPECT_TRUE(readWav(wavPath).samples == samples);
}

TEST_F(MediaPlayback, EmptyAnswersAreAskedAgainAndDataAtTheEndIsPlayed) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 20});
    const Bytes samples = noise(12000);
    Player player(stream(samples));
    ASSERT_TRUE(player.start());
    ASSERT_TRUE(player.awaitRequests(64));
    const std::size_t before = player.asked();
    for (int i = 0; i < 64; ++i) {
        player.give(player.pop(), 0, UVABackend::WRITE_DATA_OK);
    }
    ASSERT_TRUE(player.await([&] { return player.offsets.size() >= before + 64; }));
    // A dropped request is an empty answer, too.
    player.dropRequests();
    ASSERT_TRUE(player.awaitRequests(64));
    for (const std::size_t size : {4096, 0, 4096, 12044 - 2 * 4096}) {
        player.give(player.pop(), size, UVABackend::WRITE_DATA_END_OF_STREAM);
    }
    const std::size_t asked = player.asked();
    ASSERT_TRUE(player.answerUntil(playbackFinished));
    EXPECT_TRUE(readWav(wavPath).samples == samples);
    EXPECT_EQ(player.asked(), asked);
}

TEST_F(MediaPlayback, StreamsWithoutSoundFinishAndGarbageIsADecodeError) {
    setAudioOptions({AudioOptions::Sink::Wav, wavPath, 20});
    const std::pair<Bytes, unsigned> cases[] = {{{}, playbackFinished},
                                                {stream({}), playbackFinished},
                                                {stream(Bytes(4)), playbackFinished},
                                                {noise(20), decodeError},
                                                {noise(300000), decodeError}};
    for (const auto& [bytes, notice] : cases) {
        SCOPED_TRACE(bytes.size());
        Player player(bytes);
        ASSERT_TRUE(player.start());
        ASSERT_TRUE(player.answerUntil(notice));
        player.answer();
        EXPECT_TRUE(player.staysQuiet());
        EXPECT_EQ(player.notices, std::vector<unsigned>{notice});
    }
    EXPECT_EQ(readWav(wavPath).samples, Bytes(4));
}

TEST_F(MediaPlayback, AutoPlaysWithAndWithoutASoundDevice) {
    setAudioOptions({AudioOptions::Sink::Auto, "", 20});
    Player player(stream(Bytes(secondOfStereo / 4)));
    ASSERT_TRUE(player.playOut());
    EXPECT_NEAR(player.position(), 0.25, 0.01);
}

}  // namespace
