#ifndef SONOLET_JSPP_FUNCTION_CONTEXT_H
#define SONOLET_JSPP_FUNCTION_CONTEXT_H

#include "jspp/parameter_context.h"
#include "jspp/result_context.h"

namespace jspp {

// One call from script: its arguments, and the place for its result. A member function reads the
// one and answers through the other; one that answers nothing gives script undefined. Valid for the
// length of the call, on the script thread.
class function_context final : public parameter_context, public result_context {
public:
    // All are the host's and outlive the context. `values` may be null when `count` is 0.
    function_context(jsplugin_obj* this_object,
                     int count,
                     jsplugin_value* values,
                     jsplugin_value* result_slot,
                     __detail::text_slot* scratch = nullptr) noexcept
        : parameter_context(this_object, count, values),
          result_context(this_object, result_slot, scratch) {}
};

}  // namespace jspp

#endif
