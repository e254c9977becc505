#include "engine/GlobalNames.h"

#include "engine/Intrinsics.h"
#include "engine/ObjectStore.h"
#include "engine/PluginCalls.h"
#include "engine/Text.h"
#include "engine/Values.h"

GlobalNames::GlobalNames(JSGlobalContextRef scriptContext,
                         const struct jsplugin_capabilities& capabilities,
                         const Intrinsics& engineFunctions,
                         ObjectStore& objects,
                         PluginCalls& pluginCalls)
    : context(scriptContext), plugin(capabilities), engine(engineFunctions), store(objects),
      calls(pluginCalls) {}

GlobalNames::~GlobalNames() {
    remove();
}

void GlobalNames::install() {
    char** offered = plugin.global_names;
    for (; offered != nullptr && *offered != nullptr; ++offered) {
        Name& name = *names.emplace_back(std::make_unique<Name>(Name{*this, *offered}));
        name.getter = makeAccessor(&GlobalNames::get, name);
        name.setter = makeAccessor(&GlobalNames::set, name);
        engine.defineAccessor(JSContextGetGlobalObject(context),
                              text::EngineString(name.text).get(), name.getter, name.setter);
    }
}

void GlobalNames::remove() noexcept {
    for (const auto& name : names) {
        for (const JSObjectRef accessor : {name->getter, name->setter}) {
            JSObjectSetPrivate(accessor, nullptr);
            JSValueUnprotect(context, accessor);
        }
    }
    names.clear();
}

JSObjectRef GlobalNames::makeAccessor(JSObjectCallAsFunctionCallback callback, Name& name) const {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.attributes = kJSClassAttributeNoAutomaticPrototype;
    definition.className = "Function";
    definition.callAsFunction = callback;
    const JSClassRef accessorClass = JSClassCreate(&definition);
    const JSObjectRef accessor = JSObjectMake(context, accessorClass, &name);
    JSClassRelease(accessorClass);
    JSValueProtect(context, accessor);
    return accessor;
}

JSValueRef GlobalNames::read(const Name& name, JSValueRef* exception) {
    if (plugin.global_getter == nullptr) {
        return JSValueMakeUndefined(context);
    }
    const PluginCalls::Call call(calls);
    jsplugin_value result = {};
    const int answer = plugin.global_getter(&store.global(), name.text.c_str(), &result);
    switch (answer) {
    case JSP_GET_VALUE:
    case JSP_GET_VALUE_CACHE: {
        ObjectStore::named(result, name.text);
        const JSValueRef value = store.toScript(context, result, exception);
        if (value != nullptr && answer == JSP_GET_VALUE_CACHE) {
            replace(name, value);
        }
        return value;
    }
    case JSP_GET_EXCEPTION:
        *exception = engine.makeError(messageOf(result));
        return nullptr;
    default:
        return JSValueMakeUndefined(context);
    }
}

void GlobalNames::write(const Name& name, JSValueRef value, JSValueRef* exception) {
    if (plugin.global_setter == nullptr) {
        replace(name, value);
        return;
    }
    const PluginCalls::Call call(calls);
    PluginArguments argument(store, context, 1, &value);
    switch (plugin.global_setter(&store.global(), name.text.c_str(), argument.data())) {
    case JSP_PUT_READ_ONLY:
        *exception = engine.makeError("Cannot set \"" + name.text + "\": it is read-only");
        break;
    case JSP_PUT_EXCEPTION:
        *exception = engine.makeError(messageOf(*argument.data()));
        break;
    case JSP_GET_NO_PROPERTY:
        replace(name, value);
        break;
    default:
        break;
    }
}

void GlobalNames::replace(const Name& name, JSValueRef value) {
    engine.define(JSContextGetGlobalObject(context), text::EngineString(name.text).get(), value,
                  true);
}

JSValueRef GlobalNames::get(JSContextRef context,
                            JSObjectRef function,
                            JSObjectRef,
                            size_t,
                            const JSValueRef[],
                            JSValueRef* exception) noexcept {
    const auto* const name = static_cast<Name*>(JSObjectGetPrivate(function));
    return name != nullptr ? name->owner.read(*name, exception) : JSValueMakeUndefined(context);
}

JSValueRef GlobalNames::set(JSContextRef context,
                            JSObjectRef function,
                            JSObjectRef,
                            size_t argc,
                            const JSValueRef argv[],
                            JSValueRef* exception) noexcept {
    const auto* const name = static_cast<Name*>(JSObjectGetPrivate(function));
    if (name != nullptr && argc > 0) {
        name->owner.write(*name, argv[0], exception);
    }
    return JSValueMakeUndefined(context);
}
