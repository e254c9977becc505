#include "replay/Sound.h"

#include "replay/Recording.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

// Words of sound lie between these; no word of a header does.
constexpr std::uint32_t firstWord = 0xA0000000;
constexpr std::uint32_t wordMask = 0xF0000000;

std::size_t taken = 0;  // bytes so far

}  // namespace

const void* soundFor(std::int64_t frames, std::int64_t takenOfThem, std::int64_t frameBytes) {
    constexpr auto most = static_cast<std::int64_t>(mostBytes);
    if (frameBytes <= 0 || frameBytes > most || takenOfThem < 0 || takenOfThem > frames ||
        frames > most / frameBytes) {
        throw NotReplayable(std::to_string(takenOfThem) + " of " + std::to_string(frames) +
                            " frames of " + std::to_string(frameBytes) +
                            " bytes are no delivery of sound");
    }
    static auto& sound = *new std::vector<unsigned char>;
    sound.resize(static_cast<std::size_t>(frames * frameBytes));
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const auto place = taken + i;
        const std::uint32_t word = firstWord | (static_cast<std::uint32_t>(place / 4) & ~wordMask);
        sound[i] = reinterpret_cast<const unsigned char*>(&word)[place % 4];
    }
    taken += static_cast<std::size_t>(takenOfThem * frameBytes);
    return sound.data();
}

void SoundCheck::restart() {
    last = 0;
    taken = (taken + 3) / 4 * 4;
}

bool SoundCheck::isInOrder(const unsigned char* data, std::size_t size) {
    for (std::size_t i = 0; i + 4 <= size; i += 4) {
        std::uint32_t word = 0;
        std::memcpy(&word, data + i, sizeof word);
        if ((word & wordMask) != firstWord) {
            continue;
        }
        if (last != 0 && word != (firstWord | ((last + 1) & ~wordMask))) {
            return false;
        }
        last = word;
    }
    return true;
}
