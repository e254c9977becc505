#include "browser/web/Frames.h"

#include <cstdio>
#include <exception>
#include <utility>

namespace {

// Deprecated where there is another way from a page to its own frame; not everywhere is.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS
WebKitFrame* mainFrameOf(WebKitWebPage* page) {
    return webkit_web_page_get_main_frame(page);
}
G_GNUC_END_IGNORE_DEPRECATIONS

std::string originOf(WebKitFrame* frame) {
    g_autoptr(JSCContext) context = webkit_frame_get_js_context(frame);
    return originOf(context);
}

}  // namespace

Frames::Frames(const std::string& pluginFile, double speed)
    : plugin(pluginFile), scheduler(speed) {
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
        const std::string origin = originOf(frame);
        const bool isOwn =
            webkit_frame_is_main_frame(frame) || origin == originOf(mainFrameOf(page));
        if (origin != "null" && isOwn) {
            open(frame, origin);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-web: %s\n", error.what());
    }
}

void Frames::open(WebKitFrame* frame, const std::string& origin) {
    g_autoptr(JSCContext) context = webkit_frame_get_js_context(frame);
    auto document =
        std::make_unique<FrameDocument>(context, plugin, scheduler, [this, frame] { end(frame); });
    if (!document->open(parseOrigin(origin))) {
        std::fprintf(stderr, "sonolet-web: the plug-in refuses pages of %s\n", origin.c_str());
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
