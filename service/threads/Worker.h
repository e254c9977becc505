#ifndef SONOLET_SERVICE_THREADS_WORKER_H
#define SONOLET_SERVICE_THREADS_WORKER_H

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace sonolet::service {

// A thread that does one task after another.
//
// Threads: post() is for any thread. The destructor finishes the task under way, drops the others
// and joins. A task must not throw.
class Worker final {
public:
    using Task = std::function<void()>;

    Worker();
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Behind those that wait. A task may post others. What is dropped at the end is destroyed on
    // the thread that destroys the worker.
    void post(Task task);

    // Set once the worker is going: a long task gives up. Any thread.
    const std::atomic<bool>& stopFlag() const { return stopping; }

private:
    void work();

    // State below is protected by mutex.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks;
    std::atomic<bool> stopping{false};  // set under mutex

    std::thread thread;  // last: it uses everything above
};

}  // namespace sonolet::service

#endif
