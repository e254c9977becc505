#include "engine/Intrinsics.h"

#include "engine/Text.h"

Intrinsics::Intrinsics(JSGlobalContextRef scriptContext)
    : context(scriptContext),
      values{JSValueMakeUndefined(context), JSValueMakeNull(context),
             JSValueMakeBoolean(context, false), JSValueMakeBoolean(context, true),
             JSEvaluateScript(
                 context, text::EngineString("TypeError").get(), nullptr, nullptr, 1, nullptr)} {
    for (const JSValueRef value : values) {
        JSValueProtect(context, value);
    }
}

Intrinsics::~Intrinsics() {
    for (const JSValueRef value : values) {
        JSValueUnprotect(context, value);
    }
}

JSValueRef Intrinsics::makeError(const std::string& message) const {
    const JSValueRef argument = JSValueMakeString(context, text::EngineString(message).get());
    return JSObjectMakeError(context, 1, &argument, nullptr);
}

JSValueRef Intrinsics::makeTypeError(const std::string& message) const {
    const JSValueRef argument = JSValueMakeString(context, text::EngineString(message).get());
    return JSObjectCallAsConstructor(context, const_cast<JSObjectRef>(values.back()), 1, &argument,
                                     nullptr);
}
