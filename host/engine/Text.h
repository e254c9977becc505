#ifndef SONOLET_HOST_ENGINE_TEXT_H
#define SONOLET_HOST_ENGINE_TEXT_H

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <string>

// Text between the engine (UTF-16, any code unit) and the plug-in (UTF-8, NUL-terminated). What the
// other side cannot hold becomes U+FFFD: lone surrogates and NULs one way, broken UTF-8 the other.
namespace text {

std::string toUtf8(JSStringRef string);

// The text of `value`; empty when the conversion throws.
std::string toUtf8(JSContextRef context, JSValueRef value);

// An Error with this message.
JSValueRef makeError(JSContextRef context, const std::string& message);

// Owns an engine string.
class EngineString final {
public:
    explicit EngineString(const char* utf8);
    explicit EngineString(const std::string& utf8) : EngineString(utf8.c_str()) {}
    // REQUIRES: `value` is a string.
    EngineString(JSContextRef context, JSValueRef value)
        : string(JSValueToStringCopy(context, value, nullptr)) {}
    ~EngineString() { JSStringRelease(string); }

    EngineString(const EngineString&) = delete;
    EngineString& operator=(const EngineString&) = delete;

    JSStringRef get() const noexcept { return string; }

private:
    JSStringRef string;  // owned
};

// Engine strings of UTF-8 texts. Short ones are kept for the next time: what a plug-in answers
// repeats itself, and to make an engine string takes longer than to find it. Script thread.
class Strings final {
public:
    Strings() = default;
    ~Strings();

    Strings(const Strings&) = delete;
    Strings& operator=(const Strings&) = delete;

    // Valid until the next call.
    JSStringRef get(const char* utf8);

private:
    struct Kept {
        std::array<char, 32> text;  // with its NUL
        JSStringRef string;         // owned; null: nothing is kept here
    };
    // By the text's hash.
    std::array<Kept, 128> table = {};
    JSStringRef latest = nullptr;  // owned; one that is too long to be kept
};

// The process's.
Strings& strings();

}  // namespace text

#endif
