#ifndef SONOLET_SERVICE_SESSION_FAULT_SHOW_H
#define SONOLET_SERVICE_SESSION_FAULT_SHOW_H

#include "faults/Faults.h"
#include "session/Playback.h"

#include <memory>

namespace sonolet::service {

// Shows the turns of the bad days to the program: when a fault begins or ends, the callbacks come
// that a program of the real service would get. What a fault changes while it lasts is asked of
// Faults by whoever does it.
//
// Threads: the one that processes events. Ownership: borrows the session's parts.
class FaultShow final {
public:
    FaultShow(Callbacks& sessionCallbacks,
              Playback& sessionPlayback,
              Playlists& sessionLists,
              std::shared_ptr<Faults> shownFaults);

    // Posts the turns that are due since the last call, in the order of their times.
    void post();

private:
    void show(const Faults::Turn& turn);

    Callbacks& callbacks;
    Playback& playback;
    Playlists& lists;
    const std::shared_ptr<Faults> faults;
};

}  // namespace sonolet::service

#endif
