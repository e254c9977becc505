#ifndef SONOLET_HOST_ENGINE_FINALIZERQUEUE_H
#define SONOLET_HOST_ENGINE_FINALIZERQUEUE_H

#include <memory>
#include <mutex>
#include <vector>

class FinalizerQueue;
class ObjectRecord;

// The private data of the cells that make up one script object of a native record. It is freed when
// the finalizer of the last cell has run; a newer script object of the record has a link of its
// own.
struct FrontLink {
    ObjectRecord* record;  // null once the record is gone
    unsigned cells;        // whose finalizers are still to come
    std::shared_ptr<FinalizerQueue> queue;
};

// Finalizers on their way from the collector, which must not call the engine or the plug-in, to the
// script thread.
//
// Threads: add() may be called on any, the rest on the script thread.
class FinalizerQueue final {
public:
    // One cell of `link` is gone.
    static void add(FrontLink* link) noexcept;

    std::vector<FrontLink*> take();

    // From here on nobody takes: links are freed as their last cell goes.
    void close();

private:
    static void drop(FrontLink* link) noexcept;

    std::mutex mutex;
    std::vector<FrontLink*> finalized;  // one entry a cell; protected by mutex
    bool closed = false;                // protected by mutex
};

#endif
