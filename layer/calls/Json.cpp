#include "calls/Json.h"

#include "tap/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace json {

namespace {

constexpr char digits[] = "0123456789abcdef";

void character(std::string& out, char c) {
    if (c == '"' || c == '\\') {
        out += '\\';
        out += c;
    } else if (c == '\n') {
        out += "\\n";
    } else if (static_cast<unsigned char>(c) < 0x20) {
        const auto code = static_cast<unsigned char>(c);
        out += "\\u00";
        out += digits[code >> 4U];
        out += digits[code & 15U];
    } else {
        out += c;
    }
}

}  // namespace

void integer(std::string& out, std::int64_t number) {
    char buffer[24];
    out.append(buffer, std::to_chars(std::begin(buffer), std::end(buffer), number).ptr);
}

void number(std::string& out, double number) {
    constexpr double mostExact = 9007199254740992.0;
    if (std::isnan(number) || std::isinf(number)) {
        out += std::isnan(number) ? "\"NaN\"" : number > 0 ? "\"Infinity\"" : "\"-Infinity\"";
    } else if (std::fabs(number) <= mostExact && number == std::floor(number) &&
               !(number == 0 && std::signbit(number))) {
        integer(out, static_cast<std::int64_t>(number));
    } else {
        char buffer[32];
        const int length = number == 0 ? std::snprintf(buffer, sizeof buffer, "-0.0")
                                       : std::snprintf(buffer, sizeof buffer, "%.17g", number);
        // The process may have a locale with another sign.
        std::replace(buffer, buffer + length, ',', '.');
        out += buffer;
    }
}

void microseconds(std::string& out, std::uint64_t ns) {
    integer(out, static_cast<std::int64_t>(ns / 1000));
    const auto rest = static_cast<unsigned>(ns % 1000);
    out += '.';
    out += digits[rest / 100];
    out += digits[rest / 10 % 10];
    out += digits[rest % 10];
}

void text(std::string& out, std::string_view bytes) {
    out += '"';
    while (!bytes.empty()) {
        const int length = characterAt(bytes);
        if (length < 0) {
            break;
        }
        if (length == 0) {
            out += "\\ufffd";
            bytes.remove_prefix(1);
        } else if (length == 1) {
            character(out, bytes.front());
            bytes.remove_prefix(1);
        } else {
            out += bytes.substr(0, static_cast<std::size_t>(length));
            bytes.remove_prefix(static_cast<std::size_t>(length));
        }
    }
    out += '"';
}

void address(std::string& out, const void* pointer) {
    char buffer[24];
    const auto value = reinterpret_cast<std::uintptr_t>(pointer);
    out += '"';
    out.append(buffer, std::to_chars(std::begin(buffer), std::end(buffer), value, 16).ptr);
    out += '"';
}

void hex(std::string& out, const void* bytes, std::size_t size) {
    out += '"';
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned each = static_cast<const unsigned char*>(bytes)[i];
        out += digits[each >> 4U];
        out += digits[each & 15U];
    }
    out += '"';
}

}  // namespace json
