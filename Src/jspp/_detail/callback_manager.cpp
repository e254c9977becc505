#include "jspp/_detail/callback_manager.h"

namespace jspp::__detail {

callback_manager& callbacks() {
    static callback_manager& queue = *new callback_manager;
    return queue;
}

namespace {

// Constructed while the plug-in is loaded, as long as nothing else asks earlier.
[[maybe_unused]] const callback_manager& made_at_load = callbacks();

// Of calls.
constexpr std::size_t first_piece = 4;
constexpr std::size_t later_pieces = 64;

}  // namespace

bool callback_manager::add(const object& function, const call_parameters& parameters) {
    // Asked under the lock: a document that unloads takes its calls out after its functions went.
    jsplugin_obj* const document = function.document();
    if (document) {
        pending& waiting = calls[document];
        if (waiting.empty() || waiting.back().size() == waiting.back().capacity()) {
            const std::size_t room = waiting.empty() ? first_piece : later_pieces;
            waiting.emplace_back().reserve(room);
        }
        waiting.back().emplace_back(function, parameters);
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
