#ifndef SONOLET_SERVICE_THREADS_EVENT_QUEUE_H
#define SONOLET_SERVICE_THREADS_EVENT_QUEUE_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace sonolet::service {

// Work for the thread that processes the session's events, in the order in which it came.
//
// Threads: post() is for any thread; pop() is the processing thread's. `notify` is called on the
// posting thread, without a lock, when something waits where nothing did. Once close() has
// returned, what is posted is dropped.
class EventQueue final {
public:
    using Event = std::function<void()>;

    explicit EventQueue(std::function<void()> notifyOwner) : notify(std::move(notifyOwner)) {}

    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    void post(Event event);

    // The oldest event, or an empty function.
    Event pop();

    // How many wait; more may have come when this returns.
    std::size_t size() const;
    // Drops what waits, too. A second call does nothing.
    void close();

private:
    // Constant after construction.
    const std::function<void()> notify;

    // State below is protected by mutex.
    mutable std::mutex mutex;
    std::deque<Event> events;
    bool closed = false;
};

}  // namespace sonolet::service

#endif
