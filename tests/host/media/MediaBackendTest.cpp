#include "AudioOptions.h"
#include "ListenerClient.h"

#include "uva.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr unsigned playbackFinished = 4;

using Bytes = std::vector<unsigned char>;

void append(Bytes& bytes, std::uint32_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

void append(Bytes& bytes, const char* tag) {
    bytes.insert(bytes.end(), tag, tag + 4);
}

// The header of an open-ended stream as the plug-in writes it: for stereo in two of its fields.
Bytes streamHeader(unsigned rate, unsigned channels) {
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
Bytes noise(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t state = 12345;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

Bytes stream(unsigned rate, unsigned channels, const Bytes& samples) {
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
WavContent readWav(const std::string& path) {
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

std::string wavPath() {
    return testing::TempDir() + "sonolet-media-" +
           testing::UnitTest::GetInstance()->current_test_info()->name() + ".wav";
}

TEST(MediaBackend, WavHasTheSamplesDelivered) {
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
        EXPECT_TRUE(wav.samples == samples) << wav.samples.size() << " bytes of " << samples.size();
        EXPECT_NEAR(backend.position(), static_cast<double>(c.size) / (2 * c.channels * c.rate),
                    1e-3);
    }
}

}  // namespace
