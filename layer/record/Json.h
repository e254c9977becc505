#ifndef SONOLET_LAYER_RECORD_JSON_H
#define SONOLET_LAYER_RECORD_JSON_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Pieces of JSON, appended to a text.
namespace json {

void integer(std::string& out, std::int64_t number);
// What JSON has no number for becomes a text: "NaN", "Infinity", "-Infinity".
void number(std::string& out, double number);
// Microseconds with their thousandths, of nanoseconds.
void microseconds(std::string& out, std::uint64_t ns);
// In quotes. What is no UTF-8 becomes U+FFFD; a character cut off at the end is left out.
void text(std::string& out, std::string_view bytes);
// In quotes.
void address(std::string& out, const void* pointer);
void hex(std::string& out, const void* bytes, std::size_t size);

}  // namespace json

#endif
