#include "jspp/_detail/callback_manager.h"

namespace jspp::__detail {

callback_manager& callbacks() {
    static callback_manager& queue = *new callback_manager;
    return queue;
}

namespace {

// Constructed while the plug-in is loaded, as long as nothing else asks earlier.
[[maybe_unused]] const callback_manager& made_at_load = callbacks();

}  // namespace

bool callback_manager::add(const object& function, const call_parameters& parameters) {
    const orvo::scoped_lock lock(mutex);
    // Asked under the lock: a document that unloads takes its calls out after its functions went.
    jsplugin_obj* const document = function.document();
    if (document) {
        // A vector that grows moves its calls, so nothing is dropped here.
        calls[document].emplace_back(function, parameters);
    }
    return document != nullptr;
}

callback_manager::pending callback_manager::take(jsplugin_obj* document) {
    pending taken;
    const orvo::scoped_lock lock(mutex);
    const auto waiting = calls.find(document);
    if (waiting != calls.end()) {
        taken.swap(waiting->second);
        calls.erase(waiting);
    }
    return taken;
}

}  // namespace jspp::__detail
