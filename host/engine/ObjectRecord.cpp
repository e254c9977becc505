#include "engine/ObjectRecord.h"

#include <bitset>
#include <cstdlib>
#include <new>
#include <set>
#include <tuple>
#include <unordered_set>
#include <vector>

namespace {

// Storage of many records, at an address that any of theirs tells.
class Slab final {
public:
    static constexpr std::size_t size = std::size_t{64} * 1024;

    static Slab* around(const void* address) noexcept {
        return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(address) & ~(size - 1));
    }

    void* at(std::size_t index) noexcept {
        return reinterpret_cast<char*>(this) + first + index * sizeof(ObjectRecord);
    }

    // Whether a living record begins there. REQUIRES: this is around it.
    bool isRecord(const void* address) const noexcept {
        const std::size_t offset = static_cast<std::size_t>(static_cast<const char*>(address) -
                                                            reinterpret_cast<const char*>(this)) -
                                   first;
        const std::size_t index = offset / sizeof(ObjectRecord);
        return index < count && offset % sizeof(ObjectRecord) == 0 && live[index];
    }

    void set(const void* record, bool isLive) noexcept {
        live[static_cast<std::size_t>(static_cast<const char*>(record) -
                                      static_cast<const char*>(at(0))) /
             sizeof(ObjectRecord)] = isLive;
    }

    static constexpr std::size_t first = 128;
    static constexpr std::size_t count = (size - first) / sizeof(ObjectRecord);

private:
    std::bitset<count> live;
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

struct Less {
    bool operator()(const NativeCallbacks& a, const NativeCallbacks& b) const {
        const auto all = [](const NativeCallbacks& each) {
            return std::tie(each.getter, each.setter, each.call, each.destructor, each.trace);
        };
        return all(a) < all(b);
    }
};

// A plug-in has few combinations. Never freed.
const NativeCallbacks& oneOf(const NativeCallbacks& callbacks) {
    static auto& known = *new std::set<NativeCallbacks, Less>;
    return *known.insert(callbacks).first;
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
            all.unused.push_back(slab->at(i - 1));
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
    Slab::around(this)->set(this, true);
}

ObjectRecord::~ObjectRecord() {
    if (name != nullptr) {
        JSStringRelease(name);
    }
    Slab::around(this)->set(this, false);
}

ObjectRecord* ObjectRecord::find(const jsplugin_obj* object) noexcept {
    if (object == nullptr) {
        return nullptr;
    }
    const Slab* const slab = Slab::around(object);
    Slabs& all = slabs();
    if (slab != all.lately) {
        if (all.all.count(slab) == 0) {
            return nullptr;
        }
        all.lately = slab;
    }
    return slab->isRecord(object) ? static_cast<ObjectRecord*>(const_cast<jsplugin_obj*>(object))
                                  : nullptr;
}
