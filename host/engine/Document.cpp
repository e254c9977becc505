#include "engine/Document.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr Scheduler::Delay housekeepingInterval{2000};

// The living ones: as many as there are frames.
std::vector<Document*>& documents() {
    static std::vector<Document*>& living = *new std::vector<Document*>;  // never freed
    return living;
}

// The arguments of one call into script. The engine finds values on the stack by itself, but not
// those in the heap.
class ScriptArguments final {
public:
    ScriptArguments(JSContextRef callContext, std::size_t argc) : context(callContext) {
        if (argc > few.size()) {
            many.reserve(argc);
        }
        capacity = argc;
    }
    ~ScriptArguments() {
        for (const JSValueRef value : many) {
            JSValueUnprotect(context, value);
        }
    }
    ScriptArguments(const ScriptArguments&) = delete;
    ScriptArguments& operator=(const ScriptArguments&) = delete;

    void add(JSValueRef value) {
        if (capacity <= few.size()) {
            few[count++] = value;
        } else {
            JSValueProtect(context, value);
            many.push_back(value);
        }
    }
    std::size_t size() const { return capacity <= few.size() ? count : many.size(); }
    const JSValueRef* data() const { return capacity <= few.size() ? few.data() : many.data(); }

private:
    JSContextRef context;
    std::size_t capacity = 0;
    std::size_t count = 0;
    std::array<JSValueRef, 16> few;  // the first `count` of them
    std::vector<JSValueRef> many;
};

}  // namespace

Document::Document(JSGlobalContextRef scriptContext,
                   const struct jsplugin_capabilities& capabilities,
                   Scheduler& pageScheduler,
                   ErrorReporter& errorReporter)
    : context(scriptContext), plugin(capabilities), scheduler(pageScheduler),
      reporter(errorReporter), engine(context), store(context, engine, access, plugin),
      calls(context, store), access(context, engine, store, calls) {
    documents().push_back(this);
}

Document::~Document() {
    close();
    documents().erase(std::find(documents().begin(), documents().end(), this));
}

Document* Document::of(const ObjectStore& objects) noexcept {
    const auto found =
        std::find_if(documents().begin(), documents().end(),
                     [&objects](const Document* each) { return &each->store == &objects; });
    return found != documents().end() ? *found : nullptr;
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
    ScriptArguments arguments(context, argc > 0 ? static_cast<std::size_t>(argc) : 0);
    for (int i = 0; i < argc && exception == nullptr; ++i) {
        arguments.add(store.toScript(context, argv[i], &exception));
    }
    const PluginCalls::Wait wait(calls);
    if (exception == nullptr) {
        JSObjectCallAsFunction(context, function, thisObject, arguments.size(), arguments.data(),
                               &exception);
    }
    if (exception != nullptr) {
        reporter.uncaught(context, exception);
    }
    reporter.returned();
    return true;
}
