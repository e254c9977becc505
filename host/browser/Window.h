#ifndef SONOLET_HOST_BROWSER_WINDOW_H
#define SONOLET_HOST_BROWSER_WINDOW_H

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <set>
#include <string>

class Window;

// Who keeps the windows.
class WindowOwner {
public:
    virtual ~WindowOwner() = default;
    // A page opens a window; `related` shares its web process. Answers its view, borrowed.
    virtual WebKitWebView* openRelated(WebKitWebView* related) = 0;
    // The page and what it names have been loaded.
    virtual void loaded(Window& window) = 0;
    // The page could not be loaded, or its process died; a message is on standard error.
    virtual void pageFailed(Window& window) = 0;
    // The window's page has unloaded; deletes it.
    virtual void windowClosed(Window& window) = 0;
};

// A window with one page.
//
// It closes when the page has unloaded, which takes its time in the web process: close() asks for
// it. Threads: the main thread.
class Window final {
public:
    // Takes over the floating reference of `view`.
    Window(WindowOwner& windowOwner, WebKitWebView* webView, int width, int height);
    ~Window();

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    WebKitWebView* view() const noexcept { return webView; }
    // With the focus on its page.
    void show();
    // After its process has died, too: another is started.
    void reload();
    // The owner is told when the page has unloaded; asked again, does nothing.
    void close();

private:
    void connect();
    void loadChanged(WebKitLoadEvent event);
    bool loadFailed(const char* uri, const GError* error);
    void resourceStarted(WebKitWebResource* resource);
    // Both write a line about what could not be loaded, the first once for each page and address.
    static void tellOnce(WebKitWebView* view, WebKitWebResource* resource, const std::string& why);
    static void tellFailure(const char* uri, const std::string& why);
    void processTerminated(WebKitWebProcessTerminationReason reason);
    bool keyPressed(const GdkEventKey& key);
    void closeSoon();
    gboolean unloaded();

    WindowOwner& owner;
    GtkWindow* const window;       // destroyed by this
    WebKitWebView* const webView;  // the window's
    std::string asked;             // the address of the load under way
    std::set<std::string> told;    // addresses that it could not load
    // After the page's process died, until the page that tells of it has loaded: a load that is
    // asked for meanwhile would be lost.
    bool tellingCrash = false;
    bool reloadWanted = false;
    bool closing = false;
    guint closeSource = 0;  // while closing: deletes this
};

#endif
