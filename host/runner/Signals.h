#ifndef SONOLET_HOST_RUNNER_SIGNALS_H
#define SONOLET_HOST_RUNNER_SIGNALS_H

#include <glib.h>

#include <functional>

// SIGINT and SIGTERM as events of the main loop. Only the first of each: the second ends the
// process as usual, for the loop never comes to the first while a script runs without end.
//
// Threads: the main loop's. One at a time in a process.
class Signals final {
public:
    // `handler` is called at once, inside the signal's handler. Throws std::runtime_error when the
    // system has no file descriptor left. `signalCallback` runs from the main loop soon after.
    Signals(std::function<void()> signalCallback, void (*handler)() noexcept);
    ~Signals();

    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

private:
    std::function<void()> callback;
    int event;  // what the handlers write to
    guint source;
};

#endif
