#include "engine/FinalizerQueue.h"

#include <utility>

void FinalizerQueue::add(FrontLink* link) noexcept {
    // Keeps the queue while it is locked: the link may own the last reference.
    const std::shared_ptr<FinalizerQueue> queue = link->queue;
    const std::lock_guard<std::mutex> lock(queue->mutex);
    if (queue->closed) {
        delete link;
        return;
    }
    queue->finalized.push_back(link);
}

std::vector<FrontLink*> FinalizerQueue::take() {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(finalized, {});
}

void FinalizerQueue::close() {
    const std::lock_guard<std::mutex> lock(mutex);
    closed = true;
    for (FrontLink* link : finalized) {
        delete link;
    }
    finalized.clear();
}
