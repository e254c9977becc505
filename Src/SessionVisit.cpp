#include "Session.h"

// Who is inside the session on behalf of libspotify or the backend, and how its destructor waits.

namespace {

std::atomic<int> visits{0};
thread_local int ownVisits = 0;

// Where a destructor sleeps until the others have left. Never freed: the library's threads go on
// after the exit handlers.
struct LeavingRoom {
    orvo::Mutex mutex;
    orvo::Condition left;
    std::atomic<bool> isInUse{false};
};

LeavingRoom& leavingRoom() {
    static LeavingRoom& room = *new LeavingRoom;
    return room;
}

// A callback cannot be told that there is no memory.
[[maybe_unused]] const LeavingRoom& madeAtLoad = leavingRoom();

}  // namespace

Session::Visit::Visit() noexcept {
    ++ownVisits;
    visits.fetch_add(1);
}

Session::Visit::~Visit() {
    --ownVisits;
    visits.fetch_sub(1);
    LeavingRoom& room = leavingRoom();
    if (room.isInUse.load()) {
        const orvo::scoped_lock lock(room.mutex);
        room.left.notify_all();
    }
}

void Session::Visit::awaitOthers() noexcept {
    LeavingRoom& room = leavingRoom();
    const orvo::scoped_lock lock(room.mutex);
    room.isInUse.store(true);
    while (visits.load() != ownVisits) {
        room.left.wait(room.mutex);
    }
    room.isInUse.store(false);
}
