#include "Sonolet.h"

#include "libspotify/api.h"

namespace {

std::string buildVersion() {
    const char* const build = sp_build_id();
    return std::string("12.8/") + (build ? build : "");
}

}  // namespace

Sonolet::Sonolet() : versionText(buildVersion()) {
    _register();
    _event("onTrackProgress", &Sonolet::_evt_get_TrackProgress, &Sonolet::_evt_set_TrackProgress);
    _event("onError", &Sonolet::_evt_get_Error, &Sonolet::_evt_set_Error);
    _event("onLogMessage", &Sonolet::_evt_get_LogMessage, &Sonolet::_evt_set_LogMessage);
    _event("onTrackComplete", &Sonolet::_evt_get_TrackComplete, &Sonolet::_evt_set_TrackComplete);
    _function("version", &Sonolet::version, "");
}

void Sonolet::version(jspp::function_context& context) const {
    context.return_string(versionText);
}

void Sonolet::triggerTrackProgress(double position) noexcept {
    dispatch_event("TrackProgress", position);
}

void Sonolet::triggerTrackCompleteEvent() noexcept {
    dispatch_event("TrackComplete");
}
