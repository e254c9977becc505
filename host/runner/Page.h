#ifndef SONOLET_HOST_RUNNER_PAGE_H
#define SONOLET_HOST_RUNNER_PAGE_H

#include "engine/Document.h"
#include "engine/ErrorReporter.h"
#include "engine/PluginLibrary.h"
#include "engine/Scheduler.h"
#include "runner/Options.h"
#include "runner/Overtime.h"
#include "runner/Timers.h"

#include <JavaScriptCore/JavaScript.h>

#include <filesystem>
#include <memory>
#include <string>

// What a page can ask of the one who shows it. It is asked from inside script, so it acts later.
class PageOwner : public ErrorReporter {
public:
    // The page is unloaded and read again, once it has returned.
    virtual void reload() = 0;
    // The page is unloaded, and the program ends.
    virtual void closePage() = 0;
};

// One load of a page script, in an engine context of its own, which goes with it: unload listeners
// have run and every object of the plug-in is destructed when the destructor returns.
//
// Threads: the script thread.
class Page final {
public:
    // Opens the document; nothing of the page runs yet. Borrows all five, which outlive it. Throws
    // std::runtime_error, as Document.
    Page(const PluginLibrary& plugin,
         Scheduler& scheduler,
         PageOwner& pageOwner,
         Overtime& overtime,
         const Options& options);
    ~Page();

    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    // The text of a script's file. Throws std::runtime_error.
    static std::string read(const std::string& file);

    // Runs the script of a file, which is its name in messages. What it throws, and what it leaves
    // undone in promises, goes to the owner.
    void run(const std::string& script, const std::string& file);

private:
    // First made, last released.
    struct Context {
        Context();
        ~Context();
        Context(const Context&) = delete;
        Context& operator=(const Context&) = delete;
        JSGlobalContextRef ref;  // owned
    };

    // What a script finds beside the plug-in: timers, console, location and their like.
    void installWindow(bool exposeGc);
    // Reads and runs scripts beside the page, as a page's own.
    void importScripts(size_t argc, const JSValueRef argv[]) const;
    // Answers the exception, or null.
    JSValueRef evaluate(const std::string& script, const std::string& file) const;
    // Promises that were rejected and have no handler by now are uncaught exceptions.
    void reportRejections();

    PageOwner& owner;
    const Overtime& overtime;
    Context context;
    std::filesystem::path folder;  // of the page
    std::unique_ptr<Document> document;
    std::unique_ptr<Timers> timers;
};

#endif
