#include "AudioTrack.h"

#include "BufferFactory.h"

#include <array>
#include <cstring>

namespace TellusClientNamespace {

namespace {

// "0000": a track that was never initialised refuses every write.
constexpr int noSampleType = 0x30303030;
constexpr unsigned bytesPerSample = 2;

// Little-endian fields of a RIFF header, one after the other.
class HeaderWriter final {
public:
    explicit HeaderWriter(char* start) : next(start) {}

    HeaderWriter& text(const char (&fourCharacters)[5]) {
        std::memcpy(next, fourCharacters, 4);
        next += 4;
        return *this;
    }

    HeaderWriter& number(unsigned value, unsigned bytes) {
        for (unsigned i = 0; i < bytes; ++i) {
            *next++ = static_cast<char>(value >> (8 * i));
        }
        return *this;
    }

private:
    char* next;
};

}  // namespace

AudioTrack::AudioTrack(int durationMs)
    : settings(new TrackSettingsStruct{noSampleType, 0, 0, durationMs}) {}

AudioTrack::~AudioTrack() {
    delete buffer.load(std::memory_order_acquire);
}

void AudioTrack::initialize(TrackSettingsStruct* format) {
    settings->sampleType = format->sampleType;
    settings->sampleRate = format->sampleRate;
    settings->channels = format->channels;
    if (settings->sampleType == SP_SAMPLETYPE_INT16_NATIVE_ENDIAN) {
        const auto seconds = static_cast<unsigned>(settings->durationMs / 1000);
        const unsigned size = settings->sampleRate * settings->channels * 3 * seconds;
        delete buffer.exchange(BufferFactory::getInstance().createBuffer(size).release(),
                               std::memory_order_acq_rel);
        writeWaveHeader();
    }
    initialized.store(true, std::memory_order_release);
}

// RIFF/WAVE, as of the Multimedia Programming Interface and Data Specifications 1.0. The backend
// reads an endless stream: the sizes are placeholders, byte rate and block align those of 16-bit
// stereo whatever the channel count.
void AudioTrack::writeWaveHeader() {
    std::array<char, 48> header{};  // 44 bytes of header, then one silent frame
    HeaderWriter(header.data())
        .text("RIFF")
        .number(36, 4)
        .text("WAVE")
        .text("fmt ")
        .number(16, 4)  // size of the format chunk
        .number(1, 2)   // PCM
        .number(settings->channels, 2)
        .number(settings->sampleRate, 4)
        .number(settings->sampleRate * 4, 4)  // byte rate
        .number(4, 2)                         // block align
        .number(16, 2)                        // bits per sample
        .text("data")
        .number(0xFFFFFFFF, 4);
    buffer.load(std::memory_order_relaxed)->write(header.data(), header.size());
}

unsigned AudioTrack::write(const unsigned char* frames, const unsigned& frameCount) {
    Buffer* const ring = buffer.load(std::memory_order_relaxed);
    if (settings->sampleType != SP_SAMPLETYPE_INT16_NATIVE_ENDIAN || !ring) {
        return 0;
    }
    const unsigned bytes = settings->channels * bytesPerSample * frameCount;
    if (!ring->canWrite(bytes) || isLoaded()) {
        return 0;
    }
    ring->write(reinterpret_cast<const char*>(frames), bytes);
    return bytes;
}

unsigned AudioTrack::read(unsigned char* out, const unsigned& offset, const unsigned& length) {
    if (!canRead(offset, length)) {
        return 0;
    }
    buffer.load(std::memory_order_acquire)->read(reinterpret_cast<char*>(out), offset, length);
    return length;
}

bool AudioTrack::canRead(const unsigned& offset, const unsigned& length) const {
    const Buffer* const ring = buffer.load(std::memory_order_acquire);
    return ring && ring->canRead(offset, length);
}

void AudioTrack::setLoaded() {
    loaded.store(true, std::memory_order_release);
}

}  // namespace TellusClientNamespace
