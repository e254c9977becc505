#include "engine/Document.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <utility>

namespace {

constexpr Scheduler::Delay housekeepingInterval{2000};

// The engine finds values on the stack by itself, but not those in the heap. Few calls have more
// arguments.
constexpr std::size_t mostOnStack = 16;

}  // namespace

Document::Document(JSGlobalContextRef scriptContext,
                   const struct jsplugin_capabilities& capabilities,
                   Scheduler& pageScheduler,
                   ErrorReporter& errorReporter)
    : context(scriptContext), plugin(capabilities), scheduler(pageScheduler),
      reporter(errorReporter), store(*this, context, access, plugin), calls(context, store),
      access(context, store, calls) {}

Document::~Document() {
    close();
}

bool Document::open(const Origin& origin) {
    if (plugin.allow_access != nullptr &&
        plugin.allow_access(origin.protocol.c_str(), origin.host.c_str(), origin.port) == 0) {
        return false;
    }
    opened = true;
    housekeeping = scheduler.schedule(housekeepingInterval, [this] {
        if (!calls.underWay()) {
            letGo();
        }
        return true;
    });
    store.defineGlobals();
    if (plugin.init != nullptr) {
        const PluginCalls::Call call(calls);
        plugin.init(&store.global());
    }
    return true;
}

void Document::close() {
    calls.afterwards([this] { closeNow(); });
}

void Document::closeNow() {
    if (std::exchange(closed, true)) {
        return;
    }
    scheduler.cancel(housekeeping);
    for (const unsigned poll : std::exchange(polls, {})) {
        scheduler.cancel(poll);
    }
    const PluginCalls::Call call(calls);
    for (jsplugin_unload* const listener : std::exchange(unloadListeners, {})) {
        listener(&store.global());
    }
    store.close();
    if (opened && plugin.destroy != nullptr) {
        plugin.destroy(&store.global());
    }
}

bool Document::addPoll(unsigned intervalMs, jsplugin_poll* poll) {
    if (closed) {
        return false;
    }
    const auto id = std::make_shared<unsigned>(0);
    *id = scheduler.schedule(Scheduler::Delay(std::max(intervalMs, 1U)), [this, poll, id] {
        const PluginCalls::Call call(calls);
        const bool again = poll(&store.global()) != 0;
        if (!again) {
            polls.erase(*id);
        }
        return again;
    });
    polls.insert(*id);
    return true;
}

bool Document::addUnloadListener(jsplugin_unload* listener) {
    if (closed) {
        return false;
    }
    unloadListeners.push_back(listener);
    return true;
}

bool Document::callFunction(ObjectRecord* thisRecord,
                            ObjectRecord& callee,
                            int argc,
                            jsplugin_value* argv) {
    const JSObjectRef function = store.scriptObject(callee);
    if (function == nullptr) {
        return false;
    }
    if (!callee.isFunction) {
        if (!JSObjectIsFunction(context, function)) {
            return false;
        }
        callee.isFunction = true;
    }
    const JSObjectRef thisObject =
        thisRecord != nullptr ? store.scriptObject(*thisRecord) : nullptr;
    JSValueRef exception = nullptr;
    const std::size_t count = argc > 0 ? static_cast<std::size_t>(argc) : 0;
    std::array<JSValueRef, mostOnStack> few;
    std::vector<JSValueRef> many;
    for (std::size_t i = 0; i < count && exception == nullptr; ++i) {
        const JSValueRef value = store.toScript(argv[i], &exception);
        if (count <= few.size()) {
            few[i] = value;
        } else if (exception == nullptr) {
            JSValueProtect(context, value);
            many.push_back(value);
        }
    }
    const PluginCalls::Wait wait(calls);
    if (exception == nullptr) {
        JSObjectCallAsFunction(context, function, thisObject, count,
                               many.empty() ? few.data() : many.data(), &exception);
    }
    for (const JSValueRef value : many) {
        JSValueUnprotect(context, value);
    }
    if (exception != nullptr) {
        reporter.uncaught(context, exception);
    }
    reporter.returned();
    return true;
}
