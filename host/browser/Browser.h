#ifndef SONOLET_HOST_BROWSER_BROWSER_H
#define SONOLET_HOST_BROWSER_BROWSER_H

#include "browser/Options.h"
#include "browser/Screenshot.h"
#include "browser/Window.h"

#include <webkit2/webkit2.h>

#include <memory>
#include <string>
#include <vector>

// The browser's windows, from the first to the last.
//
// REQUIRES: GTK is initialised. Threads: the main thread.
class Browser final : public WindowOwner {
public:
    explicit Browser(const Options& givenOptions);
    ~Browser() override;

    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    // Answers the exit code.
    int run();

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
    void closeAll();
    void interrupted();
    void fail(int code, const std::string& message);

    const Options& options;
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
