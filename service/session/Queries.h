#ifndef SONOLET_SERVICE_SESSION_QUERIES_H
#define SONOLET_SERVICE_SESSION_QUERIES_H

#include "queries/Query.h"
#include "session/LateAnswers.h"
#include "source/Source.h"
#include "threads/Worker.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace sonolet::service {

// The queries under way: asked by the session's owner, answered by the worker, told by
// processEvents() in the order of asking.
//
// Each is told once: with its answer, or with SP_ERROR_OTHER_TRANSIENT when it was cancelled
// before.
//
// A session that was released tells nobody; its queries are loaded nevertheless, for those who hold
// them.
//
// Threads: the owner's, but for what the worker does by itself. The worker must end before this.
class Queries final {
public:
    struct Hooks {
        // The worker may have seen a younger catalogue than the handles have. The owner's thread.
        std::function<void()> lookForChanges;
        // What the worker has met in the catalogue's file. The worker's thread.
        std::function<void(const DatabaseError&)> damaged;
    };

    Queries(Callbacks& sessionCallbacks,
            LateAnswers& lateAnswers,
            Worker& sessionWorker,
            std::shared_ptr<Library> sessionLibrary,
            Source& musicSource,
            std::shared_ptr<const Faults> shownFaults,
            Hooks toSession);

    Queries(const Queries&) = delete;
    Queries& operator=(const Queries&) = delete;

    // Has the worker look in these databases from here on.
    void use(const Kept& files);

    void ask(Ref<Query> query);

    // Finishes those under way; who asked is yet to be told.
    std::vector<Ref<Query>> cancel();
    void tell(const std::vector<Ref<Query>>& cancelled) const;

    // To be called when the worker has ended. Nobody is told any more.
    void close();

private:
    void find(unsigned number, Query& query);
    void finish(unsigned number, sp_error error);

    // Constant after construction.
    Callbacks& callbacks;
    LateAnswers& late;
    Worker& worker;
    const std::shared_ptr<Library> library;
    Source& source;
    const std::shared_ptr<const Faults> faults;
    const Hooks hooks;

    // State below is the owner thread's.
    std::map<unsigned, Ref<Query>> queries;  // under way, by number
    unsigned lastQuery = 0;

    std::atomic<unsigned> cancelledQueries{0};  // up to this number nobody waits for an answer

    // State below is the worker's.
    std::unique_ptr<Answers> answers;
    Kept kept;
};

}  // namespace sonolet::service

#endif
