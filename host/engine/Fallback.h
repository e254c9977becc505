#ifndef SONOLET_HOST_ENGINE_FALLBACK_H
#define SONOLET_HOST_ENGINE_FALLBACK_H

#include "engine/Intrinsics.h"

#include <JavaScriptCore/JavaScript.h>

#include <string>

// The end of the prototype chain of fronts: a Proxy before Object.prototype or Function.prototype,
// one for all fronts of a document. It sees the writes of every name that a front does not have.
//
// The engine asks a catcher in the same way for a read and for `name in object`, so a catcher
// cannot throw the plug-in's exception: it leaves it here and answers that it has no such property.
// The engine then comes here, where the two can be told apart: the read throws, `in` says no.
class Fallback final {
public:
    Fallback(JSGlobalContextRef scriptContext, const Intrinsics& engineFunctions, JSObjectRef base);
    ~Fallback();

    Fallback(const Fallback&) = delete;
    Fallback& operator=(const Fallback&) = delete;

    JSObjectRef object() const noexcept { return proxy; }

    // "__proto__", which the accessor of Object.prototype answers; no plug-in may.
    static bool isPrototypeName(JSStringRef name) noexcept;

    // A function of a front, a name and a value, which writes.
    JSObjectRef writer() const noexcept { return write; }

    // The next read of `name`, if it is the next thing to come here, throws an Error of `text`.
    void leave(const std::string& name, const std::string& text);

    // What is left and was not taken is none of the next access's.
    void clear() noexcept { pending = false; }

private:
    static JSValueRef getTrap(JSContextRef context,
                              JSObjectRef function,
                              JSObjectRef thisObject,
                              size_t argc,
                              const JSValueRef argv[],
                              JSValueRef* exception) noexcept;
    static JSValueRef setTrap(JSContextRef context,
                              JSObjectRef function,
                              JSObjectRef thisObject,
                              size_t argc,
                              const JSValueRef argv[],
                              JSValueRef* exception) noexcept;
    static JSValueRef writeKept(JSContextRef context,
                                JSObjectRef function,
                                JSObjectRef thisObject,
                                size_t argc,
                                const JSValueRef argv[],
                                JSValueRef* exception) noexcept;
    static JSValueRef hasTrap(JSContextRef context,
                              JSObjectRef function,
                              JSObjectRef thisObject,
                              size_t argc,
                              const JSValueRef argv[],
                              JSValueRef* exception) noexcept;
    bool takePending(JSValueRef name);
    JSObjectRef makeTrap(JSObjectCallAsFunctionCallback trap);

    JSGlobalContextRef context;
    const Intrinsics& intrinsics;
    // The traps' private data is this object; it is taken from them when it goes.
    JSObjectRef get;
    JSObjectRef set;
    JSObjectRef has;
    JSObjectRef write;
    JSObjectRef proxy;
    bool pending = false;
    std::string pendingName;
    std::string message;
};

#endif
