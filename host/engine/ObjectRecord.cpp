#include "engine/ObjectRecord.h"

#include <unordered_set>

namespace {

// Every record of the process: a plug-in may come with the address of one that is gone.
std::unordered_set<const jsplugin_obj*>& known() {
    static std::unordered_set<const jsplugin_obj*> records;
    return records;
}

}  // namespace

ObjectRecord::ObjectRecord(Document& owner, Kind recordKind, const NativeCallbacks& nativeCallbacks)
    : jsplugin_obj{nullptr}, document(owner), kind(recordKind), callbacks(nativeCallbacks) {
    known().insert(this);
}

ObjectRecord::~ObjectRecord() {
    known().erase(this);
}

ObjectRecord* ObjectRecord::find(const jsplugin_obj* object) noexcept {
    if (object == nullptr || known().count(object) == 0) {
        return nullptr;
    }
    return static_cast<ObjectRecord*>(const_cast<jsplugin_obj*>(object));
}
