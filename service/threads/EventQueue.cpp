#include "threads/EventQueue.h"

#include <utility>

namespace sonolet::service {

void EventQueue::post(Event event) {
    bool first = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (closed) {
            return;
        }
        first = events.empty();
        events.push_back(std::move(event));
    }
    if (first) {
        notify();
    }
}

EventQueue::Event EventQueue::pop() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (events.empty()) {
        return {};
    }
    Event event = std::move(events.front());
    events.pop_front();
    return event;
}

std::size_t EventQueue::size() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return events.size();
}

void EventQueue::close() {
    // What the events hold is let go outside the lock.
    std::deque<Event> dropped;
    const std::lock_guard<std::mutex> lock(mutex);
    closed = true;
    dropped.swap(events);
}

}  // namespace sonolet::service
