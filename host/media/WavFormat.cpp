#include "WavFormat.h"

#include <algorithm>

namespace {

constexpr unsigned formatPcm = 1;
constexpr unsigned formatFloat = 3;
constexpr std::uint64_t riffOverhead =
    WavFormat::headerSize - 8;  // what the RIFF size counts besides the data

using Tag = std::array<unsigned char, 4>;
constexpr Tag riffTag{'R', 'I', 'F', 'F'};
constexpr Tag waveTag{'W', 'A', 'V', 'E'};
constexpr Tag formatTag{'f', 'm', 't', ' '};
constexpr Tag dataTag{'d', 'a', 't', 'a'};

bool isTag(const unsigned char* at, const Tag& tag) {
    return std::equal(tag.begin(), tag.end(), at);
}

void put(unsigned char* at, const Tag& tag) {
    std::copy(tag.begin(), tag.end(), at);
}

std::uint32_t get(const unsigned char* at, unsigned bytes) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < bytes; ++i) {
        value |= static_cast<std::uint32_t>(at[i]) << (8 * i);
    }
    return value;
}

void put(unsigned char* at, unsigned bytes, std::uint64_t value) {
    for (unsigned i = 0; i < bytes; ++i) {
        at[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

}  // namespace

std::optional<WavFormat> WavFormat::parse(const Header& header) {
    const unsigned char* bytes = header.data();
    if (!isTag(bytes, riffTag) || !isTag(bytes + 8, waveTag) || !isTag(bytes + 12, formatTag) ||
        get(bytes + 16, 4) != 16 || !isTag(bytes + 36, dataTag)) {
        return std::nullopt;
    }
    const std::uint32_t tag = get(bytes + 20, 2);
    WavFormat format;
    format.isFloat = tag == formatFloat;
    format.channels = get(bytes + 22, 2);
    format.rate = get(bytes + 24, 4);
    format.bits = get(bytes + 34, 2);
    if ((tag != formatPcm && tag != formatFloat) || format.channels == 0 || format.rate == 0 ||
        format.bits == 0 || format.bits % 8 != 0) {
        return std::nullopt;
    }
    return format;
}

WavFormat::Header WavFormat::header(std::uint64_t dataSize) const {
    constexpr std::uint64_t largest = 0xFFFFFFFF;
    Header result{};
    unsigned char* bytes = result.data();
    put(bytes, riffTag);
    put(bytes + 4, 4, std::min(dataSize, largest - riffOverhead) + riffOverhead);
    put(bytes + 8, waveTag);
    put(bytes + 12, formatTag);
    put(bytes + 16, 4, 16);
    put(bytes + 20, 2, isFloat ? formatFloat : formatPcm);
    put(bytes + 22, 2, channels);
    put(bytes + 24, 4, rate);
    put(bytes + 28, 4, byteRate());
    put(bytes + 32, 2, frameSize());
    put(bytes + 34, 2, bits);
    put(bytes + 36, dataTag);
    put(bytes + 40, 4, std::min(dataSize, largest));
    return result;
}
