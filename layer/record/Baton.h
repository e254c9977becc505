#ifndef SONOLET_LAYER_RECORD_BATON_H
#define SONOLET_LAYER_RECORD_BATON_H

#include <condition_variable>
#include <mutex>

// Lets one thread at a time be in the plug-in.
//
// A recording that is to be replayed has to say in which order threads did what the plug-in shares
// between them. With the baton that is the order of the recording's lines, whatever the plug-in's
// locks and atomics are: who has it goes on until the next call out or return, and only there may
// another thread go on.
//
// Threads: any; a thread takes and gives in turns. A thread that takes what it has, or gives what
// it has not, waits forever or frees another's. Errors: none.
class Baton final {
public:
    void take() noexcept {
        std::unique_lock<std::mutex> lock(mutex);
        given.wait(lock, [this] { return !isTaken || isRetired; });
        isTaken = true;
    }

    void give() noexcept {
        const std::lock_guard<std::mutex> lock(mutex);
        isTaken = false;
        given.notify_one();
    }

    // From now on nobody waits: the recording is over, and who has the baton may never give it.
    void retire() noexcept {
        const std::lock_guard<std::mutex> lock(mutex);
        isRetired = true;
        given.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable given;
    bool isTaken = false;
    bool isRetired = false;
};

#endif
