#ifndef SONOLET_SERVICE_SESSION_LATE_ANSWERS_H
#define SONOLET_SERVICE_SESSION_LATE_ANSWERS_H

#include "faults/Faults.h"
#include "session/Callbacks.h"

#include <map>
#include <memory>
#include <optional>

namespace sonolet::service {

// Posts what a service would send: on a slow connection it comes later, and none overtakes another.
//
// How late is asked of the faults when the answer is ready, not when the question was. An answer is
// held here until release() meets its time; nobody wakes the owner for that but the timeout that
// untilNext() gives.
//
// Threads: answer() is for any, the rest belongs to the thread that processes events.
class LateAnswers final {
public:
    LateAnswers(Callbacks& sessionCallbacks, std::shared_ptr<const Faults> shownFaults);

    LateAnswers(const LateAnswers&) = delete;
    LateAnswers& operator=(const LateAnswers&) = delete;

    void answer(EventQueue::Event event);

    // Posts those whose time has come.
    void release();
    // Until the next one's time, which may be over; nothing: none is on its way.
    std::optional<Faults::Clock::duration> untilNext() const;
    void clear() { late.clear(); }

private:
    Callbacks& callbacks;
    const std::shared_ptr<const Faults> faults;
    std::multimap<Faults::Clock::time_point, EventQueue::Event> late;
};

}  // namespace sonolet::service

#endif
