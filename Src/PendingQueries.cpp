#include "PendingQueries.h"

#include "Logger.h"

namespace {

const Logger logger SONOLET_AT_LOAD("Src/PendingQueries");

}  // namespace

PendingQueries& PendingQueries::getInstance() {
    static PendingQueries& instance = *new PendingQueries;
    return instance;
}

std::unique_ptr<PendingQueries::Pending> PendingQueries::take(const void* userData) {
    std::unique_ptr<Pending> query;
    const auto pending = queries.find(userData);
    if (pending != queries.end()) {
        query = std::move(pending->second);
        queries.erase(pending);
    }
    return query;
}

void PendingQueries::logLost() noexcept {
    logger.error("PendingQueries::complete", ": out of memory, a query's answer is lost");
}
