#ifndef SONOLET_ORVO_MUTEX_H
#define SONOLET_ORVO_MUTEX_H

#include "jspp/orvo/thread_annotations.h"

#include <pthread.h>

namespace orvo {

// A POSIX mutex with default attributes: not recursive, any thread. Locked with scoped_lock alone,
// never while somebody outside is called.
class ORVO_CAPABILITY("mutex") Mutex final {
public:
    Mutex() = default;
    ~Mutex() { pthread_mutex_destroy(&mutex); }

    // A mutex has one address for its life.
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // For scoped_lock and Condition. REQUIRES: this thread does not hold it.
    void lock() noexcept ORVO_ACQUIRE() { pthread_mutex_lock(&mutex); }
    void unlock() noexcept ORVO_RELEASE() { pthread_mutex_unlock(&mutex); }

private:
    friend class Condition;

    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

// A POSIX condition variable: threads wait in it for what a mutex guards to change.
class Condition final {
public:
    Condition() = default;
    ~Condition() { pthread_cond_destroy(&condition); }

    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    // Lets the mutex go while it waits. May return without a notification. The caller checks what
    // it waits for in a loop.
    void wait(Mutex& held) noexcept ORVO_REQUIRES(held) {
        pthread_cond_wait(&condition, &held.mutex);
    }
    // Any thread; the mutex need not be held.
    void notify_all() noexcept { pthread_cond_broadcast(&condition); }

private:
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};

// Holds a mutex for the length of a block.
class ORVO_SCOPED_CAPABILITY scoped_lock final {
public:
    // Waits as long as it takes. REQUIRES: this thread does not hold it.
    explicit scoped_lock(Mutex& held) noexcept ORVO_ACQUIRE(held) : mutex(held) { mutex.lock(); }
    ~scoped_lock() ORVO_RELEASE() { mutex.unlock(); }

    scoped_lock(const scoped_lock&) = delete;
    scoped_lock& operator=(const scoped_lock&) = delete;

private:
    Mutex& mutex;
};

}  // namespace orvo

#endif
