#ifndef SONOLET_HOST_ENGINE_ERRORREPORTER_H
#define SONOLET_HOST_ENGINE_ERRORREPORTER_H

#include <JavaScriptCore/JavaScript.h>

// Where exceptions go that no script can catch: those thrown by functions that a plug-in calls.
//
// Threads: the script thread. Ownership: the exception is the engine's. Errors: none may be thrown.
class ErrorReporter {
public:
    virtual ~ErrorReporter() = default;
    virtual void uncaught(JSContextRef context, JSValueRef exception) noexcept = 0;

    // A function that a plug-in calls has returned. Where the engine leaves it to its host when to
    // run what promises wait for, it is run here.
    virtual void returned() noexcept {}
};

#endif
