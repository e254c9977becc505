#include "engine/Intrinsics.h"

#include "engine/Text.h"

#include <array>
#include <stdexcept>

namespace {

const char* const script = R"js((function () {
    'use strict';
    const define = Object.defineProperty;
    return {
        __proto__: null,
        holders: new WeakMap(),
        set: WeakMap.prototype.set,
        value: (object, name, value, enumerable) => define(object, name,
            { __proto__: null, value, writable: true, enumerable, configurable: true }),
        accessor: (object, name, get, set) => define(object, name,
            { __proto__: null, get, set, enumerable: true, configurable: true }),
        typeError: TypeError,
    };
})())js";

JSObjectRef evaluate(JSGlobalContextRef context) {
    const text::EngineString source(script);
    JSValueRef exception = nullptr;
    const JSValueRef result =
        JSEvaluateScript(context, source.get(), nullptr, nullptr, 1, &exception);
    if (exception != nullptr || result == nullptr) {
        throw std::runtime_error("the script engine lacks a needed function: " +
                                 (exception != nullptr ? text::toUtf8(context, exception) : ""));
    }
    return JSValueToObject(context, result, nullptr);
}

}  // namespace

Intrinsics::Intrinsics(JSGlobalContextRef scriptContext)
    : context(scriptContext),
      table(evaluate(scriptContext)), constants{JSValueMakeUndefined(context),
                                                JSValueMakeNull(context),
                                                JSValueMakeBoolean(context, false),
                                                JSValueMakeBoolean(context, true)} {
    holders = member("holders");
    holdersSet = member("set");
    defineValue = member("value");
    definePair = member("accessor");
    typeError = member("typeError");
    JSValueProtect(context, table);
    for (const JSValueRef constant : constants) {
        JSValueProtect(context, constant);
    }
}

Intrinsics::~Intrinsics() {
    for (const JSValueRef constant : constants) {
        JSValueUnprotect(context, constant);
    }
    JSValueUnprotect(context, table);
}

JSObjectRef Intrinsics::member(const char* name) const {
    const text::EngineString key(name);
    const JSValueRef value = JSObjectGetProperty(context, table, key.get(), nullptr);
    if (value == nullptr || !JSValueIsObject(context, value)) {
        throw std::runtime_error(std::string("the script engine has no ") + name);
    }
    return JSValueToObject(context, value, nullptr);
}

void Intrinsics::hold(JSObjectRef holder, const std::vector<JSValueRef>& held) const {
    const JSObjectRef list = JSObjectMakeArray(context, held.size(), held.data(), nullptr);
    const std::array<JSValueRef, 2> arguments = {holder, list};
    JSObjectCallAsFunction(context, holdersSet, holders, 2, arguments.data(), nullptr);
}

bool Intrinsics::defineBy(JSObjectRef definer,
                          JSObjectRef object,
                          JSStringRef name,
                          JSValueRef first,
                          JSValueRef second) const {
    const std::array<JSValueRef, 4> arguments = {object, JSValueMakeString(context, name), first,
                                                 second};
    JSValueRef exception = nullptr;
    JSObjectCallAsFunction(context, definer, nullptr, 4, arguments.data(), &exception);
    return exception == nullptr;
}

bool Intrinsics::define(JSObjectRef object,
                        JSStringRef name,
                        JSValueRef value,
                        bool enumerable) const {
    return defineBy(defineValue, object, name, value, boolean(enumerable));
}

void Intrinsics::defineAccessor(JSObjectRef object,
                                JSStringRef name,
                                JSObjectRef getter,
                                JSObjectRef setter) const {
    defineBy(definePair, object, name, getter, setter);
}

JSValueRef Intrinsics::makeError(const std::string& message) const {
    const text::EngineString string(message);
    const JSValueRef argument = JSValueMakeString(context, string.get());
    return JSObjectMakeError(context, 1, &argument, nullptr);
}

JSValueRef Intrinsics::makeTypeError(const std::string& message) const {
    const text::EngineString string(message);
    const JSValueRef argument = JSValueMakeString(context, string.get());
    return JSObjectCallAsConstructor(context, typeError, 1, &argument, nullptr);
}
