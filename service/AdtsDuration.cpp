#include "AdtsDuration.h"

#include <array>
#include <climits>
#include <cstdint>
#include <fstream>

namespace sonolet::service {

namespace {

constexpr std::array<int, 13> sampleRates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                             22050, 16000, 12000, 11025, 8000,  7350};
constexpr std::size_t headerSize = 7;
constexpr std::int64_t samplesInBlock = 1024;

using Header = std::array<unsigned char, 10>;

// The size of the ID3v2 tag at the front, its own header included.
std::int64_t tagSize(const Header& header) {
    if (header[0] != 'I' || header[1] != 'D' || header[2] != '3') {
        return 0;
    }
    const std::int64_t content = (header[6] & 0x7f) << 21 | (header[7] & 0x7f) << 14 |
                                 (header[8] & 0x7f) << 7 | (header[9] & 0x7f);
    const bool footer = (header[5] & 0x10) != 0;
    return 10 + content + (footer ? 10 : 0);
}

}  // namespace

int adtsDurationMs(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    Header header{};
    const auto read = [&](std::int64_t offset, std::size_t size) {
        file.seekg(offset);
        file.read(reinterpret_cast<char*>(header.data()), static_cast<std::streamsize>(size));
        return static_cast<bool>(file);
    };
    std::int64_t offset = read(0, header.size()) ? tagSize(header) : 0;
    std::int64_t samples = 0;
    int rate = 0;
    while (read(offset, headerSize)) {
        const bool synchronised = header[0] == 0xff && (header[1] & 0xf6) == 0xf0;
        const std::size_t rateIndex = header[2] >> 2 & 0xf;
        const int length = (header[3] & 3) << 11 | header[4] << 3 | header[5] >> 5;
        if (!synchronised || rateIndex >= sampleRates.size() ||
            length < static_cast<int>(headerSize)) {
            break;
        }
        rate = sampleRates[rateIndex];
        samples += samplesInBlock * ((header[6] & 3) + 1);
        offset += length;
    }
    if (rate == 0) {
        return 0;
    }
    const std::int64_t milliseconds = samples * 1000 / rate;
    return milliseconds > INT_MAX ? INT_MAX : static_cast<int>(milliseconds);
}

}  // namespace sonolet::service
