#include "Sonolet.h"

#include "libspotify/api.h"

namespace {

std::string buildVersion() {
    const char* const build = sp_build_id();
    return std::string("12.8/") + (build ? build : "");
}

}  // namespace

Sonolet::Sonolet() : versionText(buildVersion()) {
    static const function_row members[] = {{"version", &Sonolet::version, ""}};
    static const attribute_row events[] = {
        JSPP_EVENT_ROW(Sonolet, TrackProgress),
        JSPP_EVENT_ROW(Sonolet, Error),
        JSPP_EVENT_ROW(Sonolet, LogMessage),
        JSPP_EVENT_ROW(Sonolet, TrackComplete),
    };
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), members, events);
    _class(names);
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
