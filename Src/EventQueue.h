#ifndef SONOLET_EVENT_QUEUE_H
#define SONOLET_EVENT_QUEUE_H

#include "jspp/orvo/mutex.h"

#include "uva.h"

#include <deque>

// A backend's events on their way from its thread to the script thread, in the order they came. Any
// thread. Does not own the events: who empties it answers or frees them. push() throws when there
// is no memory, and has then taken nothing.
class EventQueue {
public:
    EventQueue() = default;
    // What is left in it stays its owner's.
    virtual ~EventQueue();

    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    void push(UVAEvent* event) ORVO_EXCLUDES(mutex);

    // The front event, removed; null when there is none.
    UVAEvent* pop() ORVO_EXCLUDES(mutex);

    // The front event, left in place; null when there is none.
    UVAEvent* peek() ORVO_EXCLUDES(mutex);

    // Forgets all, and frees none.
    void clear() ORVO_EXCLUDES(mutex);

private:
    orvo::Mutex mutex;
    std::deque<UVAEvent*> events ORVO_GUARDED_BY(mutex);
};

#endif
