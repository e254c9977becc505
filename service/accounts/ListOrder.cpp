#include "accounts/ListOrder.h"

#include <cstddef>
#include <optional>

namespace sonolet::service {

namespace {

constexpr std::int64_t gap = std::int64_t{1} << 32;
// Where entries give way they get at least this far from each other, so that it stays rare.
constexpr std::int64_t smallestGap = 1 << 16;
constexpr std::size_t firstWindow = 16;

}  // namespace

ListOrder::ListOrder(Database& sharedDatabase)
    : findRank(sharedDatabase, "SELECT rank FROM list_entries WHERE id = ?2 AND list_id = ?1"),
      findNext(sharedDatabase,
               "SELECT id, rank FROM list_entries WHERE list_id = ?1 AND rank >= ?2"
               " AND removed IS NULL ORDER BY rank LIMIT 1"),
      findPrevious(sharedDatabase,
                   "SELECT rank FROM list_entries WHERE list_id = ?1 AND rank < ?2"
                   " AND removed IS NULL ORDER BY rank DESC LIMIT 1"),
      findLast(sharedDatabase,
               "SELECT rank FROM list_entries WHERE list_id = ?1 AND removed IS NULL"
               " ORDER BY rank DESC LIMIT 1"),
      listRanks(sharedDatabase,
                "SELECT id, rank FROM list_entries WHERE list_id = ?1 AND rank >= ?2"
                " AND removed IS NULL ORDER BY rank LIMIT ?3"),
      updateRank(sharedDatabase,
                 "UPDATE list_entries SET rank = ?2, removed = NULL WHERE id = ?1") {}

std::vector<std::int64_t>
ListOrder::makeRoom(const ListRow& list, std::int64_t& before, std::int64_t count) {
    const auto from = [count](std::int64_t low, std::int64_t step) {
        std::vector<std::int64_t> ranks;
        for (std::int64_t place = 1; place <= count; ++place) {
            ranks.push_back(low + step * place);
        }
        return ranks;
    };
    std::optional<std::int64_t> high;
    if (before != 0) {
        Cursor anchor = findRank.run(list.id, before);
        before = 0;
        if (anchor.next()) {
            if (Cursor next = findNext.run(list.id, anchor.integer(0)); next.next()) {
                before = next.integer(0);
                high = next.integer(1);
            }
        }
    }
    if (!high) {
        Cursor last = findLast.run(list.id);
        return from(last.next() ? last.integer(0) : 0, gap);
    }
    Cursor previous = findPrevious.run(list.id, *high);
    if (!previous.next()) {
        return from(*high - gap * (count + 1), gap);
    }
    const std::int64_t low = previous.integer(0);
    const std::int64_t step = (*high - low) / (count + 1);
    return step > 0 ? from(low, step) : spread(list, low, *high, count);
}

std::vector<std::int64_t>
ListOrder::spread(const ListRow& list, std::int64_t low, std::int64_t high, std::int64_t count) {
    for (std::size_t window = firstWindow;; window *= 2) {
        std::vector<std::int64_t> behind;
        std::int64_t top = 0;
        for (Cursor row = listRanks.run(list.id, high, static_cast<std::int64_t>(window) + 1);
             row.next();) {
            behind.push_back(row.integer(0));
            top = row.integer(1);
        }
        const auto total = count + static_cast<std::int64_t>(behind.size());
        std::int64_t step = gap;
        if (behind.size() > window) {
            // The last one stays where it is.
            behind.pop_back();
            step = (top - low) / total;
            if (step < smallestGap) {
                continue;
            }
        }
        std::vector<std::int64_t> ranks;
        for (std::int64_t place = 1; place <= count; ++place) {
            ranks.push_back(low + step * place);
        }
        std::int64_t rank = low + step * count;
        for (const std::int64_t entry : behind) {
            rank += step;
            put(entry, rank);
        }
        return ranks;
    }
}

}  // namespace sonolet::service
