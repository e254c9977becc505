#ifndef SONOLET_LAYER_TAP_UTF8_H
#define SONOLET_LAYER_TAP_UTF8_H

#include <cstddef>
#include <string_view>

// How many bytes of a text's front are one character of UTF-8: 0 when they are none, and below 0
// when the text ends inside the character, by how many bytes it lacks. REQUIRES: it is not empty.
//
// Well formed is what RFC 3629 says: no longer form than needed, no surrogates, nothing above
// U+10FFFF. Threads: any. Errors: none; nothing is allocated.
inline int characterAt(std::string_view text) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = at(0);
    const int length = first < 0x80   ? 1
                       : first < 0xc2 ? 0
                       : first < 0xe0 ? 2
                       : first < 0xf0 ? 3
                       : first < 0xf5 ? 4
                                      : 0;
    for (int i = 1; i < length; ++i) {
        if (static_cast<std::size_t>(i) >= text.size()) {
            return i - length;
        }
        const unsigned next = at(static_cast<std::size_t>(i));
        const bool isAllowed =
            i > 1 || !((first == 0xe0 && next < 0xa0) || (first == 0xed && next > 0x9f) ||
                       (first == 0xf0 && next < 0x90) || (first == 0xf4 && next > 0x8f));
        if ((next & 0xc0U) != 0x80 || !isAllowed) {
            return 0;
        }
    }
    return length;
}

// Whether all of it is whole characters. The empty text is.
inline bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const int length = characterAt(text);
        if (length <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

#endif
