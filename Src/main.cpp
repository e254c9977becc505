#include "main.h"

#include "Logger.h"
#include "Spotify.h"
#include "jspp/plugin.h"

#include <exception>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/main", 18);

constexpr unsigned tickMs = 250;

void stopPlayback() {
    g_spotify_instance_Spotify->getSession()->forceStopPlayback();
}

void tick() {
    Session& session = *g_spotify_instance_Spotify->getSession();
    if (!session.isInitialized()) {
        return;
    }
    session.processEvents();
    session.getPlayer().handleEventQueue();
    session.getSonolet().triggerTrackProgress(session.getPlayer().getPosition());
}

}  // namespace

orvo::shared_ptr<Spotify> g_spotify_instance_Spotify(new Spotify);

void js_plugin_loaded() {
    logger.trace({"", 54}, "====== spotify_interface plugin loaded ======");
}

void js_load_plugin(JSPP_functions& functions) {
    js_plugin_loaded();
    functions.init = &js_init_global_context;
    functions.destroy = &js_destroy_global_context;
    functions.global_getter = &js_getter;
    functions.unload = &stopPlayback;
    functions.global_names.emplace_back("Spotify");
}

void js_getter(const std::string& name, jspp::result_context& context) {
    if (name == "Spotify") {
        context.return_interface(g_spotify_instance_Spotify, true);
    }
}

void js_init_global_context(jsplugin_obj* ctx) {
    jspp_add_poll_function(ctx, tickMs, &document_interval);
}

void js_destroy_global_context() {}

int document_interval(const jsplugin_obj*) noexcept {
    try {
        tick();
    } catch (const std::exception& error) {
        logger.error("document_interval", ": ", error.what());
    } catch (...) {
        logger.error("document_interval", ": unknown exception");
    }
    return 1;
}
