#include "engine/Fallback.h"

#include "engine/Fronts.h"
#include "engine/ObjectAccess.h"
#include "engine/Text.h"

#include <utility>

namespace {

// Whether the plug-in took the write. `name` is a string or a symbol.
bool writeTo(JSContextRef context,
             const Intrinsics& engine,
             JSValueRef target,
             JSValueRef name,
             JSValueRef value,
             JSValueRef* exception) {
    if (!JSValueIsObject(context, target) || !JSValueIsString(context, name)) {
        return false;
    }
    ObjectRecord* record = Fronts::recordOf(JSValueToObject(context, target, nullptr));
    if (record == nullptr) {
        // A Proxy of the page's before a front says that its prototype is the front's.
        record = Fronts::recordBehind(context, engine.prototypeOf(target));
    }
    if (record == nullptr || record->callbacks.setter == nullptr) {
        return false;
    }
    const text::EngineString text(context, name);
    return !Fallback::isPrototypeName(text.get()) &&
           record->access.write(*record, text.get(), value, exception);
}

}  // namespace

Fallback::Fallback(JSGlobalContextRef scriptContext,
                   const Intrinsics& engineFunctions,
                   JSObjectRef base)
    : context(scriptContext), intrinsics(engineFunctions), get(makeTrap(&Fallback::getTrap)),
      set(makeTrap(&Fallback::setTrap)), has(makeTrap(&Fallback::hasTrap)),
      write(makeTrap(&Fallback::writeKept)), proxy(intrinsics.makeFallback(base, get, set, has)) {
    JSValueProtect(context, proxy);
}

Fallback::~Fallback() {
    for (const JSObjectRef trap : {get, set, has, write}) {
        JSObjectSetPrivate(trap, nullptr);
        JSValueUnprotect(context, trap);
    }
    JSValueUnprotect(context, proxy);
}

JSObjectRef Fallback::makeTrap(JSObjectCallAsFunctionCallback trap) {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.attributes = kJSClassAttributeNoAutomaticPrototype;
    definition.className = "Function";
    definition.callAsFunction = trap;
    const JSClassRef trapClass = JSClassCreate(&definition);
    const JSObjectRef function = JSObjectMake(context, trapClass, this);
    JSClassRelease(trapClass);
    JSValueProtect(context, function);
    return function;
}

bool Fallback::isPrototypeName(JSStringRef name) noexcept {
    constexpr char prototype[] = "__proto__";
    return JSStringGetLength(name) == sizeof prototype - 1 &&
           JSStringIsEqualToUTF8CString(name, prototype);
}

void Fallback::leave(const std::string& name, const std::string& text) {
    pendingName = name;
    message = text;
    pending = true;
}

// Whether this access of `name` is what something was left for. What was is gone after it.
bool Fallback::takePending(JSValueRef name) {
    return std::exchange(pending, false) && JSValueIsString(context, name) &&
           text::toUtf8(context, name) == pendingName;
}

JSValueRef Fallback::getTrap(JSContextRef context,
                             JSObjectRef function,
                             JSObjectRef,
                             size_t argc,
                             const JSValueRef argv[],
                             JSValueRef* exception) noexcept {
    auto* const self = static_cast<Fallback*>(JSObjectGetPrivate(function));
    if (self == nullptr || argc < 2) {
        return JSValueMakeUndefined(context);
    }
    if (self->takePending(argv[1])) {
        *exception = self->intrinsics.makeError(self->message);
        return nullptr;
    }
    return self->intrinsics.reflectGet(argc, argv, exception);
}

// Of a name that nothing before it in the chain has: arguments are target, name, value, receiver.
JSValueRef Fallback::setTrap(JSContextRef context,
                             JSObjectRef function,
                             JSObjectRef,
                             size_t argc,
                             const JSValueRef argv[],
                             JSValueRef* exception) noexcept {
    auto* const self = static_cast<Fallback*>(JSObjectGetPrivate(function));
    if (self == nullptr || argc < 4) {
        return JSValueMakeBoolean(context, true);
    }
    if (writeTo(context, self->intrinsics, argv[3], argv[1], argv[2], exception)) {
        return JSValueMakeBoolean(context, true);
    }
    return self->intrinsics.reflectSet(argc, argv, exception);
}

// Of a name whose value the front keeps: arguments are the object written to, name, value.
JSValueRef Fallback::writeKept(JSContextRef context,
                               JSObjectRef function,
                               JSObjectRef,
                               size_t argc,
                               const JSValueRef argv[],
                               JSValueRef* exception) noexcept {
    auto* const self = static_cast<Fallback*>(JSObjectGetPrivate(function));
    if (self != nullptr && argc == 3 &&
        !writeTo(context, self->intrinsics, argv[0], argv[1], argv[2], exception) &&
        JSValueIsObject(context, argv[0])) {
        const text::EngineString name(context, argv[1]);
        self->intrinsics.define(JSValueToObject(context, argv[0], nullptr), name.get(), argv[2],
                                true);
    }
    return JSValueMakeUndefined(context);
}

JSValueRef Fallback::hasTrap(JSContextRef context,
                             JSObjectRef function,
                             JSObjectRef,
                             size_t argc,
                             const JSValueRef argv[],
                             JSValueRef* exception) noexcept {
    auto* const self = static_cast<Fallback*>(JSObjectGetPrivate(function));
    if (self == nullptr || argc < 2) {
        return JSValueMakeBoolean(context, false);
    }
    if (self->takePending(argv[1])) {
        return JSValueMakeBoolean(context, false);
    }
    return self->intrinsics.reflectHas(argc, argv, exception);
}
