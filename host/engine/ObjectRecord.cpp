#include "engine/ObjectRecord.h"

#include <array>
#include <cstdint>
#include <unordered_set>

namespace {

// Every record of the process: a plug-in may come with the address of one that is gone.
std::unordered_set<const jsplugin_obj*>& known() {
    static std::unordered_set<const jsplugin_obj*> records;
    return records;
}

// One of those found lately, by a part of its address: a plug-in names few of them in turn.
const jsplugin_obj*& lately(const jsplugin_obj* object) noexcept {
    static std::array<const jsplugin_obj*, 64> found = {};
    return found[reinterpret_cast<std::uintptr_t>(object) / sizeof(ObjectRecord) % found.size()];
}

}  // namespace

ObjectRecord::ObjectRecord(ObjectStore& owner,
                           ObjectAccess& objectAccess,
                           Kind recordKind,
                           const NativeCallbacks& nativeCallbacks)
    : jsplugin_obj{nullptr}, store(owner), access(objectAccess), kind(recordKind),
      callbacks(nativeCallbacks) {
    known().insert(this);
}

ObjectRecord::~ObjectRecord() {
    known().erase(this);
    if (lately(this) == this) {
        lately(this) = nullptr;
    }
}

ObjectRecord* ObjectRecord::find(const jsplugin_obj* object) noexcept {
    if (object == nullptr) {
        return nullptr;
    }
    if (const jsplugin_obj*& found = lately(object); found != object) {
        if (known().count(object) == 0) {
            return nullptr;
        }
        found = object;
    }
    return static_cast<ObjectRecord*>(const_cast<jsplugin_obj*>(object));
}
