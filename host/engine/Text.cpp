#include "engine/Text.h"

#include <glib.h>

#include <array>
#include <cstring>

namespace text {

namespace {

constexpr char32_t replacement = 0xFFFD;
// The upper six bits of a unit that is one.
constexpr char32_t highSurrogate = 0xD800 >> 10;
constexpr char32_t lowSurrogate = 0xDC00 >> 10;

// The text of `string` when it is all ASCII, as names are, without a NUL, and short.
bool isShortAscii(JSStringRef string, std::array<char, 64>& out) {
    const std::size_t length = JSStringGetLength(string);
    if (length >= out.size() ||
        JSStringGetUTF8CString(string, out.data(), out.size()) != length + 1) {
        return false;
    }
    for (std::size_t i = 0; i < length; ++i) {
        if (out[i] == '\0' || static_cast<unsigned char>(out[i]) >= 0x80) {
            return false;
        }
    }
    return true;
}

std::string slowUtf8(JSStringRef string) {
    const JSChar* const units = JSStringGetCharactersPtr(string);
    const std::size_t length = JSStringGetLength(string);
    std::string out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        char32_t point = units[i];
        if (point >> 10 == highSurrogate && i + 1 < length && units[i + 1] >> 10 == lowSurrogate) {
            point = 0x10000 + ((point & 0x3FF) << 10) + (units[++i] & 0x3FF);
        } else if (point == 0 || point >> 10 == highSurrogate || point >> 10 == lowSurrogate) {
            point = replacement;
        }
        char bytes[6];
        out.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(point, bytes)));
    }
    return out;
}

}  // namespace

std::string toUtf8(JSStringRef string) {
    // The engine makes a copy of 16-bit units of whatever is looked at by them.
    std::array<char, 64> ascii;
    return isShortAscii(string, ascii) ? std::string(ascii.data()) : slowUtf8(string);
}

std::string toUtf8(JSContextRef context, JSValueRef value) {
    JSStringRef string = JSValueToStringCopy(context, value, nullptr);
    if (string == nullptr) {
        return {};
    }
    std::string out = toUtf8(string);
    JSStringRelease(string);
    return out;
}

JSValueRef makeError(JSContextRef context, const std::string& message) {
    const JSValueRef argument = JSValueMakeString(context, EngineString(message).get());
    return JSObjectMakeError(context, 1, &argument, nullptr);
}

EngineString::EngineString(const char* utf8) {
    char* valid = g_utf8_make_valid(utf8, -1);
    string = JSStringCreateWithUTF8CString(valid);
    g_free(valid);
}

JSStringRef shared(const char* utf8) {
    struct Kept {
        std::array<char, 32> text;  // with its NUL
        JSStringRef string;         // owned; null: nothing is kept here
    };
    // By the text's hash. Never freed: documents go up to process exit.
    static std::array<Kept, 128> table;
    static JSStringRef latest;  // owned; one that is too long to be kept
    const auto replace = [utf8](JSStringRef& kept) {
        const EngineString made(utf8);
        if (kept != nullptr) {
            JSStringRelease(kept);
        }
        kept = JSStringRetain(made.get());
        return kept;
    };
    std::size_t length = 0;
    std::size_t hash = 0;
    while (utf8[length] != '\0') {
        hash = hash * 31 + static_cast<unsigned char>(utf8[length]);
        if (++length == sizeof Kept::text) {
            return replace(latest);
        }
    }
    Kept& kept = table[hash % table.size()];
    if (kept.string != nullptr && std::strcmp(kept.text.data(), utf8) == 0) {
        return kept.string;
    }
    std::memcpy(kept.text.data(), utf8, length + 1);
    return replace(kept.string);
}

}  // namespace text
