#include "runner/Function.h"

#include "engine/Text.h"

#include <exception>
#include <memory>
#include <utility>

namespace function {

namespace {

JSValueRef call(JSContextRef context,
                JSObjectRef function,
                JSObjectRef,
                size_t argc,
                const JSValueRef argv[],
                JSValueRef* exception) noexcept {
    auto* const body = static_cast<Body*>(JSObjectGetPrivate(function));
    try {
        return (*body)(context, argc, argv);
    } catch (const Thrown& thrown) {
        *exception = thrown.value;
        return nullptr;
    } catch (const std::exception& error) {
        *exception = text::makeError(context, error.what());
        return nullptr;
    }
}

void finalize(JSObjectRef function) noexcept {
    delete static_cast<Body*>(JSObjectGetPrivate(function));
}

}  // namespace

JSObjectRef make(JSContextRef context, const std::string& name, Body body) {
    static const JSClassRef functionClass = [] {
        JSClassDefinition definition = kJSClassDefinitionEmpty;
        definition.className = "Function";
        definition.attributes = kJSClassAttributeNoAutomaticPrototype;
        definition.callAsFunction = call;
        definition.finalize = finalize;
        return JSClassCreate(&definition);
    }();
    auto owned = std::make_unique<Body>(std::move(body));
    const JSObjectRef function = JSObjectMake(context, functionClass, owned.release());
    const text::EngineString source("Function.prototype");
    const JSValueRef prototype =
        JSEvaluateScript(context, source.get(), nullptr, nullptr, 1, nullptr);
    JSObjectSetPrototype(context, function, prototype);
    setProperty(context, function, "name",
                JSValueMakeString(context, text::EngineString(name).get()));
    return function;
}

void define(JSContextRef context, JSObjectRef object, const std::string& name, Body body) {
    setProperty(context, object, name, make(context, name, std::move(body)));
}

void setProperty(JSContextRef context,
                 JSObjectRef object,
                 const std::string& name,
                 JSValueRef value) {
    JSObjectSetProperty(context, object, text::EngineString(name).get(), value,
                        kJSPropertyAttributeDontEnum, nullptr);
}

}  // namespace function
