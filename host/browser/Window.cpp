#include "browser/Window.h"

#include <cstdio>
#include <utility>

namespace {

// How long a page that is closed may take to unload.
constexpr guint unloadSeconds = 3;

constexpr const char* emptyPage = "about:blank";
constexpr const char* windowKey = "sonolet-window";  // at a view: its Window

constexpr const char* crashPage = R"(<!DOCTYPE html>
<title>Page crashed</title>
<style>
    body { margin: 20vh auto; max-width: 30em; font: 1.1em sans-serif; }
</style>
<h1>The page&rsquo;s process has ended</h1>
<p>It crashed or was killed. The terminal may tell more. F5 loads the page again.</p>
)";

}  // namespace

Window::Window(WindowOwner& windowOwner, WebKitWebView* view, int width, int height)
    : owner(windowOwner), window(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))), webView(view) {
    gtk_window_set_default_size(window, width, height);
    gtk_window_set_title(window, "Sonolet");
    gtk_container_add(GTK_CONTAINER(window), GTK_WIDGET(webView));
    g_object_set_data(G_OBJECT(webView), windowKey, this);
    connect();
}

Window::~Window() {
    if (closeSource != 0) {
        g_source_remove(closeSource);
    }
    g_signal_handlers_disconnect_by_data(webView, this);
    g_object_set_data(G_OBJECT(webView), windowKey, nullptr);
    gtk_widget_destroy(GTK_WIDGET(window));
}

void Window::connect() {
    const auto on = [this](gpointer object, const char* signal, auto* handler) {
        g_signal_connect(object, signal, G_CALLBACK(handler), this);
    };
    on(
        webView, "load-changed",
        +[](WebKitWebView*, WebKitLoadEvent event, Window* self) { self->loadChanged(event); });
    on(
        webView, "load-failed",
        +[](WebKitWebView*, WebKitLoadEvent, char* uri, GError* error, Window* self) -> gboolean {
            return self->loadFailed(uri, error) ? TRUE : FALSE;
        });
    on(
        webView, "resource-load-started",
        +[](WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest*, Window* self) {
            self->resourceStarted(resource);
        });
    on(
        webView, "web-process-terminated",
        +[](WebKitWebView*, WebKitWebProcessTerminationReason reason, Window* self) {
            self->processTerminated(reason);
        });
    on(
        webView, "create",
        +[](WebKitWebView* opener, WebKitNavigationAction*, Window* self) -> GtkWidget* {
            return GTK_WIDGET(self->owner.openRelated(opener));
        });
    on(
        webView, "ready-to-show", +[](WebKitWebView*, Window* self) { self->show(); });
    on(
        webView, "close", +[](WebKitWebView* view, Window* self) {
            // A driver that closes a window takes it that it is gone; WebKit unloads the page.
            if (webkit_web_view_is_controlled_by_automation(view) != FALSE) {
                self->owner.windowClosed(*self);
            } else {
                self->close();
            }
        });
    on(
        webView, "notify::title", +[](WebKitWebView* view, GParamSpec*, Window* self) {
            const char* title = webkit_web_view_get_title(view);
            gtk_window_set_title(self->window,
                                 title != nullptr && *title != '\0' ? title : "Sonolet");
        });
    // A page that is closed has no say in it.
    on(
        webView, "script-dialog",
        +[](WebKitWebView*, WebKitScriptDialog* dialog, Window*) -> gboolean {
            if (webkit_script_dialog_get_dialog_type(dialog) !=
                WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
                return FALSE;
            }
            webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
            return TRUE;
        });
    on(
        window, "key-press-event", +[](GtkWidget*, GdkEventKey* key, Window* self) -> gboolean {
            return self->keyPressed(*key) ? TRUE : FALSE;
        });
    on(
        window, "delete-event", +[](GtkWidget*, GdkEvent*, Window* self) -> gboolean {
            self->close();
            return TRUE;
        });
}

void Window::show() {
    gtk_widget_show_all(GTK_WIDGET(window));
    gtk_widget_grab_focus(GTK_WIDGET(webView));
}

void Window::reload() {
    if (tellingCrash) {
        reloadWanted = true;
    } else {
        webkit_web_view_reload(webView);
    }
}

// An empty page takes the place of this one, so that it unloads as any page does.
void Window::close() {
    if (closing) {
        return;
    }
    closing = true;
    gtk_widget_hide(GTK_WIDGET(window));
    webkit_web_view_load_uri(webView, emptyPage);
    closeSource = g_timeout_add_seconds(
        unloadSeconds,
        [](gpointer self) -> gboolean {
            std::fputs("sonolet-browser: the page does not unload; it is closed\n", stderr);
            return static_cast<Window*>(self)->unloaded();
        },
        this);
}

// Inside a signal of the view is too early to delete it.
void Window::closeSoon() {
    g_source_remove(closeSource);
    closeSource = g_idle_add(
        [](gpointer self) -> gboolean { return static_cast<Window*>(self)->unloaded(); }, this);
}

gboolean Window::unloaded() {
    closeSource = 0;
    owner.windowClosed(*this);
    return G_SOURCE_REMOVE;
}

void Window::loadChanged(WebKitLoadEvent event) {
    const char* const uri = webkit_web_view_get_uri(webView);
    if (event == WEBKIT_LOAD_STARTED) {
        asked = uri != nullptr ? uri : emptyPage;
        told.clear();
    }
    if (closing) {
        if (event == WEBKIT_LOAD_COMMITTED && g_strcmp0(uri, emptyPage) == 0) {
            closeSoon();
        }
    } else if (event == WEBKIT_LOAD_COMMITTED && asked != emptyPage &&
               g_strcmp0(uri, emptyPage) == 0) {
        // What WebKit does with an address that it blocks, a port of another service's for one.
        tellFailure(asked.c_str(), "could not be loaded: WebKit blocks this address");
        owner.pageFailed(*this);
    } else if (event == WEBKIT_LOAD_FINISHED && std::exchange(tellingCrash, false)) {
        if (std::exchange(reloadWanted, false)) {
            reload();
        }
    } else if (event == WEBKIT_LOAD_FINISHED) {
        owner.loaded(*this);
    }
}

bool Window::loadFailed(const char* uri, const GError* error) {
    // Another page came in between, or what was asked for is no page.
    if (closing || g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR,
                        WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE)) {
        return false;
    }
    tellFailure(uri, error->message);
    owner.pageFailed(*this);
    return false;  // WebKit shows a page that tells it
}

// Scripts, styles, pictures, frames: WebKit itself is silent about them.
void Window::resourceStarted(WebKitWebResource* resource) {
    if (resource == webkit_web_view_get_main_resource(webView)) {
        return;
    }
    // A resource may outlive the window. What the page goes away from is cancelled, and so is what
    // a server has refused.
    auto* const failed = +[](WebKitWebResource* self, const GError* error, WebKitWebView* view) {
        if (!g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED)) {
            tellOnce(view, self, error->message);
        }
    };
    auto* const finished = +[](WebKitWebResource* self, WebKitWebView* view) {
        WebKitURIResponse* const response = webkit_web_resource_get_response(self);
        const guint status =
            response != nullptr ? webkit_uri_response_get_status_code(response) : 0;
        if (status >= 400) {
            tellOnce(view, self, "the server answers " + std::to_string(status));
        }
    };
    constexpr auto plain = static_cast<GConnectFlags>(0);
    g_signal_connect_object(resource, "failed", G_CALLBACK(failed), webView, plain);
    g_signal_connect_object(resource, "finished", G_CALLBACK(finished), webView, plain);
}

// WebKit tries some twice: it looks for them ahead of the page's parser.
void Window::tellOnce(WebKitWebView* view, WebKitWebResource* resource, const std::string& why) {
    auto* const self = static_cast<Window*>(g_object_get_data(G_OBJECT(view), windowKey));
    const char* const uri = webkit_web_resource_get_uri(resource);
    if (self != nullptr && self->told.insert(uri).second) {
        tellFailure(uri, why);
    }
}

void Window::tellFailure(const char* uri, const std::string& why) {
    std::fprintf(stderr, "sonolet-browser: %s: %s\n", uri, why.c_str());
}

void Window::processTerminated(WebKitWebProcessTerminationReason reason) {
    if (closing) {
        closeSoon();
        return;
    }
    const char* const uri = webkit_web_view_get_uri(webView);
    const char* const what = reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT
                                 ? "used too much memory and was ended"
                                 : "crashed or was killed";
    std::fprintf(stderr, "sonolet-browser: %s: the page's process %s; F5 loads the page again\n",
                 uri, what);
    tellingCrash = true;
    // By its own address, so that reloading loads the page itself.
    webkit_web_view_load_alternate_html(webView, crashPage, uri, nullptr);
    owner.pageFailed(*this);
}

bool Window::keyPressed(const GdkEventKey& key) {
    const guint modifiers = key.state & gtk_accelerator_get_default_mod_mask();
    const guint value = gdk_keyval_to_lower(key.keyval);
    const bool control = modifiers == GDK_CONTROL_MASK;
    if ((value == GDK_KEY_F5 && modifiers == 0) || (value == GDK_KEY_r && control)) {
        reload();
    } else if (value == GDK_KEY_Left && modifiers == GDK_MOD1_MASK) {
        webkit_web_view_go_back(webView);
    } else if (value == GDK_KEY_Right && modifiers == GDK_MOD1_MASK) {
        webkit_web_view_go_forward(webView);
    } else if (value == GDK_KEY_F12 && modifiers == 0) {
        webkit_web_inspector_show(webkit_web_view_get_inspector(webView));
    } else if (value == GDK_KEY_w && control) {
        close();
    } else {
        return false;
    }
    return true;
}
