#include "jspp/result_context.h"

#include "jspp/interface.h"

namespace jspp {

void result_context::set_type(jsplugin_type type) noexcept {
    result->type = type;
    returned = true;
    may_cache = false;
}

void result_context::set_text(jsplugin_type type, const std::string& string) {
    __detail::text_slot& slot = text ? *text : __detail::thread_scratch();
    const char* const kept = slot.keep(string);
    set_type(type);
    result->u.string = kept;
}

void result_context::return_number(double number) noexcept {
    set_type(JSP_TYPE_NUMBER);
    result->u.number = number;
}

void result_context::return_boolean(bool boolean) noexcept {
    set_type(JSP_TYPE_BOOLEAN);
    result->u.boolean = boolean ? 1 : 0;
}

void result_context::return_string(const std::string& string) {
    set_text(JSP_TYPE_STRING, string);
}

void result_context::return_string(const char* string) {
    return_string(std::string(string ? string : ""));
}

void result_context::return_js_expression(const std::string& expression) {
    set_text(JSP_TYPE_EXPRESSION, expression);
}

void result_context::return_js_date(const std::string& date) {
    return_js_expression("new Date(" + date + ")");
}

void result_context::return_null() noexcept {
    set_type(JSP_TYPE_NULL);
}

void result_context::return_undefined() noexcept {
    set_type(JSP_TYPE_UNDEFINED);
}

void result_context::return_object(const object& script_object) {
    jsplugin_obj* const obj = script_object.get();
    if (!obj) {
        return_null();
        return;
    }
    set_type(JSP_TYPE_OBJECT);
    result->u.object = obj;
}

void result_context::return_interface(const orvo::shared_ptr<interface>& native,
                                      bool is_cacheable) {
    if (!native) {
        return_null();
        return;
    }
    if (text) {
        __detail::objects().require_object(owner);
    }
    jsplugin_obj* const obj = native->create_object(owner, native);
    set_type(JSP_TYPE_NATIVE_OBJECT);
    result->u.object = obj;
    may_cache = is_cacheable;
}

}  // namespace jspp
