#include "engine/Values.h"

#include "engine/ObjectStore.h"
#include "engine/Text.h"

PluginArguments::PluginArguments(ObjectStore& objects,
                                 JSContextRef context,
                                 size_t argc,
                                 const JSValueRef argv[])
    : many(argc > few.size() ? argc : 0), values(argc == 0      ? nullptr
                                                 : many.empty() ? few.data()
                                                                : many.data()) {
    for (size_t i = 0; i < argc; ++i) {
        jsplugin_value& converted = values[i] = {};
        switch (JSValueGetType(context, argv[i])) {
        case kJSTypeNull:
            converted.type = JSP_TYPE_NULL;
            break;
        case kJSTypeBoolean:
            converted.type = JSP_TYPE_BOOLEAN;
            converted.u.boolean = JSValueToBoolean(context, argv[i]) ? 1 : 0;
            break;
        case kJSTypeNumber:
            converted.type = JSP_TYPE_NUMBER;
            converted.u.number = JSValueToNumber(context, argv[i], nullptr);
            break;
        case kJSTypeString:
            converted.type = JSP_TYPE_STRING;
            strings.reserve(argc);
            converted.u.string = strings.emplace_back(text::toUtf8(context, argv[i])).c_str();
            break;
        case kJSTypeObject: {
            ObjectRecord& record = objects.handOut(JSValueToObject(context, argv[i], nullptr));
            converted.type = record.kind == ObjectRecord::Kind::Native ? JSP_TYPE_NATIVE_OBJECT
                                                                       : JSP_TYPE_OBJECT;
            converted.u.object = &record;
            break;
        }
        default:
            // Symbols and big integers have no type on the other side.
            converted.type = JSP_TYPE_UNDEFINED;
            break;
        }
    }
}

std::string messageOf(const jsplugin_value& value) {
    return value.type == JSP_TYPE_STRING && value.u.string != nullptr
               ? value.u.string
               : "the plug-in failed and gave no message";
}
