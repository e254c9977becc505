#ifndef SONOLET_LAYER_CALLS_JSON_H
#define SONOLET_LAYER_CALLS_JSON_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Pieces of JSON, appended to a text.
//
// What comes out is valid by RFC 8259 whatever goes in, in any locale of the process. Threads: any,
// each with its own text. Errors: none but std::bad_alloc.
namespace json {

// All digits; readers that know doubles only are exact up to 2^53.
void integer(std::string& out, std::int64_t number);
// What JSON has no number for becomes a text: "NaN", "Infinity", "-Infinity".
void number(std::string& out, double number);
// Microseconds with their thousandths, of nanoseconds.
void microseconds(std::string& out, std::uint64_t ns);
// In quotes. What is no UTF-8 becomes U+FFFD; a character cut off at the end is left out.
void text(std::string& out, std::string_view bytes);
// In quotes. Hexadecimal without 0x; "0" is null.
void address(std::string& out, const void* pointer);
// In quotes, two digits a byte.
void hex(std::string& out, const void* bytes, std::size_t size);

}  // namespace json

#endif
