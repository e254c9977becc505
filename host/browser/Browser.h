#ifndef SONOLET_HOST_BROWSER_BROWSER_H
#define SONOLET_HOST_BROWSER_BROWSER_H

#include "browser/Options.h"
#include "browser/Screenshot.h"
#include "browser/Window.h"
#include "options/Findings.h"

#include <webkit2/webkit2.h>

#include <memory>
#include <string>
#include <vector>

// The browser's windows, from the first to the last.
//
// REQUIRES: GTK is initialised. Threads: the main thread. Ownership: borrows the options and the
// findings; each window is deleted when its page has unloaded. Errors: what a page or its process
// does wrong is a line on standard error and the exit code.
class Browser final : public WindowOwner {
public:
    explicit Browser(const Options& givenOptions, Findings* itsFindings = nullptr);
    ~Browser() override;

    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    // Opens the first window, and returns when the last has closed. Answers the exit code: 0; 1
    // when a page could not be loaded or threw; 2 when the browser itself cannot work; 3 when
    // what passes was to be checked and a rule was broken. Once.
    int run();

    // The view is the new window's.
    WebKitWebView* openRelated(WebKitWebView* related) override;
    void loaded(Window& window) override;
    void pageFailed(Window& window) override;
    void windowClosed(Window& window) override;

private:
    static WebKitWebContext* makeContext();
    void startWebProcess();
    void messageReceived(WebKitUserMessage* message);
    void automationStarted(WebKitAutomationSession* session);
    WebKitWebView* open(WebKitWebView* related, bool automated);
    // Asks every window to close, which takes as long as its page does.
    void closeAll();
    void interrupted();
    // Says it on standard error and closes the windows; of several codes the largest is the exit
    // code.
    void fail(int code, const std::string& message);

    const Options& options;
    Findings* const findings;         // of all web processes; null: nothing is checked
    WebKitWebContext* const context;  // owned
    WebKitSettings* const settings;   // owned
    GMainLoop* const loop;            // owned
    std::vector<std::unique_ptr<Window>> windows;
    std::unique_ptr<Screenshot> screenshot;  // of the first window
    int webProcesses = 0;
    bool wasInterrupted = false;
    int exitCode = 0;
};

#endif
