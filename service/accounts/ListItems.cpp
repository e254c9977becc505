#include "accounts/ListItems.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <optional>
#include <set>

namespace sonolet::service {

namespace {

using Numbers = std::vector<std::size_t>;

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

// By number, whether it is among these.
std::vector<bool> membersOf(const Numbers& numbers, std::size_t count) {
    std::vector<bool> members(count);
    for (const std::size_t number : numbers) {
        members[number] = true;
    }
    return members;
}

Numbers only(const Numbers& numbers, const std::vector<bool>& wanted) {
    Numbers some;
    std::copy_if(numbers.begin(), numbers.end(), std::back_inserter(some),
                 [&](std::size_t number) { return wanted[number]; });
    return some;
}

// By place, whether it belongs to a longest rising sequence of the places.
std::vector<bool> longestRise(const Numbers& places, std::size_t count) {
    Numbers ends;  // of the sequences of each length, the lowest place that one can end with
    Numbers before(count, nowhere);
    for (const std::size_t place : places) {
        const auto end = std::lower_bound(ends.begin(), ends.end(), place);
        before[place] = end == ends.begin() ? nowhere : *std::prev(end);
        end == ends.end() ? ends.push_back(place) : static_cast<void>(*end = place);
    }
    std::vector<bool> rises(count);
    for (std::size_t place = ends.empty() ? nowhere : ends.back(); place != nowhere;
         place = before[place]) {
        rises[place] = true;
    }
    return rises;
}

}  // namespace

std::vector<std::size_t> ItemNumbers::of(const std::vector<Id>& list) {
    std::unordered_map<Id, std::size_t> met;
    Numbers numbers;
    numbers.reserve(list.size());
    for (const Id& item : list) {
        Numbers& ofItem = known[item];
        const std::size_t nth = met[item]++;
        if (nth == ofItem.size()) {
            ofItem.push_back(items.size());
            items.push_back(item);
        }
        numbers.push_back(ofItem[nth]);
    }
    return numbers;
}

std::vector<Id> itemsOf(const std::vector<ListEntry>& entries) {
    std::vector<Id> items;
    items.reserve(entries.size());
    for (const ListEntry& entry : entries) {
        items.push_back(entry.item);
    }
    return items;
}

std::vector<Id> itemsWithout(const std::vector<Id>& some, const std::vector<Id>& others) {
    const std::set<Id> known(others.begin(), others.end());
    std::vector<Id> rest;
    for (const Id& id : some) {
        if (known.count(id) == 0) {
            rest.push_back(id);
        }
    }
    return rest;
}

void setItems(ListStore& store,
              const ListRow& list,
              const std::vector<Id>& items,
              std::string_view creator) {
    store.together([&] {
        const std::vector<ListEntry> entries = store.entries(list);
        ItemNumbers all;
        const Numbers wanted = all.of(items);
        const Numbers there = all.of(itemsOf(entries));
        Numbers placeOf(all.count(), nowhere);
        for (std::size_t place = 0; place < wanted.size(); ++place) {
            placeOf[wanted[place]] = place;
        }
        std::vector<std::int64_t> gone;
        std::vector<std::int64_t> entryAt(wanted.size());  // 0: one that is to come
        Numbers places;
        for (std::size_t index = 0; index < there.size(); ++index) {
            const std::size_t place = placeOf[there[index]];
            if (place == nowhere) {
                gone.push_back(entries[index].id);
            } else {
                entryAt[place] = entries[index].id;
                places.push_back(place);
            }
        }
        store.remove(list, gone);
        const std::vector<bool> stays = longestRise(places, wanted.size());
        // From the end, since each stands before one whose place is right by then.
        std::int64_t before = 0;
        std::vector<NewEntry> fresh;
        const auto insertFresh = [&] {
            std::reverse(fresh.begin(), fresh.end());
            if (const auto made = store.insert(list, before, fresh, creator); !made.empty()) {
                before = made.front();
            }
            fresh.clear();
        };
        for (std::size_t place = wanted.size(); place-- > 0;) {
            if (entryAt[place] == 0) {
                fresh.push_back({EntryKind::item, items[place], std::nullopt});
                continue;
            }
            insertFresh();
            if (!stays[place]) {
                store.move(list, {entryAt[place]}, before);
            }
            before = entryAt[place];
        }
        insertFresh();
    });
}

std::vector<Id> mergedItems(const std::vector<Id>& base,
                            const std::vector<Id>& mine,
                            const std::vector<Id>& theirs) {
    ItemNumbers all;
    const Numbers before = all.of(base);
    const Numbers here = all.of(mine);
    const Numbers there = all.of(theirs);
    const std::vector<bool> wasIn = membersOf(before, all.count());
    const std::vector<bool> isHere = membersOf(here, all.count());
    const std::vector<bool> isThere = membersOf(there, all.count());
    const auto moved = [&](const Numbers& now, const std::vector<bool>& isNow) {
        return only(before, isNow) != only(now, wasIn);
    };
    const bool theirOrder = moved(there, isThere) && !moved(here, isHere);
    const Numbers& first = theirOrder ? there : here;
    const Numbers& second = theirOrder ? here : there;

    std::list<std::size_t> result;
    std::vector<std::optional<std::list<std::size_t>::iterator>> placeOf(all.count());
    const auto stays = [&](std::size_t number) {
        return wasIn[number] ? isHere[number] && isThere[number] : true;
    };
    for (const std::size_t number : first) {
        if (stays(number)) {
            placeOf[number] = result.insert(result.end(), number);
        }
    }
    auto next = result.begin();
    for (const std::size_t number : second) {
        if (placeOf[number]) {
            next = std::next(*placeOf[number]);
        } else if (stays(number)) {
            result.insert(next, number);
        }
    }
    std::vector<Id> items;
    for (const std::size_t number : result) {
        items.push_back(all.item(number));
    }
    return items;
}

}  // namespace sonolet::service
