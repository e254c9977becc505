#ifndef SONOLET_HOST_ENGINE_GLOBALNAMES_H
#define SONOLET_HOST_ENGINE_GLOBALNAMES_H

#include "jsplugin.h"

#include <JavaScriptCore/JavaScript.h>

#include <memory>
#include <string>
#include <vector>

class Intrinsics;
class ObjectStore;
class PluginCalls;

// The plug-in's names on the document's global object. Each is an accessor until the plug-in gives
// a value that may be kept, or the page assigns one of its own: then it is a plain property.
class GlobalNames final {
public:
    GlobalNames(JSGlobalContextRef scriptContext,
                const struct jsplugin_capabilities& capabilities,
                const Intrinsics& engineFunctions,
                ObjectStore& objects,
                PluginCalls& pluginCalls);
    ~GlobalNames();

    GlobalNames(const GlobalNames&) = delete;
    GlobalNames& operator=(const GlobalNames&) = delete;

    void install();

    // The accessors answer undefined from here on.
    void remove() noexcept;

private:
    struct Name {
        GlobalNames& owner;
        std::string text;
        JSObjectRef getter = nullptr;  // protected; its private data is this
        JSObjectRef setter = nullptr;  // likewise
    };

    JSValueRef read(const Name& name, JSValueRef* exception);
    void write(const Name& name, JSValueRef value, JSValueRef* exception);
    void replace(const Name& name, JSValueRef value);
    JSObjectRef makeAccessor(JSObjectCallAsFunctionCallback callback, Name& name) const;

    static JSValueRef get(JSContextRef context,
                          JSObjectRef function,
                          JSObjectRef thisObject,
                          size_t argc,
                          const JSValueRef argv[],
                          JSValueRef* exception) noexcept;
    static JSValueRef set(JSContextRef context,
                          JSObjectRef function,
                          JSObjectRef thisObject,
                          size_t argc,
                          const JSValueRef argv[],
                          JSValueRef* exception) noexcept;

    JSGlobalContextRef context;
    const struct jsplugin_capabilities& plugin;
    const Intrinsics& engine;
    ObjectStore& store;
    PluginCalls& calls;
    std::vector<std::unique_ptr<Name>> names;
};

#endif
