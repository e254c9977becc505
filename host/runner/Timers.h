#ifndef SONOLET_HOST_RUNNER_TIMERS_H
#define SONOLET_HOST_RUNNER_TIMERS_H

#include "engine/ErrorReporter.h"
#include "engine/Scheduler.h"

#include <JavaScriptCore/JavaScript.h>

#include <unordered_map>
#include <vector>

// setTimeout, setInterval and their clears for one page. REQUIRES: it goes before the context does.
class Timers final {
public:
    Timers(JSGlobalContextRef scriptContext,
           Scheduler& pageScheduler,
           ErrorReporter& errorReporter);
    ~Timers();

    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;

    void clearAll();

private:
    struct Timer {
        JSObjectRef function;               // protected
        std::vector<JSValueRef> arguments;  // protected
    };

    JSValueRef add(JSContextRef callContext, size_t argc, const JSValueRef argv[], bool repeats);
    void fire(unsigned id);
    void clear(unsigned id);

    JSGlobalContextRef context;
    Scheduler& scheduler;
    ErrorReporter& reporter;
    std::unordered_map<unsigned, Timer> timers;
};

#endif
