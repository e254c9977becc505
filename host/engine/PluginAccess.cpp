#include "engine/PluginAccess.h"

#include "engine/Intrinsics.h"
#include "engine/ObjectStore.h"
#include "engine/PluginCalls.h"
#include "engine/Text.h"
#include "engine/Values.h"

JSValueRef PluginAccess::read(ObjectRecord& record, JSStringRef name, JSValueRef* exception) {
    Fallback& fallback = store.fallbackFor(record);
    fallback.clear();
    const PluginCalls::Call call(calls);
    store.touch(record);
    const std::string utf8 = text::toUtf8(name);
    jsplugin_value result = {};
    const int answer = record.callbacks.getter(&record, utf8.c_str(), &result);
    switch (answer) {
    case JSP_GET_NO_VALUE:
        return engine.undefined();
    case JSP_GET_VALUE:
    case JSP_GET_VALUE_CACHE: {
        const JSValueRef value = store.namedValue(result, utf8, exception);
        if (value != nullptr && answer == JSP_GET_VALUE_CACHE) {
            store.cache(record, name, value);
        }
        return value;
    }
    case JSP_GET_EXCEPTION:
        fallback.leave(utf8, messageOf(result));
        return nullptr;
    default:
        return nullptr;
    }
}

bool PluginAccess::write(ObjectRecord& record,
                         JSStringRef name,
                         JSValueRef value,
                         JSValueRef* exception) {
    const PluginCalls::Call call(calls);
    store.touch(record);
    const std::string utf8 = text::toUtf8(name);
    PluginArguments argument(store, context, 1, &value);
    switch (record.callbacks.setter(&record, utf8.c_str(), argument.data())) {
    case JSP_PUT_READ_ONLY:
        *exception = engine.makeError("Cannot set \"" + utf8 + "\": it is read-only");
        return true;
    case JSP_PUT_EXCEPTION:
        *exception = engine.makeError(messageOf(*argument.data()));
        return true;
    case JSP_GET_NO_PROPERTY:
        return false;  // the page's own property
    default:
        store.uncache(record, name);
        return true;
    }
}

JSValueRef PluginAccess::call(ObjectRecord& function,
                              JSObjectRef thisObject,
                              size_t argc,
                              const JSValueRef argv[],
                              JSValueRef* exception) {
    const PluginCalls::Call call(calls);
    store.touch(function);
    jsplugin_obj* thisRecord = nullptr;
    if (thisObject != nullptr && thisObject != store.global().object) {
        thisRecord = &store.handOut(thisObject);
    }
    PluginArguments arguments(store, context, argc, argv);
    jsplugin_value result = {};
    switch (function.callbacks.call(thisRecord, &function, arguments.count(), arguments.data(),
                                    &result)) {
    case JSP_CALL_NO_FUNCTION:
        *exception = engine.makeTypeError(
            (function.name.empty() ? "the object" : '"' + function.name + '"') +
            " is not a function");
        return nullptr;
    case JSP_CALL_VALUE:
        return store.toScript(context, result, exception);
    case JSP_CALL_EXCEPTION:
        *exception = engine.makeError(messageOf(result));
        return nullptr;
    default:
        return engine.undefined();
    }
}
