#ifndef SONOLET_HOST_RUNNER_TIMERS_H
#define SONOLET_HOST_RUNNER_TIMERS_H

#include "engine/ErrorReporter.h"
#include "engine/Scheduler.h"

#include <JavaScriptCore/JavaScript.h>

#include <unordered_map>
#include <vector>

// setTimeout, setInterval and their clears for one page, in milliseconds of page time.
//
// Threads: the script thread. Ownership: borrows the context, which REQUIRES that it goes before
// that; functions and arguments of a page are protected until their timer ends. Errors: what a call
// of a timer throws goes to the reporter; a first argument that is no function is a script
// exception.
class Timers final {
public:
    // Puts the four functions into the global object.
    Timers(JSGlobalContextRef scriptContext,
           Scheduler& pageScheduler,
           ErrorReporter& errorReporter);
    ~Timers();

    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;

    // No timer fires after this; the page may set new ones.
    void clearAll();

private:
    struct Timer {
        JSObjectRef function;               // protected
        std::vector<JSValueRef> arguments;  // protected
    };

    // Answers the timer's number.
    JSValueRef add(JSContextRef callContext, size_t argc, const JSValueRef argv[], bool repeats);
    void fire(unsigned id);
    void clear(unsigned id);

    JSGlobalContextRef context;
    Scheduler& scheduler;
    ErrorReporter& reporter;
    std::unordered_map<unsigned, Timer> timers;
};

#endif
