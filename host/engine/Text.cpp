#include "engine/Text.h"

#include <glib.h>

namespace text {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void append(std::string& out, char32_t point) {
    if (point < 0x80) {
        out += static_cast<char>(point);
        return;
    }
    char bytes[6];
    const int length = g_unichar_to_utf8(point, bytes);
    out.append(bytes, static_cast<std::size_t>(length));
}

}  // namespace

std::string toUtf8(JSStringRef string) {
    const JSChar* units = JSStringGetCharactersPtr(string);
    const std::size_t length = JSStringGetLength(string);
    std::string out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        char32_t point = units[i];
        if (isHighSurrogate(point) && i + 1 < length && isLowSurrogate(units[i + 1])) {
            ++i;
            point = 0x10000 + ((point - 0xD800) << 10) + (units[i] - 0xDC00);
        } else if (point == 0 || isHighSurrogate(point) || isLowSurrogate(point)) {
            point = replacement;
        }
        append(out, point);
    }
    return out;
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

EngineString::EngineString(const char* utf8) {
    if (g_utf8_validate(utf8, -1, nullptr) != FALSE) {
        string = JSStringCreateWithUTF8CString(utf8);
        return;
    }
    char* valid = g_utf8_make_valid(utf8, -1);
    string = JSStringCreateWithUTF8CString(valid);
    g_free(valid);
}

}  // namespace text
