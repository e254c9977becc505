#include "EventQueue.h"

EventQueue::~EventQueue() {
    clear();
}

void EventQueue::push(UVAEvent* event) {
    const orvo::scoped_lock lock(mutex);
    events.push_back(event);
}

UVAEvent* EventQueue::pop() {
    const orvo::scoped_lock lock(mutex);
    if (events.empty()) {
        return nullptr;
    }
    UVAEvent* const front = events.front();
    events.pop_front();
    return front;
}

UVAEvent* EventQueue::peek() {
    const orvo::scoped_lock lock(mutex);
    return events.empty() ? nullptr : events.front();
}

void EventQueue::clear() {
    const orvo::scoped_lock lock(mutex);
    events.clear();
}
