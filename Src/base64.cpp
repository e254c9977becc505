#include "base64.h"

#include "Logger.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/base64");

constexpr char padding = '=';

}  // namespace

extern "C" {
constexpr char alphabet[64] = {
    'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P',
    'Q', 'R', 'S', 'T', 'U', 'V', 'W', 'X', 'Y', 'Z', 'a', 'b', 'c', 'd', 'e', 'f',
    'g', 'h', 'i', 'j', 'k', 'l', 'm', 'n', 'o', 'p', 'q', 'r', 's', 't', 'u', 'v',
    'w', 'x', 'y', 'z', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '+', '/',
};
}

namespace {

constexpr unsigned unknown = 0xFFFFFFFF;

constexpr unsigned char byteOf(char c) noexcept {
    return static_cast<unsigned char>(c);
}

struct Positions {
    constexpr Positions() : values() {
        for (unsigned& value : values) {
            value = unknown;
        }
        values[byteOf(padding)] = 0;
        for (unsigned i = 0; i < sizeof alphabet; ++i) {
            values[byteOf(alphabet[i])] = i;
        }
    }

    std::array<unsigned, 256> values;
};

constexpr Positions positions;

constexpr unsigned positionOf(char c) noexcept {
    return positions.values[byteOf(c)];
}

// The two characters of each 12 bits.
struct Pairs {
    constexpr Pairs() : characters() {
        for (unsigned i = 0; i < characters.size(); ++i) {
            characters[i] = {alphabet[i >> 6], alphabet[i & 0x3F]};
        }
    }

    std::array<std::array<char, 2>, 4096> characters;
};

constexpr Pairs pairs;

// What each character of a group of four contributes to its three bytes, the first of them lowest.
struct Parts {
    constexpr Parts() : values() {
        for (unsigned c = 0; c < 256; ++c) {
            const unsigned p = positions.values[c];
            values[0][c] = p << 2 & 0xFF;
            values[1][c] = (p & 0x30) >> 4 | (p << 4 & 0xFF) << 8;
            values[2][c] = (p & 0x3C) >> 2 << 8 | (p << 6 & 0xFF) << 16;
            values[3][c] = (p & 0xFF) << 16;
        }
        values[3][byteOf(padding)] = padded;
    }

    // Of a group that gives fewer bytes than three.
    static constexpr std::uint32_t padded = 1U << 24;

    std::array<std::array<std::uint32_t, 256>, 4> values;
};

constexpr Parts parts;

std::uint32_t bytesOf(const char* group) noexcept {
    return parts.values[0][byteOf(group[0])] | parts.values[1][byteOf(group[1])] |
           parts.values[2][byteOf(group[2])] | parts.values[3][byteOf(group[3])];
}

char* writePair(char* out, std::uint64_t bits) noexcept {
    std::memcpy(out, pairs.characters[bits & 0xFFF].data(), 2);
    return out + 2;
}

}  // namespace

int get_position(char c) noexcept {
    return static_cast<int>(positionOf(c));
}

void base64_encode(const unsigned char* data, unsigned length, std::string& out) {
    out.resize((static_cast<std::size_t>(length) + 2) / 3 * 4);
    char* next = out.data();
    unsigned i = 0;
    // Six bytes at a time, read as eight: compilers make one read of that.
    for (; length - i >= 8; i += 6) {
        const unsigned char* const from = data + i;
        const std::uint64_t bits =
            static_cast<std::uint64_t>(from[0]) << 56 | static_cast<std::uint64_t>(from[1]) << 48 |
            static_cast<std::uint64_t>(from[2]) << 40 | static_cast<std::uint64_t>(from[3]) << 32 |
            static_cast<std::uint64_t>(from[4]) << 24 | static_cast<std::uint64_t>(from[5]) << 16 |
            static_cast<std::uint64_t>(from[6]) << 8 | static_cast<std::uint64_t>(from[7]);
        next = writePair(next, bits >> 52);
        next = writePair(next, bits >> 40);
        next = writePair(next, bits >> 28);
        next = writePair(next, bits >> 16);
    }
    for (; length - i >= 3; i += 3) {
        next = writePair(next, data[i] << 4 | data[i + 1] >> 4);
        next = writePair(next, (data[i + 1] & 0x0F) << 8 | data[i + 2]);
    }
    if (length - i == 1) {
        next = writePair(next, data[i] << 4);
        next[0] = padding;
        next[1] = padding;
    } else if (length - i == 2) {
        next = writePair(next, data[i] << 4 | data[i + 1] >> 4);
        next[0] = alphabet[(data[i + 1] & 0x0F) << 2];
        next[1] = padding;
    }
}

int base64_decode(const char* text,
                  unsigned length,
                  unsigned char* out,
                  unsigned outSize) noexcept {
    if (length % 4 != 0) {
        logger.error("", "WARNING: Input string to base64 decode does not have a length that is a "
                         "multiple of 4");
        return -1;
    }
    const char* const end = text + length;
    const char* group = text;
    unsigned written = 0;
    // Two groups at a time, while both give all their bytes and these fit.
    for (; end - group >= 8 && outSize >= 7 && written <= outSize - 7; group += 8, written += 6) {
        const std::uint32_t first = bytesOf(group);
        const std::uint32_t second = bytesOf(group + 4);
        if (((first | second) & Parts::padded) != 0) {
            break;
        }
        // In one value, of which compilers make two writes.
        const std::uint64_t bytes = first | static_cast<std::uint64_t>(second) << 24;
        unsigned char* const to = out + written;
        to[0] = static_cast<unsigned char>(bytes);
        to[1] = static_cast<unsigned char>(bytes >> 8);
        to[2] = static_cast<unsigned char>(bytes >> 16);
        to[3] = static_cast<unsigned char>(bytes >> 24);
        to[4] = static_cast<unsigned char>(bytes >> 32);
        to[5] = static_cast<unsigned char>(bytes >> 40);
    }
    for (; group != end; group += 4, written += 3) {
        const std::uint32_t bytes = bytesOf(group);
        const int produced = group[3] != padding ? 3 : group[2] != padding ? 2 : 1;
        if (written <= outSize) {
            out[written] = static_cast<unsigned char>(bytes);
        }
        if (produced > 1 && written + 2 <= outSize) {
            out[written + 1] = static_cast<unsigned char>(bytes >> 8);
        }
        if (produced > 2 && written + 4 <= outSize) {
            out[written + 2] = static_cast<unsigned char>(bytes >> 16);
        }
    }
    return 0;
}
