#include "engine/Fronts.h"

#include "engine/Document.h"
#include "engine/Text.h"

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void JSReportExtraMemoryCost(JSContextRef context, size_t size);

namespace {

// What hangs on a script object outside of the engine's heap, about: without knowing of it the
// engine would let many thousand dead objects lie before it collects.
constexpr size_t nativeMemoryCost = 4096;

ObjectRecord* recordIn(JSObjectRef cell) noexcept {
    auto* const link = static_cast<FrontLink*>(JSObjectGetPrivate(cell));
    return link != nullptr ? link->record : nullptr;
}

// The accessor of Object.prototype answers it; no plug-in may.
bool isPrototypeName(JSStringRef name) {
    constexpr char prototype[] = "__proto__";
    return JSStringGetLength(name) == sizeof prototype - 1 &&
           JSStringIsEqualToUTF8CString(name, prototype);
}

JSValueRef
catchRead(JSContextRef, JSObjectRef cell, JSStringRef name, JSValueRef* exception) noexcept {
    ObjectRecord* const record = recordIn(cell);
    if (record == nullptr || isPrototypeName(name)) {
        return nullptr;
    }
    return record->document.readProperty(*record, name, exception);
}

bool catchWrite(JSContextRef,
                JSObjectRef cell,
                JSStringRef name,
                JSValueRef value,
                JSValueRef* exception) noexcept {
    ObjectRecord* const record = recordIn(cell);
    if (record == nullptr || record->callbacks.setter == nullptr || isPrototypeName(name)) {
        return false;
    }
    return record->document.writeProperty(*record, name, value, exception);
}

JSValueRef callFunction(JSContextRef context,
                        JSObjectRef function,
                        JSObjectRef thisObject,
                        size_t argc,
                        const JSValueRef argv[],
                        JSValueRef* exception) noexcept {
    ObjectRecord* const record = recordIn(function);
    if (record == nullptr) {
        return JSValueMakeUndefined(context);
    }
    return record->document.callNative(*record, thisObject, argc, argv, exception);
}

void finalize(JSObjectRef cell) noexcept {
    FinalizerQueue::add(static_cast<FrontLink*>(JSObjectGetPrivate(cell)));
}

JSClassDefinition definition(const char* name) {
    JSClassDefinition made = kJSClassDefinitionEmpty;
    made.className = name;
    made.attributes = kJSClassAttributeNoAutomaticPrototype;
    made.finalize = finalize;
    return made;
}

// The three classes are the process's, and are never released.
JSClassRef objectClass() {
    static const JSClassRef made = [] {
        JSClassDefinition front = definition("NativeObject");
        front.setProperty = catchWrite;
        return JSClassCreate(&front);
    }();
    return made;
}

JSClassRef functionClass() {
    static const JSClassRef made = [] {
        JSClassDefinition front = definition("Function");
        front.setProperty = catchWrite;
        front.callAsFunction = callFunction;
        return JSClassCreate(&front);
    }();
    return made;
}

JSClassRef catcherClass() {
    static const JSClassRef made = [] {
        JSClassDefinition catcher = definition("NativeObjectPrototype");
        catcher.getProperty = catchRead;
        return JSClassCreate(&catcher);
    }();
    return made;
}

}  // namespace

Fronts::Fronts(JSGlobalContextRef scriptContext, const Intrinsics& engineFunctions)
    : context(scriptContext), intrinsics(engineFunctions),
      objectFallback(context, intrinsics, intrinsics.objectPrototype()),
      functionFallback(context, intrinsics, intrinsics.functionPrototype()) {}

JSObjectRef Fronts::make(FrontLink& link) const {
    const NativeCallbacks& callbacks = link.record->callbacks;
    const bool isFunction = callbacks.call != nullptr;
    const JSObjectRef front =
        JSObjectMake(context, isFunction ? functionClass() : objectClass(), &link);
    link.cells = 1;
    if (JSReportExtraMemoryCost != nullptr) {
        JSReportExtraMemoryCost(context, nativeMemoryCost);
    }
    if (callbacks.getter == nullptr) {
        JSObjectSetPrototype(context, front,
                             isFunction ? intrinsics.functionPrototype()
                                        : intrinsics.objectPrototype());
        return front;
    }
    const JSObjectRef catcher = JSObjectMake(context, catcherClass(), &link);
    link.cells = 2;
    JSObjectSetPrototype(context, catcher,
                         isFunction ? functionFallback.object() : objectFallback.object());
    JSObjectSetPrototype(context, front, catcher);
    return front;
}

ObjectRecord* Fronts::recordOf(JSContextRef context, JSObjectRef object) noexcept {
    if (!JSValueIsObjectOfClass(context, object, objectClass()) &&
        !JSValueIsObjectOfClass(context, object, functionClass())) {
        return nullptr;
    }
    return recordIn(object);
}
