#ifndef SONOLET_SERVICE_STORE_ID_H
#define SONOLET_SERVICE_STORE_ID_H

#include <array>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace sonolet::service {

// Bytes that a database is to keep as a blob.
struct Blob {
    std::string bytes;
};

// The 128 bits by which a link names a track, an album or an artist. They are a digest of what the
// tags say, so the same tags give the same id on every machine.
struct Id {
    std::array<unsigned char, 16> bytes{};

    static constexpr std::size_t textLength = 22;

    // A digest of the parts in their order; no two lists of parts run together.
    static Id digest(std::initializer_list<std::string_view> parts);

    // Strict: exactly 22 base-62 digits (0-9, a-z, A-Z) whose value fits in 128 bits.
    static std::optional<Id> fromText(std::string_view text);
    // 16 of them, as a database has them; nothing for any other number.
    static std::optional<Id> fromBytes(std::string_view bytes);

    std::string text() const;
    // The 16 bytes; borrowed.
    std::string_view view() const;

    bool operator==(const Id& other) const { return bytes == other.bytes; }
    bool operator!=(const Id& other) const { return bytes != other.bytes; }
    bool operator<(const Id& other) const { return bytes < other.bytes; }
};

// What two spellings of one name have in common: Unicode form, case and white space do not count.
// Of bytes that are no UTF-8 what stands for them is U+FFFD.
std::string normalised(std::string_view name);

// Two hexadecimal digits for each byte.
std::string hex(std::string_view bytes);

// The digest of `data` in bytes: 20 of SHA-1, 32 of SHA-256.
std::string sha1(std::string_view data);
std::string sha256(std::string_view data);

}  // namespace sonolet::service

template <>
struct std::hash<sonolet::service::Id> {
    std::size_t operator()(const sonolet::service::Id& id) const noexcept {
        return std::hash<std::string_view>()(id.view());
    }
};

#endif
