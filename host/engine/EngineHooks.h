#ifndef SONOLET_HOST_ENGINE_ENGINEHOOKS_H
#define SONOLET_HOST_ENGINE_ENGINEHOOKS_H

#include <JavaScriptCore/JavaScript.h>

// What stands in none of the engine's public headers. Script thread.

// NOLINTBEGIN(readability-identifier-naming): as the engine's names
extern "C" {
// Exported by every engine.
using JSWeakRef = struct OpaqueJSWeak*;
JSWeakRef JSWeakCreate(JSContextGroupRef group, JSObjectRef object);
JSObjectRef JSWeakGetObject(JSWeakRef weak);
void JSWeakRelease(JSContextGroupRef group, JSWeakRef weak);
void JSReportExtraMemoryCost(JSContextRef context, size_t size);
void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

// What follows is offered where each call between native code and script is dear; null elsewhere.

// The function that makes the front of a number. What is made in a call from script is then made by
// the engine's script half when that call has returned, and until then is the value alone.
__attribute__((weak)) void JSObjectFrontsBy(JSContextRef context, JSObjectRef maker);
__attribute__((weak)) JSObjectRef JSObjectMakeFront(JSContextRef context, int number);

// A place in the object's value for whose it is; null at first.
__attribute__((weak)) void JSObjectSetOwner(JSObjectRef object, void* owner);
__attribute__((weak)) void* JSObjectGetOwner(JSObjectRef object);

// Looks at all weak references; the other answers what the last one has found, and costs nothing.
__attribute__((weak)) void JSWeakSweep(JSContextRef context);
__attribute__((weak)) bool JSWeakHasDied(JSWeakRef weak);
}
// NOLINTEND(readability-identifier-naming)

#endif
