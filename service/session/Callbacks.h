#ifndef SONOLET_SERVICE_SESSION_CALLBACKS_H
#define SONOLET_SERVICE_SESSION_CALLBACKS_H

#include "threads/EventQueue.h"

#include "libspotify/api.h"

#include <exception>
#include <string>
#include <utility>

namespace sonolet::service {

// What a session tells the program that made it, and the queue in which the news of other threads
// wait until that program processes events.
//
// Threads: post() and log() are for any, and call notify_main_thread there; raise() belongs to the
// thread that processes events, as no other callback but the player's two runs elsewhere. No lock
// is held while one runs. Once closed, what is posted is dropped and no callback is called.
// Ownership: the handle is borrowed and is only handed on.
class Callbacks final {
public:
    Callbacks(const sp_session_callbacks& wantedOnes, sp_session* sessionHandle);

    void post(EventQueue::Event event) { queue.post(std::move(event)); }
    // Says it by log_message, in its turn among the events.
    void log(std::string line);

    // What fails is a line that begins with the consequence, and leaves the caller going on.
    template <typename Action>
    void orLog(const char* consequence, Action action) {
        try {
            action();
        } catch (const std::exception& error) {
            log(std::string(consequence) + ": " + error.what());
        }
    }

    // Calls it now, if the program wants it.
    template <typename... Parameters, typename... Arguments>
    void raise(void (*sp_session_callbacks::*callback)(sp_session*, Parameters...),
               Arguments... arguments) {
        if (!closed && wanted.*callback != nullptr) {
            (wanted.*callback)(handle, arguments...);
        }
    }

    // The player's two, on its thread. How many frames were taken; all when nobody wants any.
    int deliver(const sp_audioformat& format, const void* frames, int count) const;
    void endOfTrack() const;

    // Handles what waits now; what that posts waits for the next call, so that this one ends. An
    // event that throws is a line of the log.
    void handleEvents();
    bool areWaiting() const { return queue.size() > 0; }

    // Two steps: the callbacks end before the threads that post are joined, the queue after.
    void silence() { closed = true; }
    void close() { queue.close(); }
    bool isSilent() const { return closed; }

private:
    // Constant after construction.
    const sp_session_callbacks wanted;
    sp_session* const handle;

    EventQueue queue;
    bool closed = false;  // the processing thread's
};

}  // namespace sonolet::service

#endif
