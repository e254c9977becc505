#include "Figures.h"
#include "base64.h"
#include "plugin/PluginBench.h"

#include <openssl/evp.h>

#include <string>
#include <vector>

using namespace figures;

// As many bytes as a large cover has.
void benchBase64() {
    constexpr unsigned size = 64 * 1024;
    constexpr int repetitions = 50;
    constexpr double bytes = static_cast<double>(size) * repetitions;
    constexpr char peer[] = "OpenSSL EVP block function";
    std::vector<unsigned char> data(size);
    for (unsigned i = 0; i < size; ++i) {
        data[i] = static_cast<unsigned char>(i * 2654435761U >> 13);
    }
    std::string text;
    std::vector<unsigned char> theirs(std::size_t{size} * 2);
    const Compared encoding = compare(
        21, bytes, threadSeconds,
        [&] {
            for (int i = 0; i < repetitions; ++i) {
                base64_encode(data.data(), size, text);
                keep(text.data());
            }
        },
        [&] {
            for (int i = 0; i < repetitions; ++i) {
                EVP_EncodeBlock(theirs.data(), data.data(), static_cast<int>(size));
                keep(theirs.data());
            }
        });
    report(atLeast("Base64 encoding, 64 KiB", 1 / encoding.subject, "GB/s", peer, 1 / encoding.peer,
                   1.5));

    std::vector<unsigned char> decoded(size + 4);
    const Compared decoding = compare(
        21, bytes, threadSeconds,
        [&] {
            for (int i = 0; i < repetitions; ++i) {
                base64_decode(text.data(), static_cast<unsigned>(text.size()), decoded.data(),
                              size);
                keep(decoded.data());
            }
        },
        [&] {
            for (int i = 0; i < repetitions; ++i) {
                EVP_DecodeBlock(theirs.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                static_cast<int>(text.size()));
                keep(theirs.data());
            }
        });
    report(atLeast("Base64 decoding, 64 KiB", 1 / decoding.subject, "GB/s", peer, 1 / decoding.peer,
                   1.5));
}
