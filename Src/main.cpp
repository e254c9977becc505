#include "main.h"

#include "Logger.h"
#include "Spotify.h"
#include "jspp/plugin.h"

#include <exception>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/main", 18);

constexpr unsigned tickMs = 250;

// The root object's session. Empty once the exit handlers have begun: a host may tick and unload
// documents even then.
orvo::shared_ptr<Session> rootSession();

void stopPlayback() {
    if (const orvo::shared_ptr<Session> session = rootSession()) {
        session->forceStopPlayback();
    }
}

void tick() {
    const orvo::shared_ptr<Session> session = rootSession();
    if (!session || !session->isInitialized()) {
        return;
    }
    session->processEvents();
    session->getPlayer().handleEventQueue();
    session->getSonolet().triggerTrackProgress(session->getPlayer().getPosition());
}

}  // namespace

orvo::shared_ptr<Spotify> g_spotify_instance_Spotify(new Spotify);

namespace {

// What a destroyed pointer holds nobody knows, so it is not looked at. Declared after it, which
// makes this handler come first.
bool exitHasBegun = false;
struct ExitHandler {
    ~ExitHandler() { exitHasBegun = true; }
};
const ExitHandler exitHandler;

orvo::shared_ptr<Session> rootSession() {
    return !exitHasBegun && g_spotify_instance_Spotify ? g_spotify_instance_Spotify->getSession()
                                                       : orvo::shared_ptr<Session>();
}

}  // namespace

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
    if (name == "Spotify" && !exitHasBegun) {
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
