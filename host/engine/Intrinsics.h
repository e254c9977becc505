#ifndef SONOLET_HOST_ENGINE_INTRINSICS_H
#define SONOLET_HOST_ENGINE_INTRINSICS_H

#include <JavaScriptCore/JavaScript.h>

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

    // An object that ends a prototype chain in `base`, and asks `getTrap` and `hasTrap`, as a
    // Proxy would, for what the objects before it do not have.
    JSObjectRef makeFallback(JSObjectRef base, JSObjectRef getTrap, JSObjectRef hasTrap) const;

    // Reflect.get and Reflect.has.
    JSValueRef reflectGet(size_t argc, const JSValueRef argv[], JSValueRef* exception) const;
    JSValueRef reflectHas(size_t argc, const JSValueRef argv[], JSValueRef* exception) const;

    JSObjectRef objectPrototype() const noexcept { return objects; }
    JSObjectRef functionPrototype() const noexcept { return functions; }

private:
    JSObjectRef member(const char* name) const;

    JSGlobalContextRef context;
    JSObjectRef table;  // keeps all the others alive
    JSObjectRef holders;
    JSObjectRef holdersSet;
    JSObjectRef defineValue;
    JSObjectRef definePair;
    JSObjectRef typeError;
    JSObjectRef fallback;
    JSObjectRef get;
    JSObjectRef has;
    JSObjectRef objects;
    JSObjectRef functions;
};

#endif
