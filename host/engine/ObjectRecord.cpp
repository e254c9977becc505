#include "engine/ObjectRecord.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <deque>
#include <new>
#include <unordered_set>
#include <vector>

namespace {

// Storage of many records, at an address that any of theirs tells.
struct Slab {
    static constexpr std::size_t size = std::size_t{64} * 1024;
    static constexpr std::size_t first = 128;  // where the first record lies
    static constexpr std::size_t count = (size - first) / sizeof(ObjectRecord);

    static Slab& around(const void* address) noexcept {
        auto* const byte = static_cast<char*>(const_cast<void*>(address));
        return *reinterpret_cast<Slab*>(byte - reinterpret_cast<std::uintptr_t>(address) % size);
    }

    // Which record begins there; `count` when none does.
    std::size_t indexOf(const void* address) const noexcept {
        const std::size_t offset = reinterpret_cast<std::uintptr_t>(address) -
                                   reinterpret_cast<std::uintptr_t>(this) - first;
        const std::size_t index = offset / sizeof(ObjectRecord);
        return offset % sizeof(ObjectRecord) == 0 && index < count ? index : count;
    }

    std::bitset<count + 1> live;  // the last one never is
};
static_assert(sizeof(Slab) <= Slab::first);

// Of the whole process: a plug-in may come with the address of a record that is gone. Slabs are
// kept for the next records.
struct Slabs {
    std::unordered_set<const Slab*> all;
    const Slab* lately = nullptr;  // one of them
    std::vector<void*> unused;     // places
};

Slabs& slabs() {
    static Slabs& made = *new Slabs;
    return made;
}

// A plug-in has few combinations. Never freed.
const NativeCallbacks& oneOf(const NativeCallbacks& callbacks) {
    static auto& known = *new std::deque<NativeCallbacks>;
    const auto found =
        std::find_if(known.begin(), known.end(), [&callbacks](const NativeCallbacks& each) {
            return std::memcmp(&each, &callbacks, sizeof each) == 0;
        });
    return found != known.end() ? *found : known.emplace_back(callbacks);
}

}  // namespace

void* ObjectRecord::operator new(std::size_t) {
    Slabs& all = slabs();
    if (all.unused.empty()) {
        void* const memory = std::aligned_alloc(Slab::size, Slab::size);
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
        Slab* const slab = ::new (memory) Slab;
        all.all.insert(slab);
        all.unused.reserve(all.all.size() * Slab::count);  // later ones come back without failing
        for (std::size_t i = Slab::count; i > 0; --i) {
            all.unused.push_back(static_cast<char*>(memory) + Slab::first +
                                 (i - 1) * sizeof(ObjectRecord));
        }
    }
    void* const place = all.unused.back();
    all.unused.pop_back();
    return place;
}

void ObjectRecord::operator delete(void* record) noexcept {
    slabs().unused.push_back(record);
}

ObjectRecord::ObjectRecord(ObjectStore& owner,
                           ObjectAccess& objectAccess,
                           Kind recordKind,
                           const NativeCallbacks& nativeCallbacks)
    : jsplugin_obj{nullptr}, store(owner), access(objectAccess), callbacks(oneOf(nativeCallbacks)),
      kind(recordKind) {
    Slab& slab = Slab::around(this);
    slab.live[slab.indexOf(this)] = true;
}

ObjectRecord::~ObjectRecord() {
    if (name != nullptr) {
        JSStringRelease(name);
    }
    Slab& slab = Slab::around(this);
    slab.live[slab.indexOf(this)] = false;
}

ObjectRecord* ObjectRecord::find(const jsplugin_obj* object) noexcept {
    if (object == nullptr) {
        return nullptr;
    }
    const Slab& slab = Slab::around(object);
    Slabs& all = slabs();
    if (&slab != all.lately) {
        if (all.all.count(&slab) == 0) {
            return nullptr;
        }
        all.lately = &slab;
    }
    return slab.live[slab.indexOf(object)]
               ? static_cast<ObjectRecord*>(const_cast<jsplugin_obj*>(object))
               : nullptr;
}
