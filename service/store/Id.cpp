#include "store/Id.h"

#include "store/GlibText.h"

#include <glib.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace sonolet::service {

namespace {

constexpr char digits[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr unsigned base = 62;

int digitValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'z') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'Z') {
        return digit - 'A' + 36;
    }
    return -1;
}

std::string checksum(GChecksumType type, std::string_view data) {
    const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> sum(g_checksum_new(type),
                                                                     &g_checksum_free);
    g_checksum_update(sum.get(), reinterpret_cast<const guchar*>(data.data()),
                      static_cast<gssize>(data.size()));
    std::string result(static_cast<std::size_t>(g_checksum_type_get_length(type)), '\0');
    gsize size = result.size();
    g_checksum_get_digest(sum.get(), reinterpret_cast<guint8*>(result.data()), &size);
    return result;
}

}  // namespace

Id Id::digest(std::initializer_list<std::string_view> parts) {
    std::string joined;
    for (const std::string_view part : parts) {
        joined += std::to_string(part.size());
        joined += ':';
        joined += part;
    }
    const std::string sum = sha256(joined);
    Id id;
    std::memcpy(id.bytes.data(), sum.data(), id.bytes.size());
    return id;
}

std::optional<Id> Id::fromText(std::string_view text) {
    if (text.size() != textLength) {
        return std::nullopt;
    }
    Id id;
    for (const char digit : text) {
        const int value = digitValue(digit);
        if (value < 0) {
            return std::nullopt;
        }
        auto carry = static_cast<unsigned>(value);
        for (auto byte = id.bytes.rbegin(); byte != id.bytes.rend(); ++byte) {
            carry += *byte * base;
            *byte = static_cast<unsigned char>(carry & 0xff);
            carry >>= 8;
        }
        if (carry != 0) {
            return std::nullopt;
        }
    }
    return id;
}

std::optional<Id> Id::fromBytes(std::string_view bytes) {
    Id id;
    if (bytes.size() != id.bytes.size()) {
        return std::nullopt;
    }
    std::copy(bytes.begin(), bytes.end(), id.bytes.begin());
    return id;
}

std::string Id::text() const {
    std::array<unsigned char, 16> rest = bytes;
    std::string result(textLength, digits[0]);
    for (auto digit = result.rbegin(); digit != result.rend(); ++digit) {
        unsigned remainder = 0;
        for (unsigned char& byte : rest) {
            const unsigned value = remainder << 8 | byte;
            byte = static_cast<unsigned char>(value / base);
            remainder = value % base;
        }
        *digit = digits[remainder];
    }
    return result;
}

std::string_view Id::view() const {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string normalised(std::string_view name) {
    const GlibText valid(g_utf8_make_valid(name.data(), static_cast<gssize>(name.size())));
    const GlibText folded(g_utf8_casefold(valid.get(), -1));
    const GlibText composed(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_NFC));
    std::string result;
    bool gap = false;
    for (const char* place = composed.get(); *place != '\0'; place = g_utf8_next_char(place)) {
        const gunichar character = g_utf8_get_char(place);
        if (g_unichar_isspace(character)) {
            gap = !result.empty();
            continue;
        }
        if (gap) {
            result += ' ';
            gap = false;
        }
        result.append(place, static_cast<std::size_t>(g_utf8_next_char(place) - place));
    }
    return result;
}

std::string hex(std::string_view bytes) {
    constexpr char hexDigits[] = "0123456789abcdef";
    std::string text;
    for (const char character : bytes) {
        const auto value = static_cast<unsigned char>(character);
        text += {hexDigits[value >> 4], hexDigits[value & 15]};
    }
    return text;
}

std::string sha1(std::string_view data) {
    return checksum(G_CHECKSUM_SHA1, data);
}

std::string sha256(std::string_view data) {
    return checksum(G_CHECKSUM_SHA256, data);
}

}  // namespace sonolet::service
