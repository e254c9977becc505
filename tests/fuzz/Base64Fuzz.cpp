// Base64: any bytes come back, any text is taken.

#include "../fakes/FakeLog.h"
#include "Input.h"
#include "base64.h"

#include <cstring>
#include <memory>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FakeLog::get().threshold = 9;  // of each text that is none there is a line
    const auto length = static_cast<unsigned>(size);
    std::string text;
    base64_encode(data, length, text);
    require(text.size() == (size + 2) / 3 * 4, "wrong length");
    // Room to the byte, so that one too many is found.
    const unsigned room = length + 3;
    const std::unique_ptr<unsigned char[]> out(new unsigned char[room + 1]());
    require(base64_decode(text.data(), static_cast<unsigned>(text.size()), out.get(), room) == 0,
            "refused");
    require(size == 0 || std::memcmp(out.get(), data, size) == 0, "other bytes came back");
    // Less room than there are bytes, and characters that are none of the alphabet.
    for (unsigned small : {0U, length / 2, length}) {
        const std::unique_ptr<unsigned char[]> little(new unsigned char[small + 1]());
        const int answer =
            base64_decode(reinterpret_cast<const char*>(data), length, little.get(), small);
        require(answer == (length % 4 == 0 ? 0 : -1), "wrong answer");
    }
    return 0;
}
