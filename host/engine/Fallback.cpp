#include "engine/Fallback.h"

#include "engine/Text.h"

Fallback::Fallback(JSGlobalContextRef scriptContext,
                   const Intrinsics& engineFunctions,
                   JSObjectRef base)
    : context(scriptContext), intrinsics(engineFunctions), get(makeTrap(&Fallback::getTrap)),
      has(makeTrap(&Fallback::hasTrap)), proxy(intrinsics.makeFallback(base, get, has)) {
    JSValueProtect(context, proxy);
}

Fallback::~Fallback() {
    for (const JSObjectRef trap : {get, has}) {
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

void Fallback::leave(const std::string& name, const std::string& text) {
    pendingName = name;
    message = text;
    pending = true;
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
    if (self->pending) {
        self->pending = false;
        if (JSValueIsString(context, argv[1]) &&
            text::toUtf8(context, argv[1]) == self->pendingName) {
            *exception = self->intrinsics.makeError(self->message);
            return nullptr;
        }
    }
    return self->intrinsics.reflectGet(argc, argv, exception);
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
    if (self->pending) {
        self->pending = false;
        return JSValueMakeBoolean(context, false);
    }
    return self->intrinsics.reflectHas(argc, argv, exception);
}
