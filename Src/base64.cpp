#include "base64.h"

#include "Logger.h"

#include <array>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/base64");

constexpr char padding = '=';

}  // namespace

extern "C" {
const char alphabet[64] = {
    'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P',
    'Q', 'R', 'S', 'T', 'U', 'V', 'W', 'X', 'Y', 'Z', 'a', 'b', 'c', 'd', 'e', 'f',
    'g', 'h', 'i', 'j', 'k', 'l', 'm', 'n', 'o', 'p', 'q', 'r', 's', 't', 'u', 'v',
    'w', 'x', 'y', 'z', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '+', '/',
};
}

namespace {

constexpr unsigned unknown = 0xFFFFFFFF;

struct Positions {
    constexpr Positions() : values() {
        for (unsigned& value : values) {
            value = unknown;
        }
        values[static_cast<unsigned char>(padding)] = 0;
        for (unsigned i = 0; i < sizeof alphabet; ++i) {
            values[static_cast<unsigned char>(alphabet[i])] = i;
        }
    }

    std::array<unsigned, 256> values;
};

const Positions positions;

unsigned positionOf(char c) noexcept {
    return positions.values[static_cast<unsigned char>(c)];
}

}  // namespace

int get_position(char c) noexcept {
    return static_cast<int>(positionOf(c));
}

void base64_encode(const unsigned char* data, unsigned length, std::string& out) {
    out.clear();
    out.reserve((static_cast<std::size_t>(length) + 2) / 3 * 4);
    unsigned i = 0;
    for (; length - i >= 3; i += 3) {
        out += alphabet[data[i] >> 2];
        out += alphabet[(data[i] & 0x03) << 4 | data[i + 1] >> 4];
        out += alphabet[(data[i + 1] & 0x0F) << 2 | data[i + 2] >> 6];
        out += alphabet[data[i + 2] & 0x3F];
    }
    if (length - i == 1) {
        out += alphabet[data[i] >> 2];
        out += alphabet[(data[i] & 0x03) << 4];
        out += padding;
        out += padding;
    } else if (length - i == 2) {
        out += alphabet[data[i] >> 2];
        out += alphabet[(data[i] & 0x03) << 4 | data[i + 1] >> 4];
        out += alphabet[(data[i + 1] & 0x0F) << 2];
        out += padding;
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
    unsigned written = 0;
    for (const char* group = text; group != text + length; group += 4, written += 3) {
        const unsigned p1 = positionOf(group[1]);
        const unsigned p2 = positionOf(group[2]);
        const int produced = group[3] != padding ? 3 : group[2] != padding ? 2 : 1;
        if (written <= outSize) {
            out[written] = static_cast<unsigned char>(positionOf(group[0]) << 2 | (p1 & 0x30) >> 4);
        }
        if (produced > 1 && written + 2 <= outSize) {
            out[written + 1] = static_cast<unsigned char>(p1 << 4 | (p2 & 0x3C) >> 2);
        }
        if (produced > 2 && written + 4 <= outSize) {
            out[written + 2] = static_cast<unsigned char>(p2 << 6 | positionOf(group[3]));
        }
    }
    return 0;
}
