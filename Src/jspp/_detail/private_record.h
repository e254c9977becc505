#ifndef SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H
#define SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H

#include "jspp/orvo/shared_ptr.h"
#include "jspp/result_context.h"

#include "jsplugin.h"

#include <cstdint>

namespace jspp {

class interface;

namespace __detail {

// What hangs in the plugin_private of a script object made for an interface. Freed by the object's
// destructor.
class private_record final {
public:
    private_record(const orvo::shared_ptr<interface>& native, jsplugin_obj* home) noexcept
        : self(native), place(reinterpret_cast<std::uintptr_t>(home)) {}

    const orvo::shared_ptr<interface> self;  // the script object keeps its native one alive
    text_slot scratch;                       // the last string result

    // Key of the interface's cache; may have gone, and is only compared.
    jsplugin_obj* document() const noexcept {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the mark shares its word
        return reinterpret_cast<jsplugin_obj*>(place & ~gone);
    }

    // The document has gone, and no member may be used any more.
    bool unloaded() const noexcept { return (place & gone) != 0; }
    void unload() noexcept { place |= gone; }

    // REQUIRES: the registry knows `obj` as a plain object, or the host has just called one of our
    // callbacks for it.
    static private_record& of(jsplugin_obj* obj) noexcept {
        return *static_cast<private_record*>(obj->plugin_private);
    }

private:
    static_assert(alignof(jsplugin_obj) > 1, "the lowest bit of an address is free");
    static constexpr std::uintptr_t gone = 1;

    std::uintptr_t place;  // the document, and whether it has gone
};

}  // namespace __detail
}  // namespace jspp

#endif
