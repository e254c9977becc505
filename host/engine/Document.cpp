#include "engine/Document.h"

#include "engine/Text.h"
#include "engine/Values.h"

#include <algorithm>
#include <array>
#include <utility>

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

namespace {

constexpr Scheduler::Delay housekeepingInterval{2000};
// A script that runs for long without a break hands out this many objects, or half as many as there
// are, before housekeeping steps in between two of its calls.
constexpr std::size_t housekeepingThreshold = 4096;

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

Document::PluginCall::PluginCall(Document& calledIn) : document(calledIn) {
    if (document.stressed) {
        document.collect();
    } else if (document.depth == 0 &&
               document.store->rootedSinceTrace() >
                   std::max(housekeepingThreshold, document.store->size() / 2)) {
        document.letGo();
    }
    if (document.depth++ == 0) {
        document.serialAtEntry = document.store->serial();
    }
}

Document::PluginCall::~PluginCall() {
    if (--document.depth == 0 && document.closePending) {
        document.closeNow();
    }
}

Document::Document(JSGlobalContextRef scriptContext,
                   const PluginLibrary& plugin,
                   Scheduler& pageScheduler,
                   ErrorReporter& errorReporter)
    : context(scriptContext), capabilities(plugin.capabilities()), scheduler(pageScheduler),
      reporter(errorReporter), engine(context),
      store(std::make_unique<ObjectStore>(*this, context, engine, capabilities.gc_trace)),
      globals(*this, context) {}

Document::~Document() {
    close();
}

bool Document::open(const Origin& origin) {
    if (capabilities.allow_access != nullptr &&
        capabilities.allow_access(origin.protocol.c_str(), origin.host.c_str(), origin.port) == 0) {
        return false;
    }
    opened = true;
    housekeeping = scheduler.schedule(housekeepingInterval, [this] {
        if (depth == 0) {
            letGo();
        }
        return true;
    });
    globals.install();
    if (capabilities.init != nullptr) {
        const PluginCall call(*this);
        capabilities.init(&store->global());
    }
    return true;
}

void Document::close() {
    if (depth > 0) {
        closePending = true;
        return;
    }
    closeNow();
}

void Document::closeNow() {
    if (std::exchange(closed, true)) {
        return;
    }
    closePending = false;
    scheduler.cancel(housekeeping);
    for (const unsigned poll : std::exchange(polls, {})) {
        scheduler.cancel(poll);
    }
    const PluginCall call(*this);
    for (jsplugin_unload* const listener : std::exchange(unloadListeners, {})) {
        listener(&store->global());
    }
    globals.remove();
    store->close();
    if (opened && capabilities.destroy != nullptr) {
        capabilities.destroy(&store->global());
    }
}

void Document::letGo() {
    // A plug-in's trace or destructor may come back here.
    if (std::exchange(lettingGo, true)) {
        return;
    }
    const bool outermost = depth == 0;
    const std::uint64_t keepAfter = outermost ? store->serial() : serialAtEntry;
    ++depth;
    store->trace(keepAfter, outermost);
    if (outermost) {
        store->sweep();
    }
    --depth;
    lettingGo = false;
}

void Document::collect() {
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

void Document::calledByPlugin() {
    if (stressed) {
        collect();
    }
}

bool Document::addPoll(unsigned intervalMs, jsplugin_poll* poll) {
    if (closed) {
        return false;
    }
    const auto id = std::make_shared<unsigned>(0);
    *id = scheduler.schedule(Scheduler::Delay(std::max(intervalMs, 1U)), [this, poll, id] {
        const PluginCall call(*this);
        const bool again = poll(&store->global()) != 0;
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
    const JSObjectRef function = store->scriptObject(callee);
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
        thisRecord != nullptr ? store->scriptObject(*thisRecord) : nullptr;
    JSValueRef exception = nullptr;
    ScriptArguments arguments(context, argc > 0 ? static_cast<std::size_t>(argc) : 0);
    for (int i = 0; i < argc && exception == nullptr; ++i) {
        arguments.add(toScript(*this, context, argv[i], &exception));
    }
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

JSValueRef Document::readProperty(ObjectRecord& record, JSStringRef name, JSValueRef* exception) {
    Fallback& fallback = store->fallbackFor(record);
    fallback.clear();
    const PluginCall call(*this);
    store->touch(record);
    const std::string utf8 = text::toUtf8(name);
    jsplugin_value result = {};
    const int answer = record.callbacks.getter(&record, utf8.c_str(), &result);
    switch (answer) {
    case JSP_GET_NO_VALUE:
        return engine.undefined();
    case JSP_GET_VALUE:
    case JSP_GET_VALUE_CACHE: {
        const JSValueRef value = store->namedValue(result, utf8, exception);
        if (value != nullptr && answer == JSP_GET_VALUE_CACHE) {
            store->cache(record, name, value);
        }
        return value;
    }
    case JSP_GET_EXCEPTION:
        fallback.leave(utf8, messageOf(result));
        return nullptr;
    default:
        return nullptr;
    }
}

bool Document::writeProperty(ObjectRecord& record,
                             JSStringRef name,
                             JSValueRef value,
                             JSValueRef* exception) {
    const PluginCall call(*this);
    store->touch(record);
    const std::string utf8 = text::toUtf8(name);
    PluginArguments argument(*store, context, 1, &value);
    switch (record.callbacks.setter(&record, utf8.c_str(), argument.data())) {
    case JSP_PUT_READ_ONLY:
        *exception = engine.makeError("Cannot set \"" + utf8 + "\": it is read-only");
        return true;
    case JSP_PUT_EXCEPTION:
        *exception = engine.makeError(messageOf(*argument.data()));
        return true;
    case JSP_GET_NO_PROPERTY:
        return false;  // the page's own property
    default:
        store->uncache(record, name);
        return true;
    }
}

JSValueRef Document::callNative(ObjectRecord& function,
                                JSObjectRef thisObject,
                                size_t argc,
                                const JSValueRef argv[],
                                JSValueRef* exception) {
    const PluginCall call(*this);
    store->touch(function);
    jsplugin_obj* thisRecord = nullptr;
    if (thisObject != nullptr && thisObject != store->global().object) {
        thisRecord = &store->handOut(thisObject);
    }
    PluginArguments arguments(*store, context, argc, argv);
    jsplugin_value result = {};
    switch (function.callbacks.call(thisRecord, &function, arguments.count(), arguments.data(),
                                    &result)) {
    case JSP_CALL_NO_FUNCTION:
        *exception = engine.makeTypeError(
            (function.name.empty() ? "the object" : '"' + function.name + '"') +
            " is not a function");
        return nullptr;
    case JSP_CALL_VALUE:
        return toScript(*this, context, result, exception);
    case JSP_CALL_EXCEPTION:
        *exception = engine.makeError(messageOf(result));
        return nullptr;
    default:
        return engine.undefined();
    }
}
