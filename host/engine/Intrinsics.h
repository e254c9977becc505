#ifndef SONOLET_HOST_ENGINE_INTRINSICS_H
#define SONOLET_HOST_ENGINE_INTRINSICS_H

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <string>

// What the engine itself has for every document, taken before its scripts run, so that none can put
// something else in its place. Made before the first script, destroyed before the context.
class Intrinsics final {
public:
    explicit Intrinsics(JSGlobalContextRef scriptContext);
    ~Intrinsics();

    Intrinsics(const Intrinsics&) = delete;
    Intrinsics& operator=(const Intrinsics&) = delete;

    // New errors of the document, as its own constructors make them; they are in nobody's hands but
    // the caller's. Never null: without memory the engine ends the process.
    JSValueRef makeError(const std::string& message) const;
    JSValueRef makeTypeError(const std::string& message) const;

    // Values that are always the same; to have the engine make one takes its lock.
    JSValueRef undefined() const noexcept { return values[0]; }
    JSValueRef null() const noexcept { return values[1]; }
    JSValueRef boolean(bool value) const noexcept { return values[value ? 3 : 2]; }

private:
    JSGlobalContextRef context;
    // Protected: undefined, null, false, true, and what makes a TypeError.
    const std::array<JSValueRef, 5> values;
};

#endif
