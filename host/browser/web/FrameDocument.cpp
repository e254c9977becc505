#include "browser/web/FrameDocument.h"

#include "engine/Text.h"

#include <glib.h>

#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace {

// A listener for "unload" that is added at "pagehide", just before it, comes after all of the
// page's own. When a listener returns and no other script is running, WebKit runs what promises
// wait for; it does not when a function returns that is called past it.
constexpr const char* watcher = R"js((function (unloaded) {
    'use strict';
    const add = addEventListener;
    add('pagehide', () => add('unload', unloaded), true);
    const target = new EventTarget();
    const dispatch = target.dispatchEvent.bind(target);
    const PlainEvent = Event;
    target.addEventListener('returned', () => {});
    return [reportError, () => dispatch(new PlainEvent('returned'))];
}))js";

JSValueRef evaluate(JSGlobalContextRef context, const char* script) {
    JSValueRef exception = nullptr;
    const JSValueRef value = JSEvaluateScript(context, text::EngineString(script).get(), nullptr,
                                              nullptr, 1, &exception);
    if (value == nullptr) {
        throw std::runtime_error("a frame's script fails: " + text::toUtf8(context, exception));
    }
    return value;
}

JSObjectRef objectOf(JSGlobalContextRef context, JSValueRef value) {
    if (value == nullptr || !JSValueIsObject(context, value)) {
        throw std::runtime_error("a frame's window lacks a needed function");
    }
    return JSValueToObject(context, value, nullptr);
}

// By their contexts: the page may keep the listener for longer than its document lives.
std::unordered_map<JSContextRef, FrameDocument*>& living() {
    static auto& documents = *new std::unordered_map<JSContextRef, FrameDocument*>;
    return documents;
}

}  // namespace

FrameDocument::FrameDocument(JSCContext* frameContext,
                             const PluginLibrary& plugin,
                             Scheduler& scheduler,
                             std::function<void()> unloaded)
    : context(frameContext), onUnload(std::move(unloaded)),
      document(context.ref, plugin.capabilities(), scheduler, *this) {
    living()[context.ref] = this;
    const JSValueRef listener = JSObjectMakeFunctionWithCallback(
        context.ref, text::EngineString("unloaded").get(), documentUnloads);
    const JSObjectRef watch = objectOf(context.ref, evaluate(context.ref, watcher));
    JSValueRef exception = nullptr;
    const JSObjectRef functions = objectOf(
        context.ref, JSObjectCallAsFunction(context.ref, watch, nullptr, 1, &listener, &exception));
    const auto take = [&](unsigned index) {
        const JSObjectRef taken = objectOf(
            context.ref, JSObjectGetPropertyAtIndex(context.ref, functions, index, &exception));
        JSValueProtect(context.ref, taken);
        return taken;
    };
    reportError = take(0);
    checkpoint = take(1);
}

FrameDocument::~FrameDocument() {
    close();
    living().erase(context.ref);
    JSValueUnprotect(context.ref, reportError);
    JSValueUnprotect(context.ref, checkpoint);
}

JSValueRef FrameDocument::documentUnloads(
    JSContextRef frameContext, JSObjectRef, JSObjectRef, size_t, const JSValueRef[], JSValueRef*) {
    const auto document = living().find(frameContext);
    if (document != living().end()) {
        if (const auto once = std::exchange(document->second->onUnload, nullptr)) {
            once();
        }
    }
    return nullptr;
}

void FrameDocument::close() {
    onUnload = nullptr;
    document.close();
}

void FrameDocument::uncaught(JSContextRef, JSValueRef exception) noexcept {
    JSObjectCallAsFunction(context.ref, reportError, nullptr, 1, &exception, nullptr);
}

void FrameDocument::returned() noexcept {
    JSObjectCallAsFunction(context.ref, checkpoint, nullptr, 0, nullptr, nullptr);
}

std::string originOf(JSCContext* context) {
    g_autoptr(JSCValue) origin = jsc_context_evaluate(context, "self.origin", -1);
    g_autofree char* text = jsc_value_to_string(origin);
    return text;
}

Document::Origin parseOrigin(const std::string& serialised) {
    g_autofree char* scheme = nullptr;
    g_autofree char* host = nullptr;
    int port = -1;
    if (!g_uri_split_network(serialised.c_str(), G_URI_FLAGS_NONE, &scheme, &host, &port,
                             nullptr)) {
        // "file://" has no host.
        return {serialised.substr(0, serialised.find(':')), "", 0};
    }
    if (port < 0) {
        port = g_str_equal(scheme, "https") ? 443 : g_str_equal(scheme, "http") ? 80 : 0;
    }
    return {scheme, host, port};
}
