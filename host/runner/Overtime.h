#ifndef SONOLET_HOST_RUNNER_OVERTIME_H
#define SONOLET_HOST_RUNNER_OVERTIME_H

#include <JavaScriptCore/JavaScript.h>

#include <ctime>
#include <string>

// Ends a page whose script goes on after it has been told to end.
//
// A second later the engine stops the script, with an exception that no script can catch, and the
// page unloads as any other. The engine does not look between the steps of a chain of promises:
// when nothing has helped for two more seconds, the process ends. The seconds are the script
// thread's processor time, so that a busy machine gives a page no less.
//
// One at a time in a process. Threads: the script thread.
class Overtime final {
public:
    // `page` is its name in messages. Throws std::runtime_error when the system has no timer left.
    explicit Overtime(const std::string& page);
    ~Overtime();

    Overtime(const Overtime&) = delete;
    Overtime& operator=(const Overtime&) = delete;

    // Stops scripts of this engine when it comes to that. REQUIRES: the engine goes first.
    void watch(JSContextGroupRef engine);

    // The page is told to end, now or after so many seconds. The first time counts. begin() may be
    // called on any thread and in a signal's handler.
    static void begin() noexcept;
    static void beginAfter(double seconds);

    // Whether a script was stopped; a line on standard error says so.
    bool hasStoppedScript() const noexcept { return stopped; }

private:
    static bool mustStop(JSContextRef context, void* data);

    const std::string stopping;  // the line
    bool stopped = false;
};

#endif
