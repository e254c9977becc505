#include "jspp/call_parameters.h"

namespace jspp {

namespace {

jsplugin_value value_of_type(jsplugin_type type) {
    jsplugin_value value{};
    value.type = type;
    return value;
}

}  // namespace

void call_parameters::add(double number) {
    jsplugin_value value = value_of_type(JSP_TYPE_NUMBER);
    value.u.number = number;
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_standart(value)));
}

void call_parameters::add(int number) {
    add(static_cast<double>(number));
}

void call_parameters::add(bool boolean) {
    jsplugin_value value = value_of_type(JSP_TYPE_BOOLEAN);
    value.u.boolean = boolean ? 1 : 0;
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_standart(value)));
}

void call_parameters::add(const char* text) {
    add(std::string(text ? text : ""));
}

void call_parameters::add(const std::string& text) {
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_string(text)));
}

void call_parameters::add(const object& script_object) {
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_object(script_object)));
}

void call_parameters::add_null() {
    const jsplugin_value value = value_of_type(JSP_TYPE_NULL);
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_standart(value)));
}

void call_parameters::add_undefined() {
    const jsplugin_value value = value_of_type(JSP_TYPE_UNDEFINED);
    values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_standart(value)));
}

void call_parameters::generate_values(jsplugin_obj* context,
                                      std::vector<jsplugin_value>& result) const {
    result.reserve(result.size() + values.size());
    for (const auto& value : values) {
        result.push_back(value->get_value(context));
    }
}

jsplugin_value call_parameters::_s_value_string::get_value(jsplugin_obj*) const {
    jsplugin_value value = value_of_type(JSP_TYPE_STRING);
    value.u.string = text.c_str();
    return value;
}

jsplugin_value call_parameters::_s_value_object::get_value(jsplugin_obj*) const {
    jsplugin_value value = value_of_type(JSP_TYPE_UNDEFINED);
    if (jsplugin_obj* const obj = script_object.get()) {
        value.type = JSP_TYPE_OBJECT;
        value.u.object = obj;
    }
    return value;
}

}  // namespace jspp
