#ifndef SONOLET_HOST_ENGINE_OBJECTRECORD_H
#define SONOLET_HOST_ENGINE_OBJECTRECORD_H

#include "engine/WeakObject.h"

#include "jsplugin.h"

#include <JavaScriptCore/JavaScript.h>

#include <cstddef>
#include <cstdint>

class ObjectAccess;
class ObjectStore;

// What a plug-in gives with an object that it makes. Any of them may be null.
struct NativeCallbacks {
    jsplugin_getter* getter = nullptr;
    jsplugin_setter* setter = nullptr;
    jsplugin_function* call = nullptr;  // a function object, if set
    jsplugin_destructor* destructor = nullptr;
    jsplugin_gc_trace* trace = nullptr;
};

// One script object as the plug-in sees it. The plug-in holds its address, so it never moves.
//
// Owned by its store, which alone changes its fields. Script thread.
class ObjectRecord final : public jsplugin_obj {
public:
    enum class Kind : std::uint8_t {
        Global,  // the document itself
        Page,    // an object or function of the page
        Native,  // made by the plug-in
    };

    ObjectRecord(ObjectStore& owner,
                 ObjectAccess& objectAccess,
                 Kind recordKind,
                 const NativeCallbacks& nativeCallbacks = {});
    ~ObjectRecord();

    ObjectRecord(const ObjectRecord&) = delete;
    ObjectRecord& operator=(const ObjectRecord&) = delete;

    // Records lie in slabs, so that an address that is no record's is known by itself.
    static void* operator new(std::size_t size);
    static void operator delete(void* record) noexcept;

    // The record at that address, or null when there is none any more.
    static ObjectRecord* find(const jsplugin_obj* object) noexcept;

    ObjectStore& store;
    ObjectAccess& access;
    const NativeCallbacks& callbacks;

    // The script object if it is alive; made by no means.
    JSObjectRef living() const noexcept {
        if (rooted) {
            return object;
        }
        if (weak) {
            return weak.get();
        }
        return whole == nullptr || whole->living() != nullptr ? object : nullptr;
    }

    // Whether it has none, or one that had died by the last sweep.
    bool isWithoutObject() const noexcept {
        return weak && !rooted ? weak.hasDied() : living() == nullptr;
    }

    JSObjectRef object = nullptr;  // the script object; may have died, see living()
    WeakObject weak;               // `object`, unless it is rooted or part of another

    // The name under which a function was first read; owned, null: none.
    JSStringRef name = nullptr;

    // A function that an object keeps as the answer to one of its names is part of that object, and
    // lives as long.
    ObjectRecord* whole = nullptr;
    ObjectRecord* parts = nullptr;
    ObjectRecord* nextPart = nullptr;  // of the same whole

    // The store's serial numbers: of its making, and of the last time it went to the plug-in.
    std::uint64_t madeAt = 0;
    std::uint64_t handedAt = 0;
    // The last trace that found it held by the document, and by another native object.
    std::uint32_t rootTrace = 0;
    std::uint32_t heldTrace = 0;

    std::int32_t number = 0;  // its front's, see Fronts
    std::uint32_t place = 0;  // in the store's list; a part stands in none

    const Kind kind;
    // The engine was asked, and said so; that never changes.
    bool isFunction = false;
    // The engine protects `object`.
    bool rooted = false;
    // Its script object keeps what this record's own trace marked last.
    bool holdsOthers = false;
};

// A page makes many, and lets them go together: they are to lie close.
static_assert(sizeof(void*) != 8 || sizeof(ObjectRecord) == 128);

#endif
