#ifndef SONOLET_HOST_ENGINE_OBJECTRECORD_H
#define SONOLET_HOST_ENGINE_OBJECTRECORD_H

#include "engine/WeakObject.h"

#include "jsplugin.h"

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <string>
#include <vector>

class ObjectAccess;
class ObjectStore;
struct FrontLink;

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
// Owned by its store, which alone changes the fields below the kind.
class ObjectRecord final : public jsplugin_obj {
public:
    enum class Kind {
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

    // The record at that address, or null when there is none any more.
    static ObjectRecord* find(const jsplugin_obj* object) noexcept;

    ObjectStore& store;
    ObjectAccess& access;
    const Kind kind;
    const NativeCallbacks callbacks;

    // The name under which a function was first read, for messages.
    std::string name;
    // The engine was asked, and said so; that never changes.
    bool isFunction = false;
    // Some answers are kept as own properties of the script object.
    bool hasCachedProperties = false;

    // The script object if it is alive; made by no means.
    JSObjectRef living() const noexcept { return rooted || !weak ? object : weak.get(); }

    // The script object: certain to be alive only while `rooted`, when the engine protects it.
    JSObjectRef object = nullptr;
    bool rooted = false;
    // `object`, from when it is not protected for the first time.
    WeakObject weak;
    // Links of script objects made for a native record whose catchers are still to be finalized.
    std::vector<FrontLink*> links;

    // When it last went to the plug-in, or was made by it.
    std::uint64_t handedAt = 0;
    // The last trace that found it held by the document, and by another native object.
    std::uint64_t rootTrace = 0;
    std::uint64_t heldTrace = 0;
    // Its script object keeps what this record's own trace marked last.
    bool holdsOthers = false;
};

#endif
