#ifndef SONOLET_HOST_ENGINE_OBJECTSTORE_H
#define SONOLET_HOST_ENGINE_OBJECTSTORE_H

#include "engine/FinalizerQueue.h"
#include "engine/Fronts.h"
#include "engine/Intrinsics.h"
#include "engine/ObjectRecord.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

// The objects of one document that the plug-in and the engine both know: which record belongs to
// which script object, and how long each lives.
//
// A record that went to the plug-in is rooted: its script object is protected. trace() asks the
// plug-in what it still holds. What the document's trace marks stays rooted; what the trace of a
// native object marks is kept alive by that object's script object, as if it had a field for it, so
// that the two can go together. The rest is let go: a page object's record is freed, a native
// record lives on as long as a script object for it does. A native record whose script object has
// died gets a fresh one when the plug-in hands it out again, and is destructed when its last script
// object's finalizer has run.
//
// Threads: the script thread. REQUIRES of trace() and sweep(): they are not called from inside
// themselves.
class ObjectStore final {
public:
    // `objectAccess` is where accesses of script to the objects go; it may be made later.
    ObjectStore(JSGlobalContextRef scriptContext,
                const Intrinsics& engineFunctions,
                ObjectAccess& objectAccess,
                jsplugin_gc_trace* traceOfDocument);
    ~ObjectStore();

    ObjectStore(const ObjectStore&) = delete;
    ObjectStore& operator=(const ObjectStore&) = delete;

    ObjectRecord& global() noexcept { return *globalRecord; }

    // A new native record, without a script object yet; null once the store is closed.
    ObjectRecord* create(const NativeCallbacks& callbacks);

    // The record of a script object that goes to the plug-in.
    ObjectRecord& handOut(JSObjectRef object);

    // The record's script object, on its way to script; null for a page object that has died.
    JSObjectRef scriptObject(ObjectRecord& record);

    // The record goes to the plug-in, which may keep it.
    void touch(ObjectRecord& record);

    // From inside a trace of the plug-in; elsewhere it does nothing.
    void mark(ObjectRecord& record) noexcept;

    // What the plug-in answered, as a script value; undefined for what is none. Evaluates
    // expressions: `exception` is set when one throws, and then the result is null.
    JSValueRef
    toScript(JSContextRef callContext, const jsplugin_value& value, JSValueRef* exception);

    // What the plug-in answered for the property `name`; a function keeps its first name.
    JSValueRef
    namedValue(const jsplugin_value& value, const std::string& name, JSValueRef* exception);

    // Reads of `name` need not come to the plug-in again, until uncache(). Writes do.
    void cache(ObjectRecord& record, JSStringRef name, JSValueRef value);
    void uncache(ObjectRecord& record, JSStringRef name);

    Fallback& fallbackFor(const ObjectRecord& record) noexcept {
        return fronts.fallbackFor(record);
    }

    // Lets go what the plug-in no longer holds. What went to it after `keepAfter` stays whatever
    // the plug-in marks: it may be an argument of a call under way. `outermost` says that no
    // call is under way, so that native records may be destructed.
    void trace(std::uint64_t keepAfter, bool outermost);

    // Destructs native records whose last script object has been finalized.
    void sweep();

    // Destructs every native record and lets everything go. From here on the store is closed.
    void close();

    // Grows with every record that goes to the plug-in.
    std::uint64_t serial() const noexcept { return lastSerial; }

    // How many records have been made or rooted since the last trace.
    std::size_t rootedSinceTrace() const noexcept { return newSinceTrace; }
    std::size_t size() const noexcept { return records.size(); }

private:
    void root(ObjectRecord& record, JSObjectRef object);
    void unroot(ObjectRecord& record);
    void attach(ObjectRecord& holder);
    void forget(ObjectRecord& pageRecord);
    void destruct(ObjectRecord& nativeRecord);

    JSGlobalContextRef context;
    const Intrinsics& intrinsics;
    ObjectAccess& access;
    Fronts fronts;
    jsplugin_gc_trace* const documentTrace;
    std::shared_ptr<FinalizerQueue> finalizers = std::make_shared<FinalizerQueue>();

    std::unique_ptr<ObjectRecord> globalRecord;
    std::unordered_map<const ObjectRecord*, std::unique_ptr<ObjectRecord>> records;
    // By address, which is the record's for certain only while the record is rooted.
    std::unordered_map<JSObjectRef, ObjectRecord*> pageRecords;

    std::uint64_t lastSerial = 0;
    std::size_t newSinceTrace = 0;
    std::uint64_t lastTrace = 0;
    bool tracing = false;
    bool closed = false;
    std::vector<ObjectRecord*> marked;  // by the native object whose trace is running
    bool markingForDocument = false;
};

#endif
