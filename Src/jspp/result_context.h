#ifndef SONOLET_JSPP_RESULT_CONTEXT_H
#define SONOLET_JSPP_RESULT_CONTEXT_H

#include "jspp/_detail/text_slot.h"
#include "jspp/object.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <string>

namespace jspp {

class interface;

// Where a member function puts its answer to script. Each return call overwrites an earlier one.
//
// Valid for the length of one property access or call, on the script thread. A string result lives
// in the script object through which it is returned until that object's next string result; the
// host copies it at once.
class result_context {
public:
    // `scratch` keeps the text of a string result; without one a per-thread buffer does. A script
    // object has one, a document has none.
    result_context(jsplugin_obj* owner_object,
                   jsplugin_value* result_slot,
                   __detail::text_slot* scratch = nullptr) noexcept
        : owner(owner_object), result(result_slot), text(scratch) {}

    void return_number(double number) noexcept;
    void return_boolean(bool boolean) noexcept;
    void return_string(const std::string& string);
    void return_string(const char* string);  // null is the empty text

    // Script text that the host evaluates; script receives what it gives. It is evaluated with the
    // page's rights: nothing that comes from outside belongs in there.
    void return_js_expression(const std::string& expression);

    // A Date made from milliseconds since 1970, or from a date's text, both as script writes them.
    // Part of the framework's interface; no class here calls it.
    void return_js_date(const std::string& date);

    void return_null() noexcept;
    // Part of the framework's interface; no class here calls it.
    void return_undefined() noexcept;

    // Null when the script object has gone.
    void return_object(const object& script_object);

    // The script object of a native one in this document, null for a null pointer. `is_cacheable`:
    // the host may keep the answer and need not ask again. Throws when the owner's document has
    // gone, and what create_object() throws.
    void return_interface(const orvo::shared_ptr<interface>& native, bool is_cacheable);

    bool has_result() const noexcept { return returned; }

    // The answer of a getter that has run.
    int getter_answer() const noexcept {
        if (!returned) {
            return JSP_GET_NO_VALUE;
        }
        return may_cache ? JSP_GET_VALUE_CACHE : JSP_GET_VALUE;
    }

private:
    void set_type(jsplugin_type type) noexcept;
    void set_text(jsplugin_type type, const std::string& string);

    jsplugin_obj* const owner;
    jsplugin_value* const result;
    bool returned = false;
    bool may_cache = false;
    __detail::text_slot* const text;
};

}  // namespace jspp

#endif
