#include "engine/ObjectStore.h"

#include "engine/Text.h"

#include <algorithm>
#include <utility>

ObjectStore::ObjectStore(Document& owner,
                         JSGlobalContextRef scriptContext,
                         ObjectAccess& objectAccess,
                         const struct jsplugin_capabilities& capabilities)
    : document(owner), context(scriptContext), access(objectAccess), plugin(capabilities),
      fronts(scriptContext),
      globalRecord(std::make_unique<ObjectRecord>(
          *this,
          access,
          ObjectRecord::Kind::Global,
          NativeCallbacks{plugin.global_getter, plugin.global_setter, nullptr, nullptr, nullptr})) {
    globalRecord->object = JSContextGetGlobalObject(context);
    globalRecord->rooted = true;
}

ObjectStore::~ObjectStore() {
    close();
}

// ---- Records ----

ObjectRecord& ObjectStore::make(ObjectRecord::Kind kind, const NativeCallbacks& callbacks) {
    auto made = std::make_unique<ObjectRecord>(*this, access, kind, callbacks);
    list(*made);
    ObjectRecord& record = *made.release();
    record.madeAt = record.handedAt = ++lastSerial;
    ++living;
    ++newSinceTrace;
    return record;
}

void ObjectStore::list(ObjectRecord& record) {
    record.place = static_cast<std::uint32_t>(records.size());
    records.push_back(&record);
}

void ObjectStore::unlist(ObjectRecord& record) noexcept {
    records[record.place] = records.back();
    records[record.place]->place = record.place;
    records.pop_back();
}

ObjectRecord* ObjectStore::create(const NativeCallbacks& callbacks) {
    return closed ? nullptr : &make(ObjectRecord::Kind::Native, callbacks);
}

ObjectRecord& ObjectStore::pageRecord(JSObjectRef object) {
    if (const auto found = pageRecords.find(object); found != pageRecords.end()) {
        if (found->second->living() == object) {
            return *found->second;
        }
        // Another object has come to lie at the address of one that died.
        found->second->object = nullptr;
        found->second->weak.reset();
        pageRecords.erase(found);
    }
    ObjectRecord& record = make(ObjectRecord::Kind::Page);
    record.object = object;
    pageRecords.emplace(object, &record);
    return record;
}

ObjectRecord& ObjectStore::handOut(JSObjectRef object) {
    ObjectRecord& record = handOutThis(object);
    // Maybe a frame's.
    record.store.root(lifeOf(record));
    return record;
}

ObjectRecord& ObjectStore::handOutThis(JSObjectRef object) {
    if (object == globalRecord->object) {
        return *globalRecord;
    }
    ObjectRecord* const native = Fronts::recordOf(object);
    ObjectRecord& record = native != nullptr ? *native : pageRecord(object);
    record.store.seen(record);
    if (native == nullptr) {
        // No other script object could ever be made of it.
        root(record);
    }
    return record;
}

JSObjectRef ObjectStore::scriptObject(ObjectRecord& record) {
    seen(record);
    if (const JSObjectRef object = record.living()) {
        return object;
    }
    if (record.kind != ObjectRecord::Kind::Native || closed) {
        return nullptr;
    }
    separate(lifeOf(record));
    fronts.forget(record);
    // Script is about to hold it, so it needs no protection.
    return fronts.make(record);
}

JSObjectRef ObjectStore::partOf(ObjectRecord& whole, ObjectRecord& function) {
    const NativeCallbacks& callbacks = function.callbacks;
    if (&function.store != this || &whole == globalRecord.get() || callbacks.call == nullptr ||
        callbacks.getter != nullptr || callbacks.setter != nullptr || function.object != nullptr ||
        function.whole != nullptr || closed) {
        return nullptr;
    }
    unlist(function);
    function.whole = &whole;
    function.nextPart = std::exchange(whole.parts, &function);
    return fronts.makeFunction(function);
}

// The parts of what has died have died with it; the plug-in may still know them.
void ObjectStore::separate(ObjectRecord& whole) {
    while (ObjectRecord* const part = whole.parts) {
        whole.parts = std::exchange(part->nextPart, nullptr);
        part->whole = nullptr;
        fronts.forget(*part);
        list(*part);
    }
}

void ObjectStore::loosen(ObjectRecord& function) {
    if (function.whole == nullptr) {
        return;
    }
    ObjectRecord** link = &function.whole->parts;
    while (*link != &function) {
        link = &(*link)->nextPart;
    }
    *link = std::exchange(function.nextPart, nullptr);
    function.whole = nullptr;
    function.weak.set(context, function.object);
    list(function);
    seen(function);
}

void ObjectStore::root(ObjectRecord& record) {
    if (!record.rooted && !closed) {
        if (const JSObjectRef object = record.living()) {
            JSValueProtect(context, object);
            record.rooted = true;
        }
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

// ---- Values ----

JSValueRef ObjectStore::toScript(const jsplugin_value& value, JSValueRef* exception) {
    switch (value.type) {
    case JSP_TYPE_NATIVE_OBJECT:
    case JSP_TYPE_OBJECT:
        if (ObjectRecord* const record = ObjectRecord::find(value.u.object)) {
            if (const JSObjectRef object = record->store.scriptObject(*record)) {
                return object;
            }
        }
        break;
    case JSP_TYPE_STRING:
        if (value.u.string != nullptr) {
            return JSValueMakeString(context, text::shared(value.u.string));
        }
        break;
    case JSP_TYPE_NUMBER:
        return JSValueMakeNumber(context, value.u.number);
    case JSP_TYPE_BOOLEAN:
        return JSValueMakeBoolean(context, value.u.boolean != 0);
    case JSP_TYPE_NULL:
        return JSValueMakeNull(context);
    case JSP_TYPE_EXPRESSION:
        if (value.u.string != nullptr) {
            const text::EngineString source(value.u.string);
            return JSEvaluateScript(context, source.get(), nullptr, nullptr, 1, exception);
        }
        break;
    default:
        break;
    }
    return JSValueMakeUndefined(context);
}

ObjectRecord* ObjectStore::named(const jsplugin_value& value, const std::string& name) {
    ObjectRecord* const record =
        value.type == JSP_TYPE_NATIVE_OBJECT ? ObjectRecord::find(value.u.object) : nullptr;
    if (record == nullptr || record->callbacks.call == nullptr) {
        return nullptr;
    }
    if (record->name == nullptr) {
        record->name = JSStringRetain(text::shared(name.c_str()));
    }
    return record;
}

// ---- Letting go ----

void ObjectStore::mark(ObjectRecord& record) noexcept {
    if (&record.store != this || !tracing) {
        return;
    }
    ObjectRecord& life = lifeOf(record);
    if (markingForDocument) {
        life.rootTrace = lastTrace;
    } else {
        marked.push_back(&life);
    }
}

void ObjectStore::trace(std::uint64_t handedAfter, std::uint64_t madeAfter) {
    if (closed || tracing) {
        return;
    }
    fronts.dropUnused();
    WeakObject::sweep(context);
    ++lastTrace;
    tracing = true;
    markingForDocument = true;
    if (plugin.gc_trace != nullptr) {
        plugin.gc_trace(globalRecord.get());
    }
    markingForDocument = false;
    // By place: a trace may make an object.
    for (std::size_t i = 0; i < records.size(); ++i) {
        ObjectRecord& holder = *records[i];
        if (holder.callbacks.trace != nullptr) {
            marked.clear();
            holder.callbacks.trace(&holder);
            attach(holder);
        }
    }
    tracing = false;

    std::vector<ObjectRecord*> released;
    for (ObjectRecord* const record : records) {
        const bool isNative = record->kind == ObjectRecord::Kind::Native;
        const bool isFree = record->madeAt > madeAfter;
        if (record->rootTrace == lastTrace) {
            root(*record);
        } else if (isFree || record->handedAt <= handedAfter) {
            if (isNative || record->heldTrace == lastTrace) {
                unroot(*record);
            }
            if (record->heldTrace != lastTrace &&
                (!isNative || (isFree && record->isWithoutObject()))) {
                released.push_back(record);
            }
        }
    }
    for (ObjectRecord* const record : released) {
        destruct(*record);
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
        // The engine does not see the list: protected until the trace is done.
        root(*record);
        if (record->rooted) {
            objects.push_back(record->object);
        }
    }
    holder.holdsOthers = !objects.empty();
    fronts.hold(front, objects);
}

// A page object's record has nothing to destruct but itself.
void ObjectStore::destruct(ObjectRecord& record) {
    while (ObjectRecord* const part = record.parts) {
        record.parts = part->nextPart;
        part->whole = nullptr;
        end(*part);
    }
    unlist(record);
    end(record);
}

void ObjectStore::end(ObjectRecord& record) {
    if (record.rooted) {
        JSValueUnprotect(context, record.object);
        record.rooted = false;
    }
    if (record.kind == ObjectRecord::Kind::Native) {
        fronts.forget(record);
        if (record.callbacks.destructor != nullptr) {
            record.callbacks.destructor(&record);
        }
    } else if (const auto found = pageRecords.find(record.object);
               found != pageRecords.end() && found->second == &record) {
        pageRecords.erase(found);
    }
    delete &record;
    --living;
}

void ObjectStore::close() {
    if (std::exchange(closed, true)) {
        return;
    }
    fronts.forgetNumber(*globalRecord);
    // Page objects last: a destructor may still look at what it held.
    std::vector<ObjectRecord*> remaining = records;
    std::stable_partition(remaining.begin(), remaining.end(), [](const ObjectRecord* record) {
        return record->kind == ObjectRecord::Kind::Native;
    });
    for (ObjectRecord* const record : remaining) {
        destruct(*record);
    }
}
