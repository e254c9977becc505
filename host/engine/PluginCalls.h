#ifndef SONOLET_HOST_ENGINE_PLUGINCALLS_H
#define SONOLET_HOST_ENGINE_PLUGINCALLS_H

#include "engine/WeakObject.h"

#include <JavaScriptCore/JavaScript.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

class ObjectStore;

// The calls of the plug-in that are under way in one document, and the letting go of objects
// between them. Threads: the script thread.
class PluginCalls final {
public:
    PluginCalls(JSGlobalContextRef scriptContext, ObjectStore& objects)
        : context(scriptContext), store(objects) {}

    PluginCalls(const PluginCalls&) = delete;
    PluginCalls& operator=(const PluginCalls&) = delete;

    // Stands while the plug-in runs. Before it, objects are let go when many were made.
    class Call final {
    public:
        explicit Call(PluginCalls& calledIn);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        PluginCalls& calls;
        const std::uint64_t outerWaitsSince;
    };

    // Stands while a call of the plug-in waits for script that it has called: it can know nothing
    // that is made meanwhile.
    class Wait final {
    public:
        explicit Wait(PluginCalls& waiting);
        ~Wait() { calls.waitsSince = before; }
        Wait(const Wait&) = delete;
        Wait& operator=(const Wait&) = delete;

    private:
        PluginCalls& calls;
        const std::uint64_t before;
    };

    bool underWay() const noexcept { return depth > 0; }

    // Does this once no call is under way.
    void afterwards(std::function<void()> action);

    // Lets go of what the plug-in no longer holds, so that the next collection can take it.
    void letGo();

    // Lets go, and has the engine collect before it returns.
    void collect();

    // From here on, collects before every call.
    void stressCollector() noexcept { stressed = true; }

    // The plug-in has called the host, and nothing is done yet.
    void calledByPlugin() {
        if (stressed) {
            collect();
        }
    }

private:
    bool isTime();

    static constexpr std::uint64_t runs = std::numeric_limits<std::uint64_t>::max();

    JSGlobalContextRef context;
    ObjectStore& store;
    std::function<void()> pending;
    // Nobody holds it: when it is gone, the engine has collected since the last letting go.
    WeakObject canary;
    std::size_t lookAt = 0;  // objects made since
    bool stressed = false;
    bool lettingGo = false;
    unsigned depth = 0;
    // The store's serial number when the outermost began, and when the innermost began to wait.
    std::uint64_t serialAtEntry = 0;
    std::uint64_t waitsSince = runs;
};

#endif
