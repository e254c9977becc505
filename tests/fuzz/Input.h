#ifndef SONOLET_TESTS_FUZZ_INPUT_H
#define SONOLET_TESTS_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// The entry point of every fuzz target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// A fuzz target's check: stops the process, which the fuzzer takes for a find.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "fuzz: %s\n", what);
        std::abort();
    }
}

// The bytes of one input, taken from the front; zeros once they are used up.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest(reinterpret_cast<const char*>(data), size) {}

    bool empty() const { return next >= rest.size(); }
    unsigned byte() { return empty() ? 0 : static_cast<unsigned char>(rest[next++]); }
    unsigned below(unsigned limit) {
        const unsigned high = byte();
        return (high << 8 | byte()) % limit;
    }
    // Up to `limit` bytes, without NULs.
    std::string text(unsigned limit) {
        std::string taken;
        for (unsigned left = below(limit + 1); left > 0 && !empty(); --left) {
            if (const char c = static_cast<char>(byte())) {
                taken += c;
            }
        }
        return taken;
    }

private:
    const std::string rest;
    std::size_t next = 0;
};

#endif
