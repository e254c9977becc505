#ifndef SONOLET_TESTS_HOST_MEDIA_TESTSTREAM_H
#define SONOLET_TESTS_HOST_MEDIA_TESTSTREAM_H

#include "../../fakes/Folder.h"
#include "../../fakes/Test.h"

constexpr std::size_t secondOfStereo = 176400;  // bytes, at 44.1 kHz

using Bytes = std::vector<unsigned char>;

struct WavHeader {
    char riff[4] = {'R', 'I', 'F', 'F'};
    std::uint32_t size = 36;
    char waveFormat[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatSize = 16;
    std::uint16_t format = 1;
    std::uint16_t channels = 2;
    std::uint32_t rate = 44100;
    std::uint32_t byteRate = 0;
    std::uint16_t frameSize = 4;
    std::uint16_t bits = 16;
    char data[4] = {'d', 'a', 't', 'a'};
    std::uint32_t dataSize = 0xFFFFFFFF;
};
static_assert(sizeof(WavHeader) == 44);

// A noise that never repeats within a test, so that a lost or doubled byte shows.
inline Bytes noise(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t state = 12345;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

// An open-ended stream as the plug-in writes it: for stereo in two of its header's fields.
inline Bytes stream(const Bytes& samples, unsigned rate = 44100, std::uint16_t channels = 2) {
    WavHeader header;
    header.channels = channels;
    header.rate = rate;
    header.byteRate = rate * 4;
    Bytes bytes(sizeof header);
    std::memcpy(bytes.data(), &header, sizeof header);
    bytes.insert(bytes.end(), samples.begin(), samples.end());
    return bytes;
}

struct WavContent {
    WavHeader header;
    Bytes samples;
};

// Reads the file back; fails the test when its header does not fit it.
inline WavContent readWav(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    WavContent content;
    WavHeader& header = content.header;
    if (bytes.size() < sizeof header) {
        ADD_FAILURE() << path << " has " << bytes.size() << " bytes";
        return content;
    }
    std::memcpy(&header, bytes.data(), sizeof header);
    EXPECT_EQ(header.size, bytes.size() - 8);
    EXPECT_EQ(header.byteRate, header.rate * header.channels * 2);
    EXPECT_EQ(header.frameSize, header.channels * 2);
    EXPECT_EQ(header.bits, 16);
    EXPECT_EQ(header.dataSize, bytes.size() - sizeof header);
    content.samples.assign(bytes.begin() + sizeof header, bytes.end());
    return content;
}

struct MediaTest : testing::Test {
    const Folder folder;
    const std::string wavPath = folder.path("out.wav");
    // Where a second stream goes that plays at the same time.
    const std::string besidePath = folder.path("out-2.wav");
};

#endif
