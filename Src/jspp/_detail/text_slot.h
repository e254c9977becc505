#ifndef SONOLET_JSPP_DETAIL_TEXT_SLOT_H
#define SONOLET_JSPP_DETAIL_TEXT_SLOT_H

#include <memory>
#include <string>

namespace jspp::__detail {

// The last text that went to the host through an object; made with the first, since most objects
// answer none. The host copies a text before it calls again, so one is enough. Script thread. A
// slot that is moved takes its text along, at the same address.
class text_slot final {
public:
    // The copy, valid until the next. Throws std::bad_alloc, and the text before stays.
    const char* keep(const std::string& text) {
        if (kept) {
            *kept = text;
        } else {
            kept = std::make_unique<std::string>(text);
        }
        return kept->c_str();
    }

private:
    std::unique_ptr<std::string> kept;
};

// For an owner without a slot of its own, a document for example. One for each thread.
text_slot& thread_scratch() noexcept;

}  // namespace jspp::__detail

#endif
