#include "session/LateAnswers.h"

#include <algorithm>
#include <utility>

namespace sonolet::service {

LateAnswers::LateAnswers(Callbacks& sessionCallbacks, std::shared_ptr<const Faults> shownFaults)
    : callbacks(sessionCallbacks), faults(std::move(shownFaults)) {}

void LateAnswers::answer(EventQueue::Event event) {
    const Faults::Clock::duration delay = faults->delay();
    const Faults::Clock::time_point when = Faults::Clock::now() + delay;
    callbacks.post([this, when, event = std::move(event)] {
        // None overtakes another, and what comes in time waits for nobody.
        if (late.empty() && when <= Faults::Clock::now()) {
            event();
        } else {
            late.emplace(late.empty() ? when : std::max(when, late.rbegin()->first), event);
        }
    });
}

void LateAnswers::release() {
    const Faults::Clock::time_point now = Faults::Clock::now();
    while (!late.empty() && late.begin()->first <= now) {
        callbacks.post(std::move(late.begin()->second));
        late.erase(late.begin());
    }
}

std::optional<Faults::Clock::duration> LateAnswers::untilNext() const {
    return late.empty() ? std::nullopt : std::optional(late.begin()->first - Faults::Clock::now());
}

}  // namespace sonolet::service
