#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_ORDER_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_ORDER_H

#include "accounts/ListRows.h"
#include "store/Database.h"

#include <cstdint>
#include <vector>

namespace sonolet::service {

// The order of a list's entries: sparse ranks, so that a change writes what it changes and seldom
// more. Where there is no rank left between two entries, some behind them give way.
//
// Threads: as its database's; inside a transaction. Errors: DatabaseError.
class ListOrder final {
public:
    // The tables are there; `sharedDatabase` outlives this.
    explicit ListOrder(Database& sharedDatabase);

    // Ranks for `count` entries before that entry, which is changed to the one that is there; 0: at
    // the end.
    std::vector<std::int64_t>
    makeRoom(const ListRow& list, std::int64_t& before, std::int64_t count);

    // Puts an entry there, also one that was taken out.
    void put(std::int64_t entry, std::int64_t rank) { updateRank.execute(entry, rank); }

private:
    // The same where there are too few between `low` and `high`: entries behind them give way.
    std::vector<std::int64_t>
    spread(const ListRow& list, std::int64_t low, std::int64_t high, std::int64_t count);

    Statement findRank;
    Statement findNext;
    Statement findPrevious;
    Statement findLast;
    Statement listRanks;
    Statement updateRank;
};

}  // namespace sonolet::service

#endif
