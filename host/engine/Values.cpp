#include "engine/Values.h"

#include "engine/ObjectStore.h"
#include "engine/Text.h"

PluginArguments::PluginArguments(ObjectStore& objects,
                                 JSContextRef context,
                                 size_t argc,
                                 const JSValueRef argv[])
    : size(argc) {
    if (argc > few.size()) {
        many.resize(argc);
    }
    jsplugin_value* const values = data();
    for (size_t i = 0; i < argc; ++i) {
        values[i] = convert(objects, context, argv[i]);
    }
}

jsplugin_value
PluginArguments::convert(ObjectStore& objects, JSContextRef context, JSValueRef value) {
    jsplugin_value converted = {};
    switch (JSValueGetType(context, value)) {
    case kJSTypeNull:
        converted.type = JSP_TYPE_NULL;
        break;
    case kJSTypeBoolean:
        converted.type = JSP_TYPE_BOOLEAN;
        converted.u.boolean = JSValueToBoolean(context, value) ? 1 : 0;
        break;
    case kJSTypeNumber:
        converted.type = JSP_TYPE_NUMBER;
        converted.u.number = JSValueToNumber(context, value, nullptr);
        break;
    case kJSTypeString:
        converted.type = JSP_TYPE_STRING;
        strings.reserve(size);
        converted.u.string = strings.emplace_back(text::toUtf8(context, value)).c_str();
        break;
    case kJSTypeObject: {
        ObjectRecord& record = objects.handOut(JSValueToObject(context, value, nullptr));
        converted.type =
            record.kind == ObjectRecord::Kind::Native ? JSP_TYPE_NATIVE_OBJECT : JSP_TYPE_OBJECT;
        converted.u.object = &record;
        break;
    }
    default:
        // Symbols and big integers have no type on the other side.
        converted.type = JSP_TYPE_UNDEFINED;
        break;
    }
    return converted;
}

std::string messageOf(const jsplugin_value& value) {
    return value.type == JSP_TYPE_STRING && value.u.string != nullptr
               ? value.u.string
               : "the plug-in failed and gave no message";
}
