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

// Owns an engine string made of UTF-8 text.
class EngineString final {
public:
    explicit EngineString(const char* utf8);
    explicit EngineString(const std::string& utf8) : EngineString(utf8.c_str()) {}
    ~EngineString() { JSStringRelease(string); }

    EngineString(const EngineString&) = delete;
    EngineString& operator=(const EngineString&) = delete;

    JSStringRef get() const noexcept { return string; }

private:
    JSStringRef string;  // owned
};

}  // namespace text

#endif
