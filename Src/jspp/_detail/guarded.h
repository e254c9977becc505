#ifndef SONOLET_JSPP_DETAIL_GUARDED_H
#define SONOLET_JSPP_DETAIL_GUARDED_H

#include "jspp/_detail/text_slot.h"

#include "jsplugin.h"

#include <exception>

namespace jspp::__detail {

// The border to the host: every callback that it makes is guarded, and nothing is thrown across.

// Stores an exception's text for the host; never fails. `scratch` keeps the text, without one the
// thread's slot does. A null `slot` takes none.
void set_exception(jsplugin_value* slot, text_slot* scratch, const char* message) noexcept;

// Runs the body of a callback from the host, which answers the callback's code. An exception
// becomes its text in `slot`, and the answer `exception_code`. `slot` stays the host's; it is
// written after an exception alone. What the body has stored before it threw is overwritten. An
// exception of another kind than std::exception becomes a fixed text.
template <class Body>
int guarded(jsplugin_value* slot,
            text_slot* scratch,
            int exception_code,
            const Body& body) noexcept {
    try {
        return body();
    } catch (const std::exception& error) {
        set_exception(slot, scratch, error.what());
    } catch (...) {
        set_exception(slot, scratch, "JSPP: Unknown exception type");
    }
    return exception_code;
}

}  // namespace jspp::__detail

#endif
