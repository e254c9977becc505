#include "engine/ObjectStore.h"

#include "engine/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

ObjectStore::ObjectStore(JSGlobalContextRef scriptContext,
                         const Intrinsics& engineFunctions,
                         ObjectAccess& objectAccess,
                         jsplugin_gc_trace* traceOfDocument)
    : context(scriptContext), intrinsics(engineFunctions), access(objectAccess),
      fronts(scriptContext, engineFunctions), documentTrace(traceOfDocument),
      globalRecord(std::make_unique<ObjectRecord>(*this, access, ObjectRecord::Kind::Global)) {
    globalRecord->object = JSContextGetGlobalObject(context);
    globalRecord->rooted = true;
}

ObjectStore::~ObjectStore() {
    close();
}

ObjectRecord* ObjectStore::create(const NativeCallbacks& callbacks) {
    if (closed) {
        return nullptr;
    }
    auto record =
        std::make_unique<ObjectRecord>(*this, access, ObjectRecord::Kind::Native, callbacks);
    ObjectRecord* const created = record.get();
    created->handedAt = ++lastSerial;
    ++newSinceTrace;
    records.emplace(created, std::move(record));
    return created;
}

ObjectRecord& ObjectStore::handOut(JSObjectRef object) {
    if (object == globalRecord->object) {
        return *globalRecord;
    }
    if (ObjectRecord* const native = Fronts::recordOf(object)) {
        native->store.touch(*native);  // maybe a frame's
        return *native;
    }
    if (const auto found = pageRecords.find(object); found != pageRecords.end()) {
        if (found->second->living() == object) {
            touch(*found->second);
            return *found->second;
        }
        // Another object has come to lie at the address of one that died.
        found->second->object = nullptr;
        pageRecords.erase(found);
    }
    auto made = std::make_unique<ObjectRecord>(*this, access, ObjectRecord::Kind::Page);
    ObjectRecord& record = *made;
    record.object = object;
    records.emplace(&record, std::move(made));
    pageRecords.emplace(object, &record);
    touch(record);
    return record;
}

JSObjectRef ObjectStore::scriptObject(ObjectRecord& record) {
    if (record.kind == ObjectRecord::Kind::Native && !closed && record.living() == nullptr) {
        Fronts::forget(record);
        record.hasCachedProperties = false;
        record.handedAt = ++lastSerial;
        // Script is about to hold it, so it needs no protection.
        return fronts.make(record, finalizers);
    }
    touch(record);
    return record.rooted ? record.object : nullptr;
}

JSValueRef ObjectStore::toScript(JSContextRef callContext,
                                 const jsplugin_value& value,
                                 JSValueRef* exception) {
    switch (value.type) {
    case JSP_TYPE_NATIVE_OBJECT:
    case JSP_TYPE_OBJECT:
        if (ObjectRecord* const record = ObjectRecord::find(value.u.object)) {
            if (const JSObjectRef object = record->store.scriptObject(*record)) {
                return object;
            }
        }
        return intrinsics.undefined();
    case JSP_TYPE_STRING:
        if (value.u.string != nullptr) {
            static text::StringMaker& strings = *new text::StringMaker;
            return strings.make(callContext, value.u.string);
        }
        return intrinsics.undefined();
    case JSP_TYPE_NUMBER:
        // A NaN of another pattern would be no number to the intrinsics.
        return JSValueMakeNumber(callContext, std::isnan(value.u.number) ? NAN : value.u.number);
    case JSP_TYPE_BOOLEAN:
        return intrinsics.boolean(value.u.boolean != 0);
    case JSP_TYPE_NULL:
        return intrinsics.null();
    case JSP_TYPE_EXPRESSION:
        if (value.u.string != nullptr) {
            const text::EngineString source(value.u.string);
            const JSValueRef result =
                JSEvaluateScript(callContext, source.get(), nullptr, nullptr, 1, exception);
            return *exception == nullptr ? result : nullptr;
        }
        return intrinsics.undefined();
    default:
        return intrinsics.undefined();
    }
}

JSValueRef ObjectStore::namedValue(const jsplugin_value& value,
                                   const std::string& name,
                                   JSValueRef* exception) {
    if (value.type == JSP_TYPE_NATIVE_OBJECT) {
        ObjectRecord* const record = ObjectRecord::find(value.u.object);
        if (record != nullptr && record->callbacks.call != nullptr && record->name.empty()) {
            record->name = name;
        }
    }
    return toScript(context, value, exception);
}

void ObjectStore::cache(ObjectRecord& record, JSStringRef name, JSValueRef value) {
    const JSObjectRef front = record.living();
    // Not enumerable, like the names that are not kept: what a page reads changes no enumeration.
    // A front that the page has frozen takes no property; it is asked for again.
    if (front != nullptr &&
        intrinsics.defineKept(front, name, value, fronts.fallbackFor(record).writer())) {
        record.hasCachedProperties = true;
    }
}

void ObjectStore::uncache(ObjectRecord& record, JSStringRef name) {
    if (!record.hasCachedProperties) {
        return;
    }
    if (const JSObjectRef front = record.living()) {
        JSObjectDeleteProperty(context, front, name, nullptr);
    }
}

void ObjectStore::touch(ObjectRecord& record) {
    if (closed || &record == globalRecord.get()) {
        return;
    }
    if (!record.rooted) {
        if (const JSObjectRef object = record.living()) {
            root(record, object);
        }
    }
    record.handedAt = ++lastSerial;
}

void ObjectStore::root(ObjectRecord& record, JSObjectRef object) {
    if (!record.rooted) {
        JSValueProtect(context, object);
        record.rooted = true;
        ++newSinceTrace;
    }
}

void ObjectStore::unroot(ObjectRecord& record) {
    if (!record.rooted) {
        return;
    }
    if (!record.weak) {
        record.weak.set(context, record.object);
    }
    JSValueUnprotect(context, record.object);
    record.rooted = false;
}

void ObjectStore::mark(ObjectRecord& record) noexcept {
    if (&record.store != this || !tracing) {
        return;
    }
    if (markingForDocument) {
        record.rootTrace = lastTrace;
    } else {
        marked.push_back(&record);
    }
}

void ObjectStore::trace(std::uint64_t keepAfter, bool outermost) {
    if (closed || tracing) {
        return;
    }
    ++lastTrace;
    tracing = true;
    markingForDocument = true;
    if (documentTrace != nullptr) {
        documentTrace(globalRecord.get());
    }
    markingForDocument = false;
    std::vector<ObjectRecord*> holders;
    for (const auto& [address, record] : records) {
        if (record->callbacks.trace != nullptr) {
            holders.push_back(record.get());
        }
    }
    for (ObjectRecord* const holder : holders) {
        marked.clear();
        holder->callbacks.trace(holder);
        attach(*holder);
    }
    tracing = false;

    std::vector<ObjectRecord*> released;
    for (const auto& [address, record] : records) {
        if (record->rootTrace == lastTrace || record->handedAt > keepAfter) {
            if (const JSObjectRef object = record->living()) {
                root(*record, object);
            }
            continue;
        }
        const bool isPage = record->kind == ObjectRecord::Kind::Page;
        if (record->heldTrace != lastTrace &&
            (isPage || (outermost && record->links.empty() && record->living() == nullptr))) {
            released.push_back(record.get());
        } else {
            unroot(*record);
        }
    }
    for (ObjectRecord* const record : released) {
        if (record->kind == ObjectRecord::Kind::Page) {
            forget(*record);
        } else {
            destruct(*record);
        }
    }
    newSinceTrace = 0;
}

// Gives what the trace of `holder` has marked to its script object to keep.
void ObjectStore::attach(ObjectRecord& holder) {
    if (marked.empty() && !holder.holdsOthers) {
        return;
    }
    const JSObjectRef front = holder.living();
    if (front == nullptr) {
        // Nothing of the engine's can keep them until it has a script object again or is
        // destructed.
        for (ObjectRecord* const record : marked) {
            record->rootTrace = lastTrace;
        }
        return;
    }
    std::vector<JSValueRef> objects;
    for (ObjectRecord* const record : marked) {
        record->heldTrace = lastTrace;
        if (const JSObjectRef object = record->living()) {
            // The engine does not see the list: protected until the trace is done.
            root(*record, object);
            objects.push_back(object);
        }
    }
    intrinsics.hold(front, objects);
    holder.holdsOthers = !objects.empty();
}

void ObjectStore::sweep() {
    std::vector<ObjectRecord*> released;
    for (FrontLink* const link : finalizers->take()) {
        if (ObjectRecord* const record = link->record) {
            record->links.erase(std::find(record->links.begin(), record->links.end(), link));
            const bool held = record->rootTrace == lastTrace || record->heldTrace == lastTrace;
            if (record->links.empty() && record->living() == nullptr && !held) {
                released.push_back(record);
            }
        }
        delete link;
    }
    for (ObjectRecord* const record : released) {
        destruct(*record);
    }
}

void ObjectStore::forget(ObjectRecord& record) {
    if (const auto found = pageRecords.find(record.object);
        found != pageRecords.end() && found->second == &record) {
        pageRecords.erase(found);
    }
    if (record.rooted) {
        JSValueUnprotect(context, record.object);
    }
    records.erase(&record);
}

void ObjectStore::destruct(ObjectRecord& record) {
    const auto node = records.extract(&record);
    Fronts::forget(record);
    if (record.rooted) {
        JSValueUnprotect(context, record.object);
    }
    for (FrontLink* const link : record.links) {
        link->record = nullptr;
    }
    if (record.callbacks.destructor != nullptr) {
        record.callbacks.destructor(&record);
    }
}

void ObjectStore::close() {
    if (closed) {
        return;
    }
    sweep();
    closed = true;
    std::vector<ObjectRecord*> remaining;
    for (const auto& [address, record] : records) {
        remaining.push_back(record.get());
    }
    // Page objects last: a destructor may still look at what it held.
    std::stable_partition(remaining.begin(), remaining.end(), [](const ObjectRecord* record) {
        return record->kind == ObjectRecord::Kind::Native;
    });
    for (ObjectRecord* const record : remaining) {
        if (record->kind == ObjectRecord::Kind::Native) {
            destruct(*record);
        } else {
            forget(*record);
        }
    }
    finalizers->close();
}
