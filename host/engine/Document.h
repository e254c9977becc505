#ifndef SONOLET_HOST_ENGINE_DOCUMENT_H
#define SONOLET_HOST_ENGINE_DOCUMENT_H

#include "engine/ErrorReporter.h"
#include "engine/ObjectStore.h"
#include "engine/PluginAccess.h"
#include "engine/PluginCalls.h"
#include "engine/Scheduler.h"

#include "jsplugin.h"

#include <JavaScriptCore/JavaScript.h>

#include <set>
#include <string>
#include <vector>

// One page's script context with the plug-in in it: the plug-in's globals, its objects, its polls.
//
// Made for a context in which no script of the page has run yet, and closed before that context is
// released. Threads: the script thread. Errors: the constructor throws std::runtime_error; what the
// plug-in answers as an exception is thrown in script, what a listener throws goes to the reporter.
class Document final {
public:
    // Where the page comes from, as allow_access is asked.
    struct Origin {
        std::string protocol;
        std::string host;
        int port = 0;
    };

    Document(JSGlobalContextRef scriptContext,
             const struct jsplugin_capabilities& capabilities,
             Scheduler& pageScheduler,
             ErrorReporter& errorReporter);
    ~Document();

    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // Starts the plug-in in this document. Answers false when it refuses the page, which then sees
    // none of its globals.
    bool open(const Origin& origin);

    // Runs the unload listeners, stops the polls and destructs every object of the plug-in; script
    // that still has one finds it empty. From inside a call of the plug-in it waits for its end.
    void close();

    // Lets go of what the plug-in no longer holds, so that the next collection can take it. It
    // happens by itself now and then.
    void letGo() { calls.letGo(); }

    // Lets go, and has the engine collect before it returns.
    void collect() { calls.collect(); }

    // From here on, collects before every call of the plug-in and at the start of every call that
    // it makes: what it holds without marking it is then gone when it next uses it. Slow.
    void stressCollector() noexcept { calls.stressCollector(); }

    ObjectStore& objects() noexcept { return store; }

    // The callback table's part: a call of the plug-in has come in, before anything is done.
    void calledByPlugin() { calls.calledByPlugin(); }
    // Each answers whether it was done.
    bool addPoll(unsigned intervalMs, jsplugin_poll* poll);
    bool addUnloadListener(jsplugin_unload* listener);
    bool
    callFunction(ObjectRecord* thisRecord, ObjectRecord& callee, int argc, jsplugin_value* argv);

private:
    void closeNow();

    JSGlobalContextRef context;
    const struct jsplugin_capabilities& plugin;
    Scheduler& scheduler;
    ErrorReporter& reporter;
    ObjectStore store;
    PluginCalls calls;
    PluginAccess access;

    bool opened = false;
    bool closed = false;
    std::vector<jsplugin_unload*> unloadListeners;
    std::set<unsigned> polls;  // the scheduler's ids
    unsigned housekeeping = 0;
};

#endif
