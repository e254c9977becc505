#ifndef SONOLET_HOST_ENGINE_FRONTS_H
#define SONOLET_HOST_ENGINE_FRONTS_H

#include "engine/Fallback.h"
#include "engine/FinalizerQueue.h"
#include "engine/Intrinsics.h"
#include "engine/ObjectRecord.h"

#include <JavaScriptCore/JavaScript.h>

#include <memory>

// The script objects of native records ("fronts") and how an access to one becomes a call of the
// plug-in.
//
// A front is a plain object, or a plain function, because those are what the engine is fast with.
// What may be cached becomes an own property of it, an accessor whose setter goes to the plug-in.
// Behind the front stands the catcher, a prototype of its own with a callback that sees the reads
// of every other name; behind that the document's Fallback, which sees the writes. A function
// without getter and setter has neither.
//
// Threads: the script thread. One table for the process tells whose a front is: frames hand
// objects to each other.
class Fronts final {
public:
    Fronts(JSGlobalContextRef scriptContext, const Intrinsics& engineFunctions);

    // A new front, which is the record's from here on. What its collection leaves goes to the
    // queue.
    JSObjectRef make(ObjectRecord& record, const std::shared_ptr<FinalizerQueue>& queue) const;

    // The record is no longer its object's.
    static void forget(const ObjectRecord& record) noexcept;

    // The record behind a front that lives; null for any other object, or when the record is gone.
    static ObjectRecord* recordOf(JSObjectRef object) noexcept;

    // The record whose front has `prototype` as its catcher; null for any other value.
    static ObjectRecord* recordBehind(JSContextRef context, JSValueRef prototype) noexcept;

    // Where the catcher leaves an exception.
    Fallback& fallbackFor(const ObjectRecord& record) noexcept {
        return record.callbacks.call != nullptr ? functionFallback : objectFallback;
    }

private:
    JSGlobalContextRef context;
    Fallback objectFallback;
    Fallback functionFallback;
};

#endif
