// The buffers' odd sides. That the ring and the stream in it keep every byte is proved against a
// model by the "audio" fuzz target, and between threads by ThreadsTest.

#include "../fakes/FakeLog.h"
#include "../fakes/Test.h"
#include "CircularBuffer.h"
#include "SimpleBuffer.h"

namespace {

constexpr unsigned capacity = CircularBuffer::capacity;

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

}  // namespace

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
