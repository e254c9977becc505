#ifndef SONOLET_HOST_BROWSER_SCREENSHOT_H
#define SONOLET_HOST_BROWSER_SCREENSHOT_H

#include <webkit2/webkit2.h>

#include <functional>
#include <string>

// Writes what a page shows into a PNG file, once the page is ready: it has loaded, its root element
// does not say data-ready="false", and its fonts and two frames are drawn.
//
// Threads: the main thread.
class Screenshot final {
public:
    // Of `error` an empty text means that the file is written.
    using Done = std::function<void(const std::string& error)>;

    // `done` is called once. The view outlives this.
    Screenshot(WebKitWebView* pageView, std::string pngFile, double secondsAfter, Done whenDone);
    ~Screenshot();

    Screenshot(const Screenshot&) = delete;
    Screenshot& operator=(const Screenshot&) = delete;

    // The page has loaded; a page that loads another is waited for again. To be called each time;
    // nothing is taken before the first.
    void pageLoaded();

private:
    void awaitReady();
    void ready();
    void take();
    void write(cairo_surface_t* surface);
    void finish(const std::string& error);

    WebKitWebView* const view;
    const std::string file;
    const double after;
    Done done;
    GCancellable* waiting = nullptr;  // owned; of the calls under way
    guint timer = 0;
    guint limit = 0;
};

#endif
