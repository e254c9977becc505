#ifndef SONOLET_HOST_RUNNER_RUNNER_H
#define SONOLET_HOST_RUNNER_RUNNER_H

#include "engine/GlibScheduler.h"
#include "engine/PluginLibrary.h"
#include "runner/Options.h"
#include "runner/Overtime.h"
#include "runner/Page.h"
#include "runner/Signals.h"

#include <glib.h>

#include <memory>
#include <string>

// Shows one page until it is closed: by itself, by --for, by a signal or by its first uncaught
// exception.
//
// Threads: the one that made it, which is the script thread. Ownership: borrows the options, which
// outlive it.
class Runner final : public PageOwner {
public:
    // Throws std::runtime_error when the page or the plug-in cannot be loaded.
    explicit Runner(const Options& givenOptions);
    ~Runner() override;

    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    // Runs the main loop, and answers the exit code: 0, or 1 after an uncaught exception. Once.
    int run();

    // For the page, from inside script; both act when the script has returned.
    void reload() override;
    void closePage() override;
    void uncaught(JSContextRef context, JSValueRef exception) noexcept override;

private:
    enum class Next { Wait, Reload, Close };

    // Ends the round of the main loop that shows a page. A close is not taken back by a reload.
    void stopWaiting(Next wanted);

    const Options& options;
    const std::string script;
    const PluginLibrary plugin;
    GlibScheduler scheduler;
    GMainLoop* loop;  // owned
    Overtime overtime;
    Signals signals;
    std::unique_ptr<Page> page;
    Next next = Next::Wait;
    int exitCode = 0;
};

#endif
