#ifndef SONOLET_HOST_ENGINE_FINALIZERQUEUE_H
#define SONOLET_HOST_ENGINE_FINALIZERQUEUE_H

#include <memory>
#include <mutex>
#include <vector>

class FinalizerQueue;
class ObjectRecord;

// The private data of a catcher. It is freed when the catcher's finalizer has run; a newer script
// object of the record has a catcher and a link of its own.
struct FrontLink {
    ObjectRecord* record;  // null once the record is gone
    std::shared_ptr<FinalizerQueue> queue;
};

// Finalizers on their way from the collector, which must not call the engine or the plug-in, to the
// script thread.
//
// Threads: add() may be called on any, the rest on the script thread.
class FinalizerQueue final {
public:
    // The catcher of `link` is gone.
    static void add(FrontLink* link) noexcept;

    std::vector<FrontLink*> take();

    // From here on nobody takes: links are freed as their catchers go.
    void close();

private:
    std::mutex mutex;
    std::vector<FrontLink*> finalized;  // protected by mutex
    bool closed = false;                // protected by mutex
};

#endif
