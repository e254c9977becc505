#ifndef SONOLET_BENCH_SCRIPT_SCRIPTPAGE_H
#define SONOLET_BENCH_SCRIPT_SCRIPTPAGE_H

#include "engine/Document.h"
#include "engine/ErrorReporter.h"
#include "engine/PluginLibrary.h"
#include "engine/Scheduler.h"

#include <JavaScriptCore/JavaScript.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

// Polls come when the benchmark says so.
class ManualScheduler final : public Scheduler {
public:
    unsigned schedule(Delay delay, Task task) override;
    void cancel(unsigned id) override { tasks.erase(id); }

    // Every task with that delay, in milliseconds.
    void run(double delay);

private:
    unsigned lastId = 0;
    std::map<unsigned, std::pair<double, Task>> tasks;
};

// A page of the development host's engine with the plug-in in it, and a session.
class ScriptPage final : public ErrorReporter {
public:
    // Takes over the context, which is new.
    ScriptPage(const PluginLibrary& plugin, JSGlobalContextRef owned);
    ~ScriptPage() override;

    ScriptPage(const ScriptPage&) = delete;
    ScriptPage& operator=(const ScriptPage&) = delete;

    // The script's value when it is an object, else null. Throws std::runtime_error with the text
    // of its exception.
    JSObjectRef evaluate(const std::string& script) const;

    void define(const char* name, JSValueRef value) const;
    void define(const char* name, JSObjectCallAsFunctionCallback function) const;

    // A batch: a function of its own with the loop, compiled by the engine as it sees fit.
    std::function<void()> loop(const std::string& body, int count) const;

    // The same from inside a listener of the plug-in's.
    std::function<void()> loopInListener(const std::string& body, int count);

    // All that `make` made and dropped is gone when this is done.
    std::function<void()> collected(std::function<void()> make) const;

    // The plug-in calls back into script.
    void raiseEndOfTrack();

    void uncaught(JSContextRef where, JSValueRef exception) noexcept override;

    JSGlobalContextRef context;
    ManualScheduler scheduler;
    std::unique_ptr<Document> document;
};

#endif
