#include "browser/Screenshot.h"

#include <utility>

namespace {

// How long a page may take to become ready.
constexpr guint limitSeconds = 30;

constexpr const char* readyScript = R"js(
    const root = document.documentElement;
    const isReady = () => root.dataset.ready !== 'false';
    if (!isReady()) {
        await new Promise((resolve) => new MutationObserver((_, observer) => {
            if (isReady()) {
                observer.disconnect();
                resolve();
            }
        }).observe(root, { attributeFilter: ['data-ready'] }));
    }
    await document.fonts.ready;
    await new Promise((resolve) =>
        requestAnimationFrame(() => requestAnimationFrame(resolve)));
)js";

}  // namespace

Screenshot::Screenshot(WebKitWebView* pageView,
                       std::string pngFile,
                       double secondsAfter,
                       Done whenDone)
    : view(pageView), file(std::move(pngFile)), after(secondsAfter), done(std::move(whenDone)) {
    limit = g_timeout_add_seconds(
        limitSeconds,
        [](gpointer data) -> gboolean {
            auto* const self = static_cast<Screenshot*>(data);
            self->limit = 0;
            self->finish("the page is not ready after " + std::to_string(limitSeconds) +
                         " seconds");
            return G_SOURCE_REMOVE;
        },
        this);
}

Screenshot::~Screenshot() {
    done = nullptr;
    finish("");
}

void Screenshot::pageLoaded() {
    if (!done) {
        return;
    }
    if (timer != 0) {
        g_source_remove(std::exchange(timer, 0));
    }
    if (waiting != nullptr) {
        g_cancellable_cancel(waiting);
        g_clear_object(&waiting);
    }
    waiting = g_cancellable_new();
    awaitReady();
}

// Each answer may come after this has gone, but not without its call being cancelled.
void Screenshot::awaitReady() {
    webkit_web_view_call_async_javascript_function(
        view, readyScript, -1, nullptr, "sonolet", nullptr, waiting,
        [](GObject* source, GAsyncResult* result, gpointer self) {
            JSCValue* const answer = webkit_web_view_call_async_javascript_function_finish(
                WEBKIT_WEB_VIEW(source), result, nullptr);
            // There is none from a page that went on to another one, whose load comes next.
            if (answer != nullptr) {
                g_object_unref(answer);
                static_cast<Screenshot*>(self)->ready();
            }
        },
        this);
}

void Screenshot::ready() {
    timer = g_timeout_add(
        static_cast<guint>(after * 1000.0),
        [](gpointer self) -> gboolean {
            static_cast<Screenshot*>(self)->timer = 0;
            static_cast<Screenshot*>(self)->take();
            return G_SOURCE_REMOVE;
        },
        this);
}

void Screenshot::take() {
    webkit_web_view_get_snapshot(
        view, WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, waiting,
        [](GObject* source, GAsyncResult* result, gpointer self) {
            g_autoptr(GError) error = nullptr;
            cairo_surface_t* const surface =
                webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(source), result, &error);
            if (surface != nullptr) {
                static_cast<Screenshot*>(self)->write(surface);
                cairo_surface_destroy(surface);
            } else if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
                static_cast<Screenshot*>(self)->finish(std::string("no picture of the page: ") +
                                                       error->message);
            }
        },
        this);
}

void Screenshot::write(cairo_surface_t* surface) {
    const cairo_status_t status = cairo_surface_write_to_png(surface, file.c_str());
    finish(status == CAIRO_STATUS_SUCCESS
               ? ""
               : "cannot write " + file + ": " + cairo_status_to_string(status));
}

void Screenshot::finish(const std::string& error) {
    if (timer != 0) {
        g_source_remove(std::exchange(timer, 0));
    }
    if (limit != 0) {
        g_source_remove(std::exchange(limit, 0));
    }
    if (waiting != nullptr) {
        g_cancellable_cancel(waiting);
        g_clear_object(&waiting);
    }
    if (const Done once = std::exchange(done, nullptr)) {
        once(error);
    }
}
