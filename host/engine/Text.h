#ifndef SONOLET_HOST_ENGINE_TEXT_H
#define SONOLET_HOST_ENGINE_TEXT_H

#include <JavaScriptCore/JavaScript.h>

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

// The engine string of a UTF-8 text, valid until the next call. Short ones are kept for the next
// time: what a plug-in answers repeats itself, and to make an engine string takes longer than to
// find it. Script thread.
JSStringRef shared(const char* utf8);

}  // namespace text

#endif
