#ifndef SONOLET_HOST_BROWSER_WEB_FRAMES_H
#define SONOLET_HOST_BROWSER_WEB_FRAMES_H

#include "browser/web/FrameDocument.h"
#include "browser/web/WebKit.h"
#include "engine/GlibScheduler.h"
#include "engine/PluginLibrary.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

// The plug-in's documents of all frames of this web process.
//
// A frame gets one when it shows a document of the same origin as its page's main frame, and the
// plug-in admits it. Threads: the main thread.
class Frames final {
public:
    // Polls come `speed` times as fast as the clock says. Throws std::runtime_error when the
    // plug-in cannot be loaded.
    Frames(const std::string& pluginFile, double speed);

    Frames(const Frames&) = delete;
    Frames& operator=(const Frames&) = delete;

private:
    // A new document of the frame is about to run its first script.
    void windowCleared(WebKitWebPage* page, WebKitFrame* frame);
    // The frame's document is over.
    void end(WebKitFrame* frame);
    // A frame that is taken out of its page may go without another word.
    static void frameGone(gpointer self, GObject* frame);
    // Answers whether there was a document.
    bool close(WebKitFrame* frame);
    void open(WebKitFrame* frame, const std::string& origin);

    const PluginLibrary plugin;
    GlibScheduler scheduler;
    std::unordered_map<WebKitFrame*, std::unique_ptr<FrameDocument>> documents;
    // Closed, maybe from inside a call of theirs: deleted by the next task.
    std::vector<std::unique_ptr<FrameDocument>> closed;
};

#endif
