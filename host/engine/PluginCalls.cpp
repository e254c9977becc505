#include "engine/PluginCalls.h"

#include "engine/ObjectStore.h"

#include <algorithm>
#include <utility>

namespace {

// In a script that runs for long without a break objects are let go between two of its calls: when
// so many were made, or half as many as there are, and sooner when the engine has collected.
constexpr std::size_t many = 8192;
constexpr std::size_t someAfterCollection = 256;

}  // namespace

PluginCalls::Call::Call(PluginCalls& calledIn)
    : calls(calledIn), outerWaitsSince(calledIn.waitsSince) {
    if (calls.stressed) {
        calls.collect();
    } else if (calls.isTime()) {
        calls.letGo();
    }
    if (calls.depth++ == 0) {
        calls.serialAtEntry = calls.store.serial();
    }
    calls.waitsSince = runs;
}

PluginCalls::Call::~Call() {
    calls.waitsSince = outerWaitsSince;
    if (--calls.depth == 0 && calls.pending) {
        std::exchange(calls.pending, nullptr)();
    }
}

bool PluginCalls::isTime() {
    const std::size_t made = store.madeSinceTrace();
    if (made < lookAt) {
        return false;
    }
    lookAt = made + someAfterCollection;
    if (canary && made > store.size() / 8) {
        WeakObject::sweep(context);
        if (canary.hasDied()) {
            return true;
        }
    }
    return made > std::max(many, store.size() / 2);
}

PluginCalls::Wait::Wait(PluginCalls& waiting) : calls(waiting), before(waiting.waitsSince) {
    calls.waitsSince = calls.store.serial();
}

void PluginCalls::afterwards(std::function<void()> action) {
    if (underWay()) {
        pending = std::move(action);
    } else {
        action();
    }
}

void PluginCalls::letGo() {
    // A plug-in's trace or destructor may come back here.
    if (std::exchange(lettingGo, true)) {
        return;
    }
    const std::uint64_t madeAfter = depth == 0 ? 0 : waitsSince;
    ++depth;
    store.trace(serialAtEntry, madeAfter);
    --depth;
    lettingGo = false;
    lookAt = someAfterCollection;
    canary.set(context, JSObjectMake(context, nullptr, nullptr));
}

void PluginCalls::collect() {
    if (lettingGo) {
        return;
    }
    letGo();
    JSSynchronousGarbageCollectForDebugging(context);
}
