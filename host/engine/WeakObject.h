#ifndef SONOLET_HOST_ENGINE_WEAKOBJECT_H
#define SONOLET_HOST_ENGINE_WEAKOBJECT_H

#include "engine/EngineHooks.h"

#include <JavaScriptCore/JavaScript.h>

// A script object that may die meanwhile; the collector empties it before any finalizer has run.
// Script thread.
class WeakObject final {
public:
    WeakObject() = default;
    ~WeakObject() { reset(); }

    WeakObject(const WeakObject&) = delete;
    WeakObject& operator=(const WeakObject&) = delete;

    // In place of an earlier one. The context outlives this.
    void set(JSContextRef context, JSObjectRef object) {
        reset();
        group = JSContextGetGroup(context);
        weak = JSWeakCreate(group, object);
    }
    void reset() noexcept {
        if (weak != nullptr) {
            JSWeakRelease(group, weak);
            weak = nullptr;
        }
    }

    explicit operator bool() const noexcept { return weak != nullptr; }

    // Null when the object has died.
    JSObjectRef get() const noexcept { return JSWeakGetObject(weak); }

    // May tell of it later, but not later than after a sweep, and costs nothing.
    bool hasDied() const noexcept {
        return JSWeakHasDied != nullptr ? JSWeakHasDied(weak) : get() == nullptr;
    }
    static void sweep(JSContextRef context) {
        if (JSWeakSweep != nullptr) {
            JSWeakSweep(context);
        }
    }

private:
    JSContextGroupRef group = nullptr;
    JSWeakRef weak = nullptr;  // owned
};

#endif
