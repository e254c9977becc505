#include "Session.h"

// Who is inside the session on behalf of libspotify or the backend, and how its destructor waits.

namespace {

std::atomic<int> visits{0};
thread_local int ownVisits = 0;

// A destructor sleeps in the leaving room until the others have left.
std::atomic<bool> isAwaited{false};

// Never freed: the library's threads go on after the exit handlers.
struct LeavingRoom {
    orvo::Mutex mutex;
    orvo::Condition left;
};

LeavingRoom& leavingRoom() {
    static LeavingRoom& room = *new LeavingRoom;
    return room;
}

// A callback cannot be told that there is no memory.
[[maybe_unused]] const LeavingRoom& madeAtLoad = leavingRoom();

}  // namespace

Session::Visit::Visit() noexcept : ofThisThread(ownVisits) {
    ++ofThisThread;
    visits.fetch_add(1);
}

Session::Visit::~Visit() {
    --ofThisThread;
    visits.fetch_sub(1);
    if (isAwaited.load()) {
        LeavingRoom& room = leavingRoom();
        const orvo::scoped_lock lock(room.mutex);
        room.left.notify_all();
    }
}

void Session::Visit::awaitOthers() noexcept {
    LeavingRoom& room = leavingRoom();
    const orvo::scoped_lock lock(room.mutex);
    isAwaited.store(true);
    while (visits.load() != ownVisits) {
        room.left.wait(room.mutex);
    }
    isAwaited.store(false);
}
