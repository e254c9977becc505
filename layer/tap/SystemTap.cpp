// Where the plug-in waits for itself: a lock that is held, and what another thread is to tell.

#include "tap/Call.h"
#include "tap/Taps.h"

#include <pthread.h>

namespace {

int (*lockOriginal)(pthread_mutex_t*) = nullptr;
int (*waitOriginal)(pthread_cond_t*, pthread_mutex_t*) = nullptr;

// A lock that is free is taken as ever; only one that is not lets others go on meanwhile.
int lock(pthread_mutex_t* mutex) {
    if (pthread_mutex_trylock(mutex) == 0) {
        return 0;
    }
    Call call(Fn::pthread_mutex_lock, nullptr, 0);
    const int answer = lockOriginal(mutex);
    call.end(integerValue(answer));
    return answer;
}

int wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    Call call(Fn::pthread_cond_wait, nullptr, 0);
    const int answer = waitOriginal(condition, mutex);
    call.end(integerValue(answer));
    return answer;
}

}  // namespace

void* systemTap(const std::string& symbol, void* function) {
    if (symbol == "pthread_mutex_lock") {
        return take(lockOriginal, function, &lock);
    }
    if (symbol == "pthread_cond_wait") {
        return take(waitOriginal, function, &wait);
    }
    return nullptr;
}
