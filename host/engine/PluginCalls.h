#ifndef SONOLET_HOST_ENGINE_PLUGINCALLS_H
#define SONOLET_HOST_ENGINE_PLUGINCALLS_H

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <functional>

class ObjectStore;

// The calls of the plug-in that are under way in one document, and the letting go of objects
// between them. Threads: the script thread.
class PluginCalls final {
public:
    PluginCalls(JSGlobalContextRef scriptContext, ObjectStore& objects)
        : context(scriptContext), store(objects) {}

    PluginCalls(const PluginCalls&) = delete;
    PluginCalls& operator=(const PluginCalls&) = delete;

    // Stands while the plug-in runs. The outermost is where objects may be let go first: no frame
    // of the plug-in is on the stack that could hold one.
    class Call final {
    public:
        explicit Call(PluginCalls& calledIn);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        PluginCalls& calls;
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
    JSGlobalContextRef context;
    ObjectStore& store;
    std::function<void()> pending;
    bool stressed = false;
    bool lettingGo = false;
    unsigned depth = 0;
    std::uint64_t serialAtEntry = 0;  // the store's, when the outermost began
};

#endif
