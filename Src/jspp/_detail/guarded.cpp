#include "jspp/_detail/guarded.h"

namespace jspp::__detail {

text_slot& thread_scratch() noexcept {
    thread_local text_slot scratch;
    return scratch;
}

void set_exception(jsplugin_value* slot, text_slot* scratch, const char* message) noexcept {
    if (!slot) {
        return;
    }
    slot->type = JSP_TYPE_STRING;
    try {
        slot->u.string = (scratch ? *scratch : thread_scratch()).keep(message);
    } catch (...) {
        slot->u.string = "std::bad_alloc";
    }
}

}  // namespace jspp::__detail
