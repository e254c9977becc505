#include "browser/web/Frames.h"

#include <cstdio>
#include <exception>
#include <utility>

namespace {

// Deprecated, but nothing else leads to a context of the C interface, or from a frame to the page's
// own one.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS
JSGlobalContextRef contextOf(WebKitFrame* frame) {
    return webkit_frame_get_javascript_global_context(frame);
}

WebKitFrame* mainFrameOf(WebKitWebPage* page) {
    return webkit_web_page_get_main_frame(page);
}
G_GNUC_END_IGNORE_DEPRECATIONS

}  // namespace

Frames::Frames(const std::string& pluginFile) : plugin(pluginFile) {
    using Handler = void(WebKitScriptWorld*, WebKitWebPage*, WebKitFrame*, gpointer);
    Handler* const handler = [](auto*, WebKitWebPage* page, WebKitFrame* frame, gpointer self) {
        static_cast<Frames*>(self)->windowCleared(page, frame);
    };
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared",
                     G_CALLBACK(handler), this);
}

void Frames::windowCleared(WebKitWebPage* page, WebKitFrame* frame) {
    try {
        end(frame);
        const JSGlobalContextRef context = contextOf(frame);
        const std::string origin = originOf(context);
        const bool isOwn =
            webkit_frame_is_main_frame(frame) || origin == originOf(contextOf(mainFrameOf(page)));
        if (origin != "null" && isOwn) {
            open(frame, context, origin);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-browser: %s\n", error.what());
    }
}

void Frames::open(WebKitFrame* frame, JSGlobalContextRef context, const std::string& origin) {
    auto document =
        std::make_unique<FrameDocument>(context, plugin, scheduler, [this, frame] { end(frame); });
    if (!document->open(parseOrigin(origin))) {
        std::fprintf(stderr, "sonolet-browser: the plug-in refuses pages of %s\n", origin.c_str());
        return;
    }
    documents[frame] = std::move(document);
    g_object_weak_ref(G_OBJECT(frame), &Frames::frameGone, this);
}

void Frames::end(WebKitFrame* frame) {
    if (close(frame)) {
        g_object_weak_unref(G_OBJECT(frame), &Frames::frameGone, this);
    }
}

void Frames::frameGone(gpointer self, GObject* frame) {
    static_cast<Frames*>(self)->close(reinterpret_cast<WebKitFrame*>(frame));
}

bool Frames::close(WebKitFrame* frame) {
    auto node = documents.extract(frame);
    if (node.empty()) {
        return false;
    }
    node.mapped()->close();
    closed.push_back(std::move(node.mapped()));
    scheduler.schedule(Scheduler::Delay(0), [this] {
        closed.clear();
        return false;
    });
    return true;
}
