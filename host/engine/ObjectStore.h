#ifndef SONOLET_HOST_ENGINE_OBJECTSTORE_H
#define SONOLET_HOST_ENGINE_OBJECTSTORE_H

#include "engine/Fronts.h"
#include "engine/ObjectRecord.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

class Document;
class ObjectAccess;

// The objects of one document that the plug-in and the engine both know: which record belongs to
// which script object, and how long each lives.
//
// A record that went to the plug-in as an argument is rooted: its script object is protected.
// trace() asks the plug-in what it still holds. What the document's trace marks stays rooted; what
// the trace of a native object marks is kept alive by that object's script object, as if it had a
// field for it, so that the two can go together. The rest is let go: a page object's record is
// freed, a native record lives on until a trace finds its script object dead. Should the plug-in
// hand it out again before, it gets a fresh one.
//
// Threads: the script thread. REQUIRES of trace(): it is not called from inside itself.
class ObjectStore final {
public:
    // `objectAccess` is where accesses of script to the objects go; it may be made later.
    ObjectStore(Document& owner,
                JSGlobalContextRef scriptContext,
                ObjectAccess& objectAccess,
                const struct jsplugin_capabilities& capabilities);
    ~ObjectStore();

    ObjectStore(const ObjectStore&) = delete;
    ObjectStore& operator=(const ObjectStore&) = delete;

    Document& document;  // whose objects these are

    ObjectRecord& global() noexcept { return *globalRecord; }

    // Makes the plug-in's names on the global object; close() empties them.
    void defineGlobals() { fronts.defineGlobals(*globalRecord, plugin.global_names); }

    // A new native record, without a script object yet; null once the store is closed.
    ObjectRecord* create(const NativeCallbacks& callbacks);

    // The record of a script object that goes to the plug-in, which may keep it.
    ObjectRecord& handOut(JSObjectRef object);

    // The same for the object that a function is called on: the engine's stack holds it.
    ObjectRecord& handOutThis(JSObjectRef object);

    // The record's script object, on its way to script; null for a page object that has died.
    JSObjectRef scriptObject(ObjectRecord& record);

    // The same for a function that `whole` is going to keep. Null, and nothing done, when it cannot
    // be part of it: it has had a script object, or has names of its own.
    JSObjectRef partOf(ObjectRecord& whole, ObjectRecord& function);

    // The record has gone to the plug-in.
    void seen(ObjectRecord& record) noexcept { lifeOf(record).handedAt = ++lastSerial; }

    // The object of which the function is a part no longer keeps it: it lives by itself now.
    void loosen(ObjectRecord& function);

    // From inside a trace of the plug-in; elsewhere it does nothing.
    void mark(ObjectRecord& record) noexcept;

    // What the plug-in answered, as a script value; undefined for what is none. Evaluates
    // expressions: `exception` is set when one throws, and then the result is null.
    JSValueRef toScript(const jsplugin_value& value, JSValueRef* exception);

    // The function that the plug-in answered for the property `name`; it keeps its first name. Null
    // for any other answer.
    static ObjectRecord* named(const jsplugin_value& value, const std::string& name);

    // Lets go what the plug-in no longer holds. What went to it after `handedAfter` may be on its
    // stack, and stays whatever it marks; so does every native record. What was made after
    // `madeAfter` cannot be there.
    void trace(std::uint64_t handedAfter, std::uint64_t madeAfter);

    // Destructs every native record and lets everything go. From here on the store is closed.
    void close();

    // Grows with every record that is made or goes to the plug-in.
    std::uint64_t serial() const noexcept { return lastSerial; }

    // How many records have been made since the last trace.
    std::size_t madeSinceTrace() const noexcept { return newSinceTrace; }
    std::size_t size() const noexcept { return living; }

private:
    // The record whose life decides over this one's.
    static ObjectRecord& lifeOf(ObjectRecord& record) noexcept {
        return record.whole != nullptr ? *record.whole : record;
    }
    ObjectRecord& make(ObjectRecord::Kind kind, const NativeCallbacks& callbacks = {});
    void list(ObjectRecord& record);
    void unlist(ObjectRecord& record) noexcept;
    ObjectRecord& pageRecord(JSObjectRef object);
    void root(ObjectRecord& record);
    void unroot(ObjectRecord& record);
    void attach(ObjectRecord& holder);
    void separate(ObjectRecord& whole);
    void destruct(ObjectRecord& record);
    void end(ObjectRecord& record);

    JSGlobalContextRef context;
    ObjectAccess& access;
    const struct jsplugin_capabilities& plugin;
    Fronts fronts;

    std::unique_ptr<ObjectRecord> globalRecord;
    std::vector<ObjectRecord*> records;  // owned; each knows its place
    std::size_t living = 0;              // those and their parts
    // By address, which is the record's for certain only while the record is rooted.
    std::unordered_map<JSObjectRef, ObjectRecord*> pageRecords;

    std::uint64_t lastSerial = 0;
    std::size_t newSinceTrace = 0;
    std::uint32_t lastTrace = 0;
    bool tracing = false;
    bool closed = false;
    std::vector<ObjectRecord*> marked;  // by the native object whose trace is running
    bool markingForDocument = false;
};

#endif
