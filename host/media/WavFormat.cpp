#include "WavFormat.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned formatPcm = 1;
constexpr unsigned formatFloat = 3;
constexpr std::uint64_t riffOverhead =
    WavFormat::headerSize - 8;  // what the RIFF size counts besides the data

bool isTag(const unsigned char* at, const char* tag) {
    return std::memcmp(at, tag, 4) == 0;
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
    if (!isTag(bytes, "RIFF") || !isTag(bytes + 8, "WAVE") || !isTag(bytes + 12, "fmt ") ||
        get(bytes + 16, 4) != 16 || !isTag(bytes + 36, "data")) {
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
    std::memcpy(bytes, "RIFF", 4);
    put(bytes + 4, 4, std::min(dataSize, largest - riffOverhead) + riffOverhead);
    std::memcpy(bytes + 8, "WAVEfmt ", 8);
    put(bytes + 16, 4, 16);
    put(bytes + 20, 2, isFloat ? formatFloat : formatPcm);
    put(bytes + 22, 2, channels);
    put(bytes + 24, 4, rate);
    put(bytes + 28, 4, byteRate());
    put(bytes + 32, 2, frameSize());
    put(bytes + 34, 2, bits);
    std::memcpy(bytes + 36, "data", 4);
    put(bytes + 40, 4, std::min(dataSize, largest));
    return result;
}
