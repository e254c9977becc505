#include "../fakes/FakeLog.h"
#include "AudioTrack.h"
#include "CircularBuffer.h"
#include "SimpleBuffer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

using TellusClientNamespace::AudioTrack;

namespace {

constexpr unsigned capacity = 655360;

std::string pattern(unsigned length, unsigned from = 0) {
    std::string bytes(length, '\0');
    for (unsigned i = 0; i < length; ++i) {
        bytes[i] = static_cast<char>((from + i) * 2654435761U >> 24);
    }
    return bytes;
}

void write(Buffer& buffer, const std::string& bytes) {
    buffer.write(bytes.data(), static_cast<unsigned>(bytes.size()));
}

std::string read(Buffer& buffer, unsigned length, unsigned offset = 0) {
    std::string bytes(length, '?');
    buffer.read(&bytes[0], offset, length);
    return bytes;
}

// A ring whose next byte goes to `position`, with `held` bytes in it.
std::unique_ptr<CircularBuffer> ringAt(unsigned position, unsigned held) {
    auto ring = std::make_unique<CircularBuffer>();
    write(*ring, pattern(position));
    read(*ring, position - held);
    return ring;
}

std::unique_ptr<AudioTrack> trackOf(int type, unsigned channels) {
    auto track = std::make_unique<AudioTrack>(10000);
    TellusClientNamespace::TrackSettingsStruct format{type, 44100, channels, 1};
    track->initialize(&format);
    return track;
}

unsigned deliver(AudioTrack& track, const std::string& bytes) {
    return track.write(reinterpret_cast<const unsigned char*>(bytes.data()),
                       static_cast<unsigned>(bytes.size() / 4));
}

std::string take(AudioTrack& track, unsigned length) {
    std::string bytes(length, '\0');
    bytes.resize(track.read(reinterpret_cast<unsigned char*>(&bytes[0]), 0, length));
    return bytes;
}

}  // namespace

TEST(CircularBuffer, KeepsOneSlotEmptyAndOneByteBackOnBothSidesOfItsEnd) {
    CircularBuffer fresh;
    EXPECT_FALSE(fresh.canRead(0, 0));
    EXPECT_TRUE(fresh.canWrite(capacity - 1));
    EXPECT_FALSE(fresh.canWrite(capacity));
    EXPECT_EQ(fresh.getSize() + fresh.getSpace(), 0U);
    EXPECT_TRUE(fresh.hasEnoughSpace(0)) << "equality counts as enough";

    const auto ring = ringAt(capacity - 10, 100);  // the reader stands at capacity - 110
    write(*ring, pattern(20, 1));                  // wraps: the writer stands at 10
    const unsigned space = capacity - 120;
    EXPECT_TRUE(ring->canWrite(space - 1));
    EXPECT_FALSE(ring->canWrite(space));
    write(*ring, pattern(space));
    EXPECT_TRUE(ring->canRead(7, 119));
    EXPECT_FALSE(ring->canRead(0, 120)) << "a refused write moved the writer";
    write(*ring, pattern(space - 1, 2));
    EXPECT_TRUE(ring->canRead(0, capacity - 2));
    EXPECT_FALSE(ring->canWrite(1));
    read(*ring, 100);
    EXPECT_EQ(read(*ring, 20), pattern(20, 1)) << "bytes on both sides of the end";
    EXPECT_EQ(read(*ring, space - 2), pattern(space - 2, 2));
}

TEST(CircularBuffer, DropsAWriteThatEndsExactlyAtTheEndAndTakesItsNeighbours) {
    for (const unsigned length : {999U, 1000U, 1001U}) {
        const auto ring = ringAt(capacity - 1000, 10);
        const std::string bytes = pattern(length, 5);
        write(*ring, bytes);
        const unsigned held = length == 1000 ? 10 : 10 + length;
        EXPECT_TRUE(ring->canRead(0, held - 1)) << length;
        EXPECT_FALSE(ring->canRead(0, held)) << length;
        if (held > 10) {
            read(*ring, 10);
            EXPECT_EQ(read(*ring, length - 1), bytes.substr(0, length - 1));
        }
    }
}

TEST(CircularBuffer, CarriesEveryByteInOrderBetweenTwoThreads) {
    CircularBuffer ring;
    constexpr unsigned total = 4 * capacity + 12345;
    // Blocks of 8191 never end at the storage's end before they have wrapped many times.
    std::thread writer([&] {
        for (unsigned done = 0; done < total;) {
            const unsigned block = std::min(8191U, total - done);
            if (ring.canWrite(block)) {
                write(ring, pattern(block, done));
                done += block;
            }
        }
    });
    bool equal = true;
    for (unsigned done = 0; done < total - 1;) {
        const unsigned block = std::min(4096U, total - 1 - done);
        if (ring.canRead(0, block)) {
            equal = read(ring, block) == pattern(block, done) && equal;
            done += block;
        }
    }
    writer.join();
    EXPECT_TRUE(equal);
    EXPECT_FALSE(ring.canRead(0, 1));
}

TEST(SimpleBuffer, ReadsAgainAtAnyOffsetWithinWhatItHolds) {
    FakeLog::get().reset();
    SimpleBuffer buffer(200);
    write(buffer, pattern(100));
    EXPECT_TRUE(buffer.canRead(0, 99) && !buffer.canRead(0, 100) && !buffer.canRead(50, 50));
    EXPECT_FALSE(buffer.canRead(0xFFFFFFFF, 2)) << "the sum wrapped";
    EXPECT_EQ(read(buffer, 10, 90), pattern(10, 90));
    EXPECT_EQ(read(buffer, 10, 90), pattern(10, 90));
    EXPECT_TRUE(buffer.hasEnoughSpace(100) && !buffer.hasEnoughSpace(101) && !buffer.canWrite(1));
    buffer.writeToFile("/nowhere/at/all");
    EXPECT_EQ(FakeLog::get().lines.back().text,
              "SimpleBuffer::writeToFileCould not open file: /nowhere/at/all");
}

TEST(AudioTrack, TheStreamBeginsWithItsHeaderAndOneSilentFrame) {
    std::string expected("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xAC\0\0\x10\xB1\2\0"
                         "\4\0\x10\0data\xFF\xFF\xFF\xFF\0\0\0\0",
                         48);
    const auto stereo = trackOf(0, 2);
    EXPECT_TRUE(stereo->canRead(0, 47));
    EXPECT_FALSE(stereo->canRead(0, 48));
    EXPECT_EQ(deliver(*stereo, pattern(8, 3)), 8U);
    EXPECT_EQ(take(*stereo, 48), expected);
    EXPECT_EQ(take(*stereo, 8), "") << "a request is answered whole or not at all";
    EXPECT_EQ(take(*stereo, 7), pattern(7, 3));
    const auto mono = trackOf(0, 1);
    EXPECT_EQ(deliver(*mono, pattern(8)), 4U) << "two frames of one channel";
    expected[22] = 1;  // byte rate and block align stay those of stereo
    EXPECT_EQ(take(*mono, 48), expected);
}

TEST(AudioTrack, TakesNothingBeforeItsFormatAfterItsEndOrOfAForeignSampleType) {
    AudioTrack fresh(10000);
    const auto foreign = trackOf(1, 2);
    EXPECT_TRUE(!fresh.isInitialized() && foreign->isInitialized());
    for (AudioTrack* track : {&fresh, foreign.get()}) {
        EXPECT_EQ(deliver(*track, pattern(8)), 0U);
        EXPECT_FALSE(track->canRead(0, 0));
        EXPECT_EQ(take(*track, 1), "");
    }
    const auto ended = trackOf(0, 2);
    ended->setLoaded();
    EXPECT_EQ(deliver(*ended, pattern(8)), 0U);
    EXPECT_EQ(take(*ended, 47).size(), 47U) << "what is there stays readable";
}

TEST(AudioTrack, ADeliveryIsTakenWholeOrNotAtAll) {
    const auto track = trackOf(0, 2);
    const std::string block = pattern(8192);
    unsigned taken = 48;
    while (deliver(*track, block) != 0) {
        taken += 8192;
    }
    EXPECT_EQ(taken, 48 + 79 * 8192U);
    EXPECT_FALSE(track->canRead(0, taken)) << "part of a refused block went in";
    EXPECT_TRUE(track->canRead(0, taken - 1));
    EXPECT_EQ(take(*track, 48).size(), 48U);
    EXPECT_EQ(deliver(*track, block), 0U) << "room for exactly the block is not enough";
    EXPECT_EQ(take(*track, 1).size(), 1U);
    EXPECT_EQ(deliver(*track, block), 8192U) << "what was refused goes in once there is room";
}
