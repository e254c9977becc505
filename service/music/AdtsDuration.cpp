#include "music/AdtsDuration.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>

namespace sonolet::service {

namespace {

constexpr std::array<int, 13> sampleRates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                             22050, 16000, 12000, 11025, 8000,  7350};
constexpr std::size_t headerSize = 7;
constexpr std::int64_t samplesInBlock = 1024;

}  // namespace

std::int64_t adtsStart(const MusicFile& file) {
    std::array<unsigned char, 10> header{};
    if (file.read(0, header.data(), header.size()) < header.size() || header[0] != 'I' ||
        header[1] != 'D' || header[2] != '3') {
        return 0;
    }
    const std::int64_t content = (header[6] & 0x7f) << 21 | (header[7] & 0x7f) << 14 |
                                 (header[8] & 0x7f) << 7 | (header[9] & 0x7f);
    const bool footer = (header[5] & 0x10) != 0;
    return 10 + content + (footer ? 10 : 0);
}

int adtsDurationMs(const MusicFile& file, const StopFlag& stop) {
    constexpr int mostFrames = 1'000'000;  // six to twelve hours
    std::array<unsigned char, 4096> window{};
    std::int64_t start = 0;
    std::int64_t size = 0;
    std::array<unsigned char, headerSize> header{};
    const auto read = [&](std::int64_t offset) {
        const std::int64_t end = offset + static_cast<std::int64_t>(headerSize);
        if (offset < start || end > start + size) {
            start = offset;
            size = static_cast<std::int64_t>(file.read(offset, window.data(), window.size()));
        }
        if (end > start + size || stop) {
            return false;
        }
        std::memcpy(header.data(), window.data() + (offset - start), headerSize);
        return true;
    };
    const std::int64_t begin = adtsStart(file);
    std::int64_t offset = begin;
    std::int64_t samples = 0;
    int rate = 0;
    int frames = 0;
    while (frames < mostFrames && read(offset)) {
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
        ++frames;
    }
    if (rate == 0 || stop) {
        return 0;
    }
    std::int64_t milliseconds = samples * 1000 / rate;
    if (frames == mostFrames) {
        const std::int64_t thousandths = (file.size() - begin) * 1000 / (offset - begin);
        milliseconds = milliseconds * std::max<std::int64_t>(thousandths, 1000) / 1000;
    }
    return static_cast<int>(std::min<std::int64_t>(milliseconds, INT_MAX));
}

}  // namespace sonolet::service
