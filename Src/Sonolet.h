#ifndef SONOLET_SONOLET_H
#define SONOLET_SONOLET_H

#include "jspp/event_dispatcher.h"
#include "jspp/interface.h"

#include <string>

// The plug-in itself, as script sees it: its version and the progress of playback. "Error" and
// "LogMessage" take listeners, but nothing raises them. One object, owned by the root and the
// session; it outlives the player that tells it.
class Sonolet final : public jspp::event_dispatcher<jspp::interface> {
public:
    // Asks libspotify for its text once, which needs no session.
    Sonolet();

    // Raise "TrackProgress" with the backend's position in seconds, and "TrackComplete" without
    // arguments. Any thread; what fails loses that event alone.
    void triggerTrackProgress(double position) noexcept;
    void triggerTrackCompleteEvent() noexcept;

private:
    JSPP_EVENT_ATTRIBUTE(TrackProgress, "TrackProgress")
    JSPP_EVENT_ATTRIBUTE(Error, "Error")
    JSPP_EVENT_ATTRIBUTE(LogMessage, "LogMessage")
    JSPP_EVENT_ATTRIBUTE(TrackComplete, "TrackComplete")

    // Script: this interface's version and the library's, "12.8/" and what sp_build_id says.
    void version(jspp::function_context& context) const;

    const std::string versionText;
};

#endif
