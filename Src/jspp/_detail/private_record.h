#ifndef SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H
#define SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H

#include "jspp/_detail/pool.h"
#include "jspp/_detail/text_slot.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <memory>
#include <utility>

namespace jspp {

class interface;

namespace __detail {

// What hangs in the plugin_private of a script object made for an interface. Freed by the object's
// destructor, or by the callback that the host was in when it destroyed the object.
struct private_record : pooled<private_record> {
    private_record(const orvo::shared_ptr<interface>& native, jsplugin_obj* home) noexcept
        : self(native), document(home) {}

    const orvo::shared_ptr<interface> self;  // the script object keeps its native one alive
    jsplugin_obj* const document;            // key of the interface's cache; may have gone
    text_slot scratch;                       // the last string result

    // REQUIRES: the registry knows `obj` as a plain object, or the host has just called one of our
    // callbacks for it.
    static private_record& of(jsplugin_obj* obj) noexcept {
        return *static_cast<private_record*>(obj->plugin_private);
    }
};

// Keeps the record of a script object for the length of a callback from the host, which may
// destroy the object in anything that the callback asks of it. Script thread; on the stack.
class record_use final {
public:
    // REQUIRES: as private_record::of().
    explicit record_use(jsplugin_obj* obj) noexcept
        : record(private_record::of(obj)), outer(innermost) {
        innermost = this;
    }
    ~record_use() {
        innermost = outer;
        if (orphan) {
            // The answer may be a text of the record.
            thread_scratch() = std::move(record.scratch);
        }
    }
    record_use(const record_use&) = delete;
    record_use& operator=(const record_use&) = delete;

    // Frees the record of an object that has been destroyed, now or with its outermost use. The
    // host has taken the object away inside a callback for it: the record stays until that is over.
    static void drop(std::unique_ptr<private_record> dropped) noexcept {
        record_use* keeper = nullptr;
        for (record_use* use = innermost; use; use = use->outer) {
            if (&use->record == dropped.get()) {
                keeper = use;
            }
        }
        if (keeper) {
            keeper->orphan = std::move(dropped);
        }
    }

    // Valid as long as the use.
    private_record& record;

private:
    // Uses are nested as the callbacks are.
    record_use* const outer;
    std::unique_ptr<private_record> orphan;

    static inline record_use* innermost = nullptr;
};

}  // namespace __detail
}  // namespace jspp

#endif
