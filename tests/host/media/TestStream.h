#ifndef SONOLET_TESTS_HOST_MEDIA_TESTSTREAM_H
#define SONOLET_TESTS_HOST_MEDIA_TESTSTREAM_H

#include "ListenerClient.h"

#include "uva.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Types of the backend's events, as the device's clients know them.
enum : unsigned {
    releaseAsked = 0,
    needData = 1,
    playbackFinished = 4,
    decodeError = 7,
    streamUnderrun = 22,
    streamBuffered = 23,
};

constexpr std::size_t secondOfStereo = 176400;  // bytes, at 44.1 kHz

using Bytes = std::vector<unsigned char>;

inline void append(Bytes& bytes, std::uint32_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

inline void append(Bytes& bytes, const char* tag) {
    bytes.insert(bytes.end(), tag, tag + 4);
}

// The header of an open-ended stream as the plug-in writes it: for stereo in two of its fields.
inline Bytes streamHeader(unsigned rate, unsigned channels) {
    Bytes bytes;
    append(bytes, "RIFF");
    append(bytes, 36, 4);
    append(bytes, "WAVE");
    append(bytes, "fmt ");
    append(bytes, 16, 4);
    append(bytes, 1, 2);
    append(bytes, channels, 2);
    append(bytes, rate, 4);
    append(bytes, rate * 4, 4);
    append(bytes, 4, 2);
    append(bytes, 16, 2);
    append(bytes, "data");
    append(bytes, 0xFFFFFFFF, 4);
    return bytes;
}

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

inline Bytes stream(unsigned rate, unsigned channels, const Bytes& samples) {
    Bytes bytes = streamHeader(rate, channels);
    bytes.insert(bytes.end(), samples.begin(), samples.end());
    return bytes;
}

struct WavContent {
    unsigned channels = 0;
    unsigned rate = 0;
    Bytes samples;
};

// Reads the file back; fails the test when its header does not fit it.
inline WavContent readWav(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    WavContent content;
    const auto number = [&](std::size_t at, unsigned size) {
        std::uint32_t value = 0;
        for (unsigned i = size; i > 0; --i) {
            value = value << 8 | bytes.at(at + i - 1);
        }
        return value;
    };
    if (bytes.size() < 44) {
        ADD_FAILURE() << path << " has " << bytes.size() << " bytes";
        return content;
    }
    content.channels = number(22, 2);
    content.rate = number(24, 4);
    EXPECT_EQ(number(4, 4), bytes.size() - 8);
    EXPECT_EQ(number(28, 4), content.rate * content.channels * 2);
    EXPECT_EQ(number(32, 2), content.channels * 2);
    EXPECT_EQ(number(34, 2), 16U);
    EXPECT_EQ(number(40, 4), bytes.size() - 44);
    content.samples.assign(bytes.begin() + 44, bytes.end());
    return content;
}

class Backend {
public:
    explicit Backend(ListenerClient& client)
        : backend(UVAFactory::requestBackend(UVABackend::UVA_BACKEND_MEDIA, &client)) {}
    ~Backend() { release(); }

    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    int open() {
        UVABackend::SourceDescription description{2, {}};
        UVABackend::SourceDescription* list[] = {&description, nullptr};
        return backend->setSource("", list, 0);
    }

    void release() {
        if (backend != nullptr) {
            UVAFactory::releaseBackend(backend);
        }
        backend = nullptr;
    }

    UVABackend* operator->() const { return backend; }
    UVABackend& operator*() const { return *backend; }

    double position() const {
        double seconds = -1;
        backend->getPosition(seconds);
        return seconds;
    }

private:
    UVABackend* backend;
};

// Has a place for a WAV file of its own and cleans it up.
class MediaTest : public testing::Test {
protected:
    void TearDown() override {
        std::remove(wavPath().c_str());
        std::remove(besidePath().c_str());
    }

    const std::string& wavPath() const { return path; }

    // Where a second stream goes that plays at the same time.
    std::string besidePath() const { return path.substr(0, path.size() - 4) + "-2.wav"; }

private:
    const std::string path =
        testing::TempDir() + "sonolet-media-" + std::to_string(getpid()) + ".wav";
};

#endif
