#ifndef SONOLET_HOST_ENGINE_INTRINSICS_H
#define SONOLET_HOST_ENGINE_INTRINSICS_H

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <string>
#include <vector>

// The engine's own functions as a document has them before its scripts run, so that no script can
// put others in their place. Made before the first script, destroyed before the context.
class Intrinsics final {
public:
    // Throws std::runtime_error when the engine lacks one of them.
    explicit Intrinsics(JSGlobalContextRef scriptContext);
    ~Intrinsics();

    Intrinsics(const Intrinsics&) = delete;
    Intrinsics& operator=(const Intrinsics&) = delete;

    // `holder` keeps `held` alive from now on, and nothing that it held before.
    void hold(JSObjectRef holder, const std::vector<JSValueRef>& held) const;

    // Defines a writable, configurable own property of `object`. Answers whether it could be.
    bool define(JSObjectRef object, JSStringRef name, JSValueRef value, bool enumerable) const;

    // Defines an own accessor property of `object`.
    void defineAccessor(JSObjectRef object,
                        JSStringRef name,
                        JSObjectRef getter,
                        JSObjectRef setter) const;

    JSValueRef makeError(const std::string& message) const;
    JSValueRef makeTypeError(const std::string& message) const;

    // Values that are always the same; to have the engine make one takes its lock.
    JSValueRef undefined() const noexcept { return constants[0]; }
    JSValueRef null() const noexcept { return constants[1]; }
    JSValueRef boolean(bool value) const noexcept { return constants[value ? 3 : 2]; }

private:
    JSObjectRef member(const char* name) const;
    // Calls one of the functions of the table that define a property; answers whether it could be.
    bool defineBy(JSObjectRef definer,
                  JSObjectRef object,
                  JSStringRef name,
                  JSValueRef first,
                  JSValueRef second) const;

    JSGlobalContextRef context;
    JSObjectRef table;  // keeps all the others alive
    JSObjectRef holders;
    JSObjectRef holdersSet;
    JSObjectRef defineValue;
    JSObjectRef definePair;
    JSObjectRef typeError;
    const std::array<JSValueRef, 4> constants;  // undefined, null, false, true; protected
};

#endif
