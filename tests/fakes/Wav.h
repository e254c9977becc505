#ifndef SONOLET_TESTS_FAKES_WAV_H
#define SONOLET_TESTS_FAKES_WAV_H

#include <cstdint>
#include <string>

// A WAV file of 16-bit samples, in this machine's order of bytes.
inline std::string
wavFile(const std::string& samples, std::uint32_t channels = 2, std::uint32_t rate = 44100) {
    const auto size = static_cast<std::uint32_t>(samples.size());
    // "RIFF", "WAVE", "fmt ", "data".
    const std::uint32_t header[] = {0x46464952,
                                    36 + size,
                                    0x45564157,
                                    0x20746d66,
                                    16,
                                    1 | channels << 16,
                                    rate,
                                    rate * channels * 2,
                                    channels * 2 | 16U << 16,
                                    0x61746164,
                                    size};
    return std::string(reinterpret_cast<const char*>(header), sizeof header) + samples;
}

#endif
