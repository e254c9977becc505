#ifndef SONOLET_TESTS_HOST_DOCUMENTHARNESS_H
#define SONOLET_TESTS_HOST_DOCUMENTHARNESS_H

#include "../fakes/Test.h"
#include "Probe.h"
#include "engine/Document.h"
#include "engine/GlibScheduler.h"
#include "engine/PluginLibrary.h"

#include <JavaScriptCore/JavaScript.h>

// A document with the probe plug-in in it, on the real engine.
class DocumentHarness final : public ErrorReporter {
public:
    DocumentHarness();
    ~DocumentHarness() override;

    DocumentHarness(const DocumentHarness&) = delete;
    DocumentHarness& operator=(const DocumentHarness&) = delete;

    // The text of the script's value, or "throws " and the text of its exception.
    std::string eval(const std::string& script) const;

    // The engine collects; what it found dead need not be finalized yet.
    void collect() const;

    // The document lets go, the engine collects, and finalized objects are destructed.
    void collectAll() const;

    // Runs the main loop until `done`; answers false after a generous time without it.
    static bool waitUntil(const std::function<bool()>& done);

    // Gives page script a function of this name that does this.
    void define(const char* name, std::function<void()> function) const;

    void uncaught(JSContextRef context, JSValueRef exception) noexcept override;

    static ProbeState& probe();
    // Of the objects made in this harness.
    int created() const { return probe().created - atStart.created; }
    int destructed() const { return probe().destructed - atStart.destructed; }

    ProbeState atStart;
    JSGlobalContextRef context;
    GlibScheduler scheduler{200};  // polls of 100 ms come every half millisecond
    std::unique_ptr<Document> document;
    std::vector<std::string> errors;
};

#endif
