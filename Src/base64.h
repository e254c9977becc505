#ifndef SONOLET_BASE64_H
#define SONOLET_BASE64_H

#include <string>

// Base64 as of RFC 4648, section 4. Image ids and image data travel through script in it.

// The 64 characters, in the order of their values.
extern "C" __attribute__((visibility("default"))) const char alphabet[64];

// The value of a character: 0 for "=", -1 for one outside the alphabet.
int get_position(char c) noexcept;

// Replaces `out` with the text of the bytes.
void base64_encode(const unsigned char* data, unsigned length, std::string& out);

// Decodes `length` characters. 0 on success, -1 (and a line in the log) when the length is not a
// multiple of 4. A character outside the alphabet is not refused and gives wrong bytes.
//
// With w bytes decoded before a group of four, the group's bytes are stored while w, w + 2 and
// w + 4 stay within `outSize`; the last bytes of an exact fit may therefore be left out, except
// where padding ends the text, as it does in an image id. REQUIRES: room for outSize + 1 bytes, or
// a text that decodes to at most outSize.
int base64_decode(const char* text, unsigned length, unsigned char* out, unsigned outSize) noexcept;

#endif
