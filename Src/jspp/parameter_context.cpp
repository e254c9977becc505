#include "jspp/parameter_context.h"

#include "jspp/_detail/private_record.h"
#include "jspp/interface.h"

#include <cmath>
#include <limits>

namespace jspp {

namespace {

bool is_any_object(const jsplugin_value& value) noexcept {
    return (value.type == JSP_TYPE_NATIVE_OBJECT || value.type == JSP_TYPE_OBJECT) &&
           value.u.object;
}

}  // namespace

int to_int(double number) noexcept {
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    if (number <= std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(number);
}

const jsplugin_value& parameter_context::at(int i) const {
    if (i >= argc) {
        throw std::runtime_error("Not enough arguments");
    }
    return argv[i];
}

const jsplugin_value&
parameter_context::at(int i, jsplugin_type type, const char* complaint) const {
    const jsplugin_value& value = at(i);
    if (value.type != type) {
        throw std::runtime_error(complaint);
    }
    return value;
}

double parameter_context::number(int i) const {
    return at(i, JSP_TYPE_NUMBER, "Not a number").u.number;
}

int parameter_context::integer(int i) const {
    return to_int(number(i));
}

bool parameter_context::boolean(int i) const {
    return at(i, JSP_TYPE_BOOLEAN, "Not a boolean").u.boolean != 0;
}

std::string parameter_context::string(int i) const {
    const char* const text = at(i, JSP_TYPE_STRING, "Not a string").u.string;
    return text ? text : "";
}

object parameter_context::object(int i) const {
    const jsplugin_value& value = at(i);
    if (!is_any_object(value)) {
        throw std::runtime_error("Not an object");
    }
    __detail::objects().require_object(caller);
    return jspp::object(value.u.object, caller);
}

orvo::shared_ptr<interface> parameter_context::native_of(int i) const {
    const jsplugin_value& value = at(i);
    if (!is_any_object(value)) {
        throw std::runtime_error("Not an interface");
    }
    // The private data of an object that the registry does not know belongs to somebody else.
    __detail::objects().require_object(value.type == JSP_TYPE_NATIVE_OBJECT ? value.u.object
                                                                            : nullptr);
    return __detail::private_record::of(value.u.object).self;
}

}  // namespace jspp
