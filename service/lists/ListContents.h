#ifndef SONOLET_SERVICE_LISTS_LIST_CONTENTS_H
#define SONOLET_SERVICE_LISTS_LIST_CONTENTS_H

#include "accounts/ListStore.h"
#include "objects/Handle.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <unordered_set>
#include <utility>
#include <vector>

namespace sonolet::service {

// The entries of a list as they are shown, with the handles that lead to their items.
//
// A change comes in terms of entries, as the log has it, and is answered in terms of places, as the
// callbacks of the interface want it. An entry that is not there, because this list has already
// seen it go, is passed over; one to stand before that is not there means the end.
//
// Threads: belongs to the thread that uses the library. Ownership: holds a reference of each handle
// that was asked for. Cost: a change of n entries looks at each entry once, one of a single entry
// at those behind it.
template <typename Object>
class ListContents final {
public:
    // An entry, and the handle of what it stands for.
    struct Place {
        ListEntry entry;
        Ref<Object> handle;  // made when it is asked for
    };

    // What a change did, in places from 0. Of what came or moved, `position` is where the first one
    // is now; `positions` are where entries were, or where those that came are.
    struct Effect {
        std::vector<int> positions;
        int position = 0;
        std::vector<Place> gone;
    };

    // Takes these entries for all there are; the handles of those before go. No effect tells of it:
    // whoever must tell the program asks compare() first.
    void load(std::vector<ListEntry> entries) {
        places.clear();
        places.reserve(entries.size());
        for (ListEntry& entry : entries) {
            places.push_back({std::move(entry), {}});
        }
    }

    // As the interface counts.
    int size() const { return static_cast<int>(places.size()); }
    // NULL: out of range. Good until the next change.
    Place* at(int index) {
        return index < 0 || index >= size() ? nullptr : &places[static_cast<std::size_t>(index)];
    }

    // -1: it is not there. Lists grow at their end, so that is where the search begins.
    int find(std::int64_t entry) const {
        int index = size() - 1;
        while (index >= 0 && places[static_cast<std::size_t>(index)].entry.id != entry) {
            --index;
        }
        return index;
    }

    // Before the entry `before`, 0: at the end. They stand together, in the order in which they
    // come.
    Effect insert(std::int64_t before, std::vector<ListEntry> entries) {
        Effect effect;
        effect.position = before == 0 ? size() : find(before);
        if (effect.position < 0) {
            effect.position = size();
        }
        std::vector<Place> fresh;
        for (ListEntry& entry : entries) {
            effect.positions.push_back(effect.position + static_cast<int>(fresh.size()));
            fresh.push_back({std::move(entry), {}});
        }
        put(effect.position, std::move(fresh));
        return effect;
    }

    // What is gone keeps its handles until the callbacks have told of it.
    Effect remove(const std::vector<std::int64_t>& entries) {
        return take(entries.begin(), entries);
    }

    // `numbers`: the entry to stand before, then the entries. REQUIRES: there is the first of them.
    Effect move(const std::vector<std::int64_t>& numbers) {
        Effect effect = take(numbers.begin() + 1, numbers);
        effect.position = numbers.front() == 0 ? size() : find(numbers.front());
        if (effect.position < 0) {
            effect.position = size();
        }
        put(effect.position, std::exchange(effect.gone, {}));
        return effect;
    }

    // How other entries differ from these: one run of entries gives way to another. For a session
    // that has missed a part of the log: what both begin and end with need not be told. To be
    // applied in this order: remove(gone), then insert(before, come).
    struct Difference {
        std::vector<std::int64_t> gone;
        std::int64_t before = 0;
        std::vector<ListEntry> come;
    };
    Difference compare(const std::vector<ListEntry>& others) const {
        const auto same = [](const Place& place, const ListEntry& other) {
            return place.entry.id == other.id;
        };
        const auto start =
            std::mismatch(places.begin(), places.end(), others.begin(), others.end(), same);
        const auto end =
            std::mismatch(places.rbegin(), std::make_reverse_iterator(start.first), others.rbegin(),
                          std::make_reverse_iterator(start.second), same);
        Difference difference;
        for (auto place = start.first; place != end.first.base(); ++place) {
            difference.gone.push_back(place->entry.id);
        }
        difference.before = end.first.base() == places.end() ? 0 : end.first.base()->entry.id;
        difference.come.assign(start.second, end.second.base());
        return difference;
    }

private:
    using Numbers = std::vector<std::int64_t>;

    // Takes the entries from `first` on out, in one pass: those of `numbers` that are there, in the
    // order of their places.
    Effect take(Numbers::const_iterator first, const Numbers& numbers) {
        Effect effect;
        if (numbers.end() - first == 1) {
            if (const int index = find(*first); index >= 0) {
                effect.positions.push_back(index);
                effect.gone.push_back(std::move(places[static_cast<std::size_t>(index)]));
                places.erase(places.begin() + index);
            }
            return effect;
        }
        const std::unordered_set<std::int64_t> wanted(first, numbers.end());
        std::vector<Place> kept;
        kept.reserve(places.size());
        for (int index = 0; index < size(); ++index) {
            Place& place = places[static_cast<std::size_t>(index)];
            if (wanted.count(place.entry.id) > 0) {
                effect.positions.push_back(index);
                effect.gone.push_back(std::move(place));
            } else {
                kept.push_back(std::move(place));
            }
        }
        places = std::move(kept);
        return effect;
    }

    // Lets them stand there, the first at `position`.
    void put(int position, std::vector<Place> fresh) {
        places.insert(places.begin() + position, std::make_move_iterator(fresh.begin()),
                      std::make_move_iterator(fresh.end()));
    }

    std::vector<Place> places;
};

}  // namespace sonolet::service

#endif
