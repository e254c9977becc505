#include "session/FaultShow.h"

#include <utility>

namespace sonolet::service {

FaultShow::FaultShow(Callbacks& sessionCallbacks,
                     Playback& sessionPlayback,
                     Playlists& sessionLists,
                     std::shared_ptr<Faults> shownFaults)
    : callbacks(sessionCallbacks), playback(sessionPlayback), lists(sessionLists),
      faults(std::move(shownFaults)) {}

void FaultShow::post() {
    for (const Faults::Turn& turn : faults->due()) {
        callbacks.post([this, turn] { show(turn); });
    }
}

void FaultShow::show(const Faults::Turn& turn) {
    using Kind = Faults::Kind;
    switch (turn.kind) {
    case Kind::offline:
        callbacks.log(turn.begins ? "Fault: the connection is lost"
                                  : "Fault: the connection is back");
        callbacks.raise(&sp_session_callbacks::connection_error,
                        turn.begins ? SP_ERROR_UNABLE_TO_CONTACT_SERVER : SP_ERROR_OK);
        break;
    case Kind::token:
        callbacks.log("Fault: the play token is lost");
        if (playback.isPlaying() && lists.account()) {
            playback.loseToken();
        } else {
            callbacks.raise(&sp_session_callbacks::play_token_lost);
        }
        break;
    case Kind::streamError:
        callbacks.log("Fault: the stream breaks off");
        playback.stop();
        callbacks.raise(&sp_session_callbacks::streaming_error, SP_ERROR_OTHER_TRANSIENT);
        break;
    case Kind::unavailable:
        callbacks.log(turn.begins ? "Fault: a track is not available"
                                  : "Fault: a track is available again");
        lists.tellMetadata();
        callbacks.raise(&sp_session_callbacks::metadata_updated);
        break;
    case Kind::message:
        callbacks.raise(&sp_session_callbacks::message_to_user, turn.text.c_str());
        break;
    case Kind::login:
    case Kind::slow:
        // Seen by who asks for something meanwhile.
        break;
    }
}

}  // namespace sonolet::service
