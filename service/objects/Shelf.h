#ifndef SONOLET_SERVICE_OBJECTS_SHELF_H
#define SONOLET_SERVICE_OBJECTS_SHELF_H

#include "objects/Handle.h"

#include <mutex>
#include <unordered_map>
#include <vector>

namespace sonolet::service {

// The living handles of one kind, one for each key: the same link gives the same handle while
// anyone holds it. The shelf itself holds none.
//
// Threads: any. `make` runs under the shelf's lock and must not come back to it. Ownership: what is
// handed out carries a reference; the shelf knows addresses alone, and is told by a handle's
// destructor to forget them.
template <typename Key, typename Object>
class Shelf final {
public:
    // The living handle, or a new one from `make`, which returns a reference. What it throws comes
    // through, and there is none then.
    template <typename Make>
    Ref<Object> get(const Key& key, Make make) {
        const std::lock_guard<std::mutex> lock(mutex);
        Object*& place = living[key];
        // A handle whose last reference has just gone is replaced; it will find that out below.
        if (place == nullptr || !place->tryAddRef()) {
            try {
                place = make();
            } catch (...) {
                living.erase(key);
                throw;
            }
        }
        return Ref<Object>::adopt(place);
    }

    // The living handle, or none: without making one for somebody who only has news for it.
    Ref<Object> find(const Key& key) {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = living.find(key);
        const bool lives = found != living.end() && found->second->tryAddRef();
        return Ref<Object>::adopt(lives ? found->second : nullptr);
    }

    // Those that live now, in no order.
    std::vector<Ref<Object>> all() {
        const std::lock_guard<std::mutex> lock(mutex);
        std::vector<Ref<Object>> found;
        found.reserve(living.size());
        for (const auto& [key, object] : living) {
            if (object->tryAddRef()) {
                found.push_back(Ref<Object>::adopt(object));
            }
        }
        return found;
    }

    // To be called by the destructor of `object`. Another one may have taken its place already.
    void forget(const Key& key, const void* object) noexcept {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = living.find(key);
        if (found != living.end() && found->second == object) {
            living.erase(found);
        }
    }

private:
    // State below is protected by mutex.
    std::mutex mutex;
    std::unordered_map<Key, Object*> living;
};

}  // namespace sonolet::service

#endif
