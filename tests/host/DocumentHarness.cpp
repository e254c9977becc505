#include "DocumentHarness.h"

#include "engine/EngineHooks.h"
#include "engine/Text.h"

#include <dlfcn.h>
#include <glib.h>

namespace {

const PluginLibrary& plugin() {
    static const PluginLibrary library(HOST_PROBE);
    return library;
}

}  // namespace

DocumentHarness::DocumentHarness() : context(JSGlobalContextCreateInGroup(nullptr, nullptr)) {
    document = std::make_unique<Document>(context, plugin().capabilities(), scheduler, *this);
    atStart = probe();
}

DocumentHarness::~DocumentHarness() {
    document.reset();
    JSGlobalContextRelease(context);
}

std::string DocumentHarness::eval(const std::string& script) const {
    const text::EngineString source(script);
    JSValueRef exception = nullptr;
    const JSValueRef value =
        JSEvaluateScript(context, source.get(), nullptr, nullptr, 1, &exception);
    return exception != nullptr ? "throws " + text::toUtf8(context, exception)
                                : text::toUtf8(context, value);
}

void DocumentHarness::collect() const {
    JSSynchronousGarbageCollectForDebugging(context);
}

void DocumentHarness::collectAll() const {
    for (int i = 0; i < 2; ++i) {
        document->letGo();
        collect();
        // Allocation finishes the lazy sweep of what was found dead.
        eval("for (let i = 0; i < 2000; ++i) { ({ i }); }");
    }
    document->letGo();
}

bool DocumentHarness::waitUntil(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(10);
    // Wakes the loop now and then, lest it waits for an event that never comes.
    const guint wake = g_timeout_add(
        20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool reached = done();
    while (!reached && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        reached = done();
    }
    g_source_remove(wake);
    return reached;
}

void DocumentHarness::uncaught(JSContextRef callContext, JSValueRef exception) noexcept {
    errors.push_back(text::toUtf8(callContext, exception));
}

ProbeState& DocumentHarness::probe() {
    void* const library = dlopen(HOST_PROBE, RTLD_NOW | RTLD_NOLOAD);
    auto* const function = reinterpret_cast<decltype(&probeState)>(dlsym(library, "probeState"));
    dlclose(library);
    return *function();
}

void DocumentHarness::define(const char* name, std::function<void()> function) const {
    static std::map<JSObjectRef, std::function<void()>> functions;
    const text::EngineString engineName(name);
    const JSObjectRef object =
        JSObjectMakeFunctionWithCallback(context, engineName.get(),
                                         [](JSContextRef ctx, JSObjectRef callee, JSObjectRef,
                                            size_t, const JSValueRef[], JSValueRef*) -> JSValueRef {
                                             functions.at(callee)();
                                             return JSValueMakeUndefined(ctx);
                                         });
    functions[object] = std::move(function);
    JSObjectSetProperty(context, JSContextGetGlobalObject(context), engineName.get(), object,
                        kJSPropertyAttributeNone, nullptr);
}
