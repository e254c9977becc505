#ifndef SONOLET_HOST_MEDIA_WAVFORMAT_H
#define SONOLET_HOST_MEDIA_WAVFORMAT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

// What the samples of a WAV stream are, and the 44 bytes that say so. A plain value of PCM or float
// samples; nothing of it throws.
struct WavFormat {
    static constexpr std::size_t headerSize = 44;
    using Header = std::array<unsigned char, headerSize>;

    // What a header of the canonical layout ("fmt " of 16 bytes, then "data") says; nothing for any
    // other layout. Frame size and byte rate are taken from the other fields, since streams are
    // met that state them for stereo whatever their channels.
    static std::optional<WavFormat> parse(const Header& header);

    // A header for `dataSize` bytes of samples; sizes that 32 bits cannot hold become the largest.
    Header header(std::uint64_t dataSize) const;

    unsigned frameSize() const { return channels * (bits / 8); }  // bytes
    unsigned byteRate() const { return frameSize() * rate; }      // bytes a second

    bool operator==(const WavFormat& other) const {
        return isFloat == other.isFloat && channels == other.channels && rate == other.rate &&
               bits == other.bits;
    }

    bool isFloat = false;
    unsigned channels = 2;
    unsigned rate = 44100;  // frames a second
    unsigned bits = 16;     // of one sample, a multiple of 8
};

#endif
