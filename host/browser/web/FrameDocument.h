#ifndef SONOLET_HOST_BROWSER_WEB_FRAMEDOCUMENT_H
#define SONOLET_HOST_BROWSER_WEB_FRAMEDOCUMENT_H

#include "engine/Document.h"
#include "engine/ErrorReporter.h"
#include "engine/PluginLibrary.h"
#include "engine/Scheduler.h"
#include "engine/glib/Context.h"

#include <functional>
#include <string>

// The plug-in in one document of a frame.
//
// It closes when the document unloads, after the page's own unload listeners, so that these still
// have the plug-in. Threads: the web process's main thread. REQUIRES: made while the frame's window
// is cleared, before any script of the document runs.
class FrameDocument final : public ErrorReporter {
public:
    // `unloaded` is called, once at most, when the document unloads; it closes and may not delete.
    FrameDocument(JSCContext* frameContext,
                  const PluginLibrary& plugin,
                  Scheduler& scheduler,
                  std::function<void()> unloaded);
    // REQUIRES: the plug-in is not on the stack.
    ~FrameDocument() override;

    FrameDocument(const FrameDocument&) = delete;
    FrameDocument& operator=(const FrameDocument&) = delete;

    // False: the plug-in does not admit the document, which then has no part of it.
    bool open(const Document::Origin& origin) { return document.open(origin); }
    // Once or more: the second does nothing.
    void close();

    // Exceptions of listeners become the page's "error" events and lines of its console.
    void uncaught(JSContextRef callContext, JSValueRef exception) noexcept override;
    void returned() noexcept override;

private:
    static JSValueRef documentUnloads(JSContextRef frameContext,
                                      JSObjectRef function,
                                      JSObjectRef thisObject,
                                      size_t argc,
                                      const JSValueRef argv[],
                                      JSValueRef* exception);

    // First made, last released.
    struct Context {
        explicit Context(JSCContext* frameContext) : ref(new OpaqueJSContext(frameContext)) {}
        ~Context() { JSGlobalContextRelease(ref); }
        Context(const Context&) = delete;
        Context& operator=(const Context&) = delete;
        JSGlobalContextRef ref;  // owned
    };

    const Context context;
    std::function<void()> onUnload;
    Document document;
    JSObjectRef reportError = nullptr;  // protected
    JSObjectRef checkpoint = nullptr;   // likewise; runs what promises wait for
};

// The serialised origin of the document that the context is of ("https://host:8443", "file://"), or
// "null" for one that has no origin of its own.
std::string originOf(JSCContext* context);

// Takes it apart, with the scheme's usual port where none is named.
Document::Origin parseOrigin(const std::string& serialised);

#endif
