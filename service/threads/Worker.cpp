#include "threads/Worker.h"

#include <utility>

namespace sonolet::service {

Worker::Worker() : thread([this] { work(); }) {}

Worker::~Worker() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    changed.notify_one();
    thread.join();
}

void Worker::post(Task task) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        tasks.push_back(std::move(task));
    }
    changed.notify_one();
}

void Worker::work() {
    for (;;) {
        Task task;
        {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [this] { return stopping || !tasks.empty(); });
            if (stopping) {
                return;
            }
            task = std::move(tasks.front());
            tasks.pop_front();
        }
        task();
    }
}

}  // namespace sonolet::service
