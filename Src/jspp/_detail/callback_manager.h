#ifndef SONOLET_JSPP_DETAIL_CALLBACK_MANAGER_H
#define SONOLET_JSPP_DETAIL_CALLBACK_MANAGER_H

#include "jspp/call_parameters.h"
#include "jspp/object.h"
#include "jspp/orvo/mutex.h"

#include <list>
#include <map>
#include <utility>
#include <vector>

namespace jspp::__detail {

// The script calls that wait for their document's next tick.
//
// Threads: any. Nothing is called and nothing destroyed while the lock is held: dropping a call may
// drop the last reference to a native object. Whoever adds calls takes the lock, for all that he
// adds at once; event_dispatcher keeps who listens under it too.
class callback_manager final {
public:
    using call = std::pair<object, call_parameters>;
    // In short pieces: a burst of events moves no call that waits, and a piece is dropped while the
    // processor has it at hand.
    using pending = std::list<std::vector<call>>;

    callback_manager() = default;
    callback_manager(const callback_manager&) = delete;
    callback_manager& operator=(const callback_manager&) = delete;

    // False when the function refers to nothing any more; then nothing is queued.
    bool add(const object& function, const call_parameters& parameters) ORVO_REQUIRES(mutex);

    // Hands over everything that waits for the document, in the order queued. Empty when nothing
    // waits; what is queued from here on waits for the next tick.
    pending take(jsplugin_obj* document) ORVO_EXCLUDES(mutex);

    orvo::Mutex mutex;

private:
    std::map<jsplugin_obj*, pending> calls ORVO_GUARDED_BY(mutex);
};

// The one queue; made on first use, never freed.
callback_manager& callbacks();

}  // namespace jspp::__detail

#endif
