#include "browser/web/Frames.h"

#include <cstdio>
#include <exception>
#include <utility>

namespace {

// What a page remembers: the origin of the document that its main frame shows.
constexpr const char* originKey = "sonolet-origin";

std::string originOf(WebKitFrame* frame) {
    g_autoptr(JSCContext) context = webkit_frame_get_js_context(frame);
    return originOf(context);
}

}  // namespace

Frames::Frames(const std::string& pluginFile, double speed) : plugin(pluginFile), scheduler(speed) {
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
        if (webkit_frame_is_main_frame(frame)) {
            g_object_set_data_full(G_OBJECT(page), originKey, g_strdup(origin.c_str()), g_free);
        }
        const auto* const ofPage =
            static_cast<const char*>(g_object_get_data(G_OBJECT(page), originKey));
        if (origin != "null" && ofPage != nullptr && origin == ofPage) {
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
