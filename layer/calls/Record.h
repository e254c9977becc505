#ifndef SONOLET_LAYER_CALLS_RECORD_H
#define SONOLET_LAYER_CALLS_RECORD_H

#include "tap/Functions.h"
#include "tap/Value.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// A call as it lies between the thread that made it and the one that writes it down: a head, and
// behind it its values, each with what it points to.

// A call that has called nobody is one record, written when it is over.
//
// A Begin is written as soon as something is called inside, so that calls nest in the trace as they
// did in life. A Mark is a text of the layer's own.
enum class Phase : std::uint8_t { Whole, Begin, End, Mark };

// The head, as it is copied; records never leave the process, so byte order and padding are its
// own.
struct Record {
    std::uint32_t bytes;  // with everything behind it; a multiple of 8
    Fn function;
    Phase phase;
    // Of a Begin no results, of an End no arguments.
    std::uint8_t resultCount;
    std::uint32_t argumentCount;
    std::uint32_t thread;  // the system's number
    // Nanoseconds since the recording began. Of a beginning both are the same.
    std::uint64_t began;
    std::uint64_t ended;
};

// As much of each as is told. Of bytes so many that their Base64 text is as long. Arrays are
// limited by elements, all else by bytes; a secret is copied only to be known again.
struct Limits {
    std::size_t text = 96;
    std::size_t bytes = 72;
    std::size_t secret = 256;
    std::size_t array = 4096;

    // For recordings that are to be replayed.
    static constexpr Limits none() {
        constexpr std::size_t all = UINT32_MAX;
        return {all, all, all, all};
    }
};
// The process's. Set before the first record is made, and not changed.
inline Limits limits;

// How many bytes of what a value points to are in the record. REQUIRES for Tag::Texts: the caller's
// own array; in a record the texts lie behind one another instead, and Event reads them.
inline std::size_t storedBytes(const Value& value) {
    const auto limited = [&](std::size_t limit, std::size_t each) {
        const std::size_t count = value.size < limit ? value.size : limit;
        return value.u.pointer != nullptr ? count * each : 0;
    };
    switch (value.tag) {
    case Tag::Text:
    case Tag::Expression:
        return limited(limits.text, 1);
    case Tag::Secret:
        return limited(limits.secret, 1);
    case Tag::Bytes:
        return limited(limits.bytes, 1);
    case Tag::Handles:
        return limited(limits.array, sizeof(void*));
    case Tag::Integers:
        return limited(limits.array, sizeof(int));
    case Tag::Texts: {
        // One behind the other, each with its end.
        std::size_t bytes = 0;
        const auto* const texts = static_cast<char* const*>(value.u.pointer);
        for (std::size_t i = 0; i < value.size && i < limits.array; ++i) {
            bytes += std::strlen(texts[i]) + 1;
        }
        return bytes;
    }
    default:
        return 0;
    }
}

// The next multiple of 8: values in a record are aligned.
constexpr std::size_t padded(std::size_t bytes) {
    return (bytes + 7) & ~std::size_t{7};
}

#endif
