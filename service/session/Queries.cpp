#include "session/Queries.h"

#include <utility>

namespace sonolet::service {

Queries::Queries(Callbacks& sessionCallbacks,
                 LateAnswers& lateAnswers,
                 Worker& sessionWorker,
                 std::shared_ptr<Library> sessionLibrary,
                 Source& musicSource,
                 std::shared_ptr<const Faults> shownFaults,
                 Hooks toSession)
    : callbacks(sessionCallbacks), late(lateAnswers), worker(sessionWorker),
      library(std::move(sessionLibrary)), source(musicSource), faults(std::move(shownFaults)),
      hooks(std::move(toSession)) {}

void Queries::use(const Kept& files) {
    worker.post([this, files] {
        answers.reset();
        kept = files;
    });
}

void Queries::ask(Ref<Query> query) {
    const unsigned number = ++lastQuery;
    queries.emplace(number, query);
    worker.post([this, number, query = std::move(query)] { find(number, *query.get()); });
}

// On the worker.
void Queries::find(unsigned number, Query& query) {
    if (number <= cancelledQueries) {
        return;
    }
    sp_error error = SP_ERROR_OTHER_PERMANENT;
    try {
        if (answers == nullptr) {
            answers = source.answers(kept);
        }
        error = faults->isOffline() ? SP_ERROR_OTHER_TRANSIENT : query.find(*answers);
    } catch (const SourceError& failure) {
        callbacks.log(std::string("A query was not answered: ") + failure.what());
        error = failure.number();
    } catch (const std::exception& failure) {
        callbacks.log(std::string("A query failed: ") + failure.what());
        answers.reset();
        if (const auto* database = dynamic_cast<const DatabaseError*>(&failure)) {
            hooks.damaged(*database);
        }
    }
    late.answer([this, number, error] { finish(number, error); });
}

void Queries::finish(unsigned number, sp_error error) {
    const auto found = queries.find(number);
    if (found == queries.end()) {
        return;
    }
    const Ref<Query> query = found->second;
    queries.erase(found);
    try {
        hooks.lookForChanges();
    } catch (const std::exception& failure) {
        callbacks.log(failure.what());
    }
    query->finish(error, *library);
    query->notify();
}

std::vector<Ref<Query>> Queries::cancel() {
    cancelledQueries = lastQuery;
    std::vector<Ref<Query>> cancelled;
    for (const auto& [number, query] : std::exchange(queries, {})) {
        query->finish(SP_ERROR_OTHER_TRANSIENT, *library);
        cancelled.push_back(query);
    }
    return cancelled;
}

void Queries::tell(const std::vector<Ref<Query>>& cancelled) const {
    for (const Ref<Query>& query : cancelled) {
        // The one before may have released the session.
        if (!callbacks.isSilent()) {
            query->notify();
        }
    }
}

void Queries::close() {
    answers.reset();
    cancel();
}

}  // namespace sonolet::service
