#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_ITEMS_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_ITEMS_H

#include "accounts/ListStore.h"
#include "store/Id.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sonolet::service {

// Numbers the items of several lists, so that they can be compared though an item may stand in a
// list more than once: the n-th of an item has the same number in each. Numbers are from 0.
//
// Threads: one.
class ItemNumbers final {
public:
    std::vector<std::size_t> of(const std::vector<Id>& list);
    // How many there are in all lists together.
    std::size_t count() const { return items.size(); }
    const Id& item(std::size_t number) const { return items[number]; }

private:
    std::unordered_map<Id, std::vector<std::size_t>> known;  // by item: of its first, its second...
    std::vector<Id> items;
};

// The items of those entries, in their order.
std::vector<Id> itemsOf(const std::vector<ListEntry>& entries);

// Those of `some` that are not among `others`, in their order.
std::vector<Id> itemsWithout(const std::vector<Id>& some, const std::vector<Id>& others);

// Makes them the items of a list of tracks. Entries that stay are the same entries; as few as
// possible move.
void setItems(ListStore& store,
              const ListRow& list,
              const std::vector<Id>& items,
              std::string_view creator);

// What becomes of a list that two have changed since it was `base`: what either took out is out,
// what either put in is in, behind what it stood behind there. Of two orders `mine` counts.
std::vector<Id> mergedItems(const std::vector<Id>& base,
                            const std::vector<Id>& mine,
                            const std::vector<Id>& theirs);

}  // namespace sonolet::service

#endif
