#include "engine/PluginAccess.h"

#include "engine/ObjectStore.h"
#include "engine/PluginCalls.h"
#include "engine/Text.h"
#include "engine/Values.h"

PluginAccess::PluginAccess(JSGlobalContextRef scriptContext,
                           ObjectStore& objects,
                           PluginCalls& pluginCalls)
    : context(scriptContext), store(objects), calls(pluginCalls),
      typeError(JSValueToObject(
          context,
          JSEvaluateScript(
              context, text::EngineString("TypeError").get(), nullptr, nullptr, 1, nullptr),
          nullptr)) {
    JSValueProtect(context, typeError);
}

PluginAccess::~PluginAccess() {
    JSValueUnprotect(context, typeError);
}

Reading PluginAccess::read(ObjectRecord& record, const std::string& name, JSValueRef* exception) {
    const PluginCalls::Call call(calls);
    store.seen(record);
    Reading reading;
    jsplugin_value result = {};
    const int answer = record.callbacks.getter(&record, name.c_str(), &result);
    switch (answer) {
    case JSP_GET_NO_VALUE:
        reading.answer = Reading::isFound;
        break;
    case JSP_GET_VALUE:
    case JSP_GET_VALUE_CACHE:
        reading.answer = Reading::isFound | (answer == JSP_GET_VALUE_CACHE ? Reading::isKept : 0);
        if (result.type == JSP_TYPE_NUMBER) {
            reading.answer |= Reading::isNumber;
            reading.number = result.u.number;
        } else {
            convert(record, name, result, reading, exception);
        }
        break;
    case JSP_GET_EXCEPTION:
        *exception = text::makeError(context, messageOf(result));
        break;
    default:
        break;
    }
    return reading;
}

void PluginAccess::convert(ObjectRecord& record,
                           const std::string& name,
                           const jsplugin_value& result,
                           Reading& reading,
                           JSValueRef* exception) {
    ObjectRecord* const function = ObjectStore::named(result, name);
    if ((reading.answer & Reading::isKept) != 0 && function != nullptr) {
        reading.value = store.partOf(record, *function);
        reading.answer |= reading.value != nullptr ? Reading::isPart : 0;
    }
    if (reading.value == nullptr) {
        reading.value = store.toScript(result, exception);
    }
}

bool PluginAccess::write(ObjectRecord& record,
                         const std::string& name,
                         JSValueRef value,
                         JSValueRef* exception) {
    const PluginCalls::Call call(calls);
    store.seen(record);
    PluginArguments argument(store, context, 1, &value);
    switch (record.callbacks.setter(&record, name.c_str(), argument.data())) {
    case JSP_PUT_READ_ONLY:
        *exception = text::makeError(context, "Cannot set \"" + name + "\": it is read-only");
        return true;
    case JSP_PUT_EXCEPTION:
        *exception = text::makeError(context, messageOf(*argument.data()));
        return true;
    case JSP_GET_NO_PROPERTY:
        return false;  // the page's own property
    default:
        return true;
    }
}

JSValueRef PluginAccess::call(ObjectRecord& function,
                              JSObjectRef thisObject,
                              size_t argc,
                              const JSValueRef argv[],
                              JSValueRef* exception) {
    const PluginCalls::Call call(calls);
    store.seen(function);
    jsplugin_obj* thisRecord = nullptr;
    if (thisObject != nullptr && thisObject != store.global().object) {
        thisRecord = &store.handOutThis(thisObject);
    }
    PluginArguments arguments(store, context, argc, argv);
    jsplugin_value result = {};
    switch (function.callbacks.call(thisRecord, &function, static_cast<int>(argc), arguments.data(),
                                    &result)) {
    case JSP_CALL_NO_FUNCTION: {
        const std::string name =
            function.name == nullptr ? "the object" : '"' + text::toUtf8(function.name) + '"';
        const text::EngineString message(name + " is not a function");
        const JSValueRef argument = JSValueMakeString(context, message.get());
        *exception = JSObjectCallAsConstructor(context, typeError, 1, &argument, nullptr);
        return nullptr;
    }
    case JSP_CALL_VALUE:
        return store.toScript(result, exception);
    case JSP_CALL_EXCEPTION:
        *exception = text::makeError(context, messageOf(result));
        return nullptr;
    default:
        return JSValueMakeUndefined(context);
    }
}

void PluginAccess::drop(ObjectRecord& function) {
    store.loosen(function);
}
