#ifndef SONOLET_JSPP_PARAMETER_CONTEXT_H
#define SONOLET_JSPP_PARAMETER_CONTEXT_H

#include "jspp/object.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <stdexcept>
#include <string>

namespace jspp {

class interface;

// The arguments of a call from script, or the one value that script assigns. Indexes count from 0.
//
// Valid for the length of the call, on the script thread. Errors: a missing argument or one of
// another kind throws std::runtime_error with the text that script is to see.
class parameter_context {
public:
    parameter_context(jsplugin_obj* calling_object, int count, jsplugin_value* values) noexcept
        : caller(calling_object), argc(count), argv(values) {}

    // "Not enough arguments" for one that is missing, "Not a number" for another kind.
    double number(int i) const;

    // A number as an int: truncated toward zero, saturated at the ends of the range, NaN is 0.
    int integer(int i) const;

    // Exactly of the kind: nothing is converted.
    bool boolean(int i) const;
    std::string string(int i) const;

    // A handle to the argument's script object or function. Throws when the calling object's
    // document has gone. "Not an object" for anything else, null among it.
    jspp::object object(int i) const;

    // The native object behind an argument that is a script object of this framework.
    template <class T>
    orvo::shared_ptr<T> interface_of(int i) const {
        orvo::shared_ptr<T> native = orvo::dynamic_pointer_cast<T>(native_of(i));
        if (!native) {
            throw std::runtime_error("Parameter is not of the requested interface type.");
        }
        return native;
    }

private:
    const jsplugin_value& at(int i) const;
    const jsplugin_value& at(int i, jsplugin_type type, const char* complaint) const;
    // Throws "Not a jspp interface" for a script object of anybody else.
    orvo::shared_ptr<interface> native_of(int i) const;

    jsplugin_obj* const caller;
    const int argc;
    jsplugin_value* const argv;
};

// Truncates toward zero, saturates at the ends of the range; NaN is 0.
int to_int(double number) noexcept;

}  // namespace jspp

#endif
