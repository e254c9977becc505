#ifndef SONOLET_HOST_ENGINE_FRONTS_H
#define SONOLET_HOST_ENGINE_FRONTS_H

#include "engine/Fallback.h"
#include "engine/FinalizerQueue.h"
#include "engine/Intrinsics.h"
#include "engine/ObjectRecord.h"

#include <JavaScriptCore/JavaScript.h>

// The script objects of native records ("fronts") and how an access to one becomes a call of the
// plug-in.
//
// The engine asks an object whose class has a getProperty callback on every read, even of an own
// property, so the front's class has none: what may be cached becomes an own property of the front,
// which the engine reads by itself. Behind the front stands the catcher, a prototype of its own
// with the callback, which sees the reads of every other name; behind that the document's Fallback.
//
// Writes come to the front itself, before its own properties, so that none is lost in a cached one.
class Fronts final {
public:
    Fronts(JSGlobalContextRef scriptContext, const Intrinsics& engineFunctions);

    // A new front, which owns `link` through its finalizers.
    JSObjectRef make(FrontLink& link) const;

    // The record behind a front; null for any other object, or when the record is gone.
    static ObjectRecord* recordOf(JSContextRef context, JSObjectRef object) noexcept;

    // Where the catcher leaves an exception.
    Fallback& fallbackFor(const ObjectRecord& record) noexcept {
        return record.callbacks.call != nullptr ? functionFallback : objectFallback;
    }

private:
    JSGlobalContextRef context;
    const Intrinsics& intrinsics;
    Fallback objectFallback;
    Fallback functionFallback;
};

#endif
