#include "engine/PluginCalls.h"

#include "engine/ObjectStore.h"

#include <algorithm>
#include <utility>

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

namespace {

// A script that runs for long without a break hands out this many objects, or half as many as there
// are, before they are let go between two of its calls.
constexpr std::size_t threshold = 4096;

}  // namespace

PluginCalls::Call::Call(PluginCalls& calledIn) : calls(calledIn) {
    if (calls.stressed) {
        calls.collect();
    } else if (calls.depth == 0 &&
               calls.store.rootedSinceTrace() > std::max(threshold, calls.store.size() / 2)) {
        calls.letGo();
    }
    if (calls.depth++ == 0) {
        calls.serialAtEntry = calls.store.serial();
    }
}

PluginCalls::Call::~Call() {
    if (--calls.depth == 0 && calls.pending) {
        std::exchange(calls.pending, nullptr)();
    }
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
    const bool outermost = depth == 0;
    const std::uint64_t keepAfter = outermost ? store.serial() : serialAtEntry;
    ++depth;
    store.trace(keepAfter, outermost);
    if (outermost) {
        store.sweep();
    }
    --depth;
    lettingGo = false;
}

void PluginCalls::collect() {
    if (lettingGo) {
        return;
    }
    letGo();
    if (JSSynchronousGarbageCollectForDebugging != nullptr) {
        JSSynchronousGarbageCollectForDebugging(context);
    } else {
        JSGarbageCollect(context);
    }
}
