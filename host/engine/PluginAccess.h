#ifndef SONOLET_HOST_ENGINE_PLUGINACCESS_H
#define SONOLET_HOST_ENGINE_PLUGINACCESS_H

#include "engine/ObjectAccess.h"

#include "jsplugin.h"

class ObjectStore;
class PluginCalls;

// Accesses of script as calls of the plug-in: converts what goes in and out, and turns each answer
// into what script sees.
//
// Threads, requirements and errors are as for ObjectAccess: an exception is an Error with the text
// that the plug-in gave, and a TypeError where it says that there is nothing to be called.
// Ownership: borrows all three, which outlive it.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): final, and a member
class PluginAccess final : public ObjectAccess {
public:
    // REQUIRES: no script of the page has run yet; the context outlives this.
    PluginAccess(JSGlobalContextRef scriptContext, ObjectStore& objects, PluginCalls& pluginCalls);
    ~PluginAccess();

    PluginAccess(const PluginAccess&) = delete;
    PluginAccess& operator=(const PluginAccess&) = delete;

    Reading read(ObjectRecord& record, const std::string& name, JSValueRef* exception) override;
    bool write(ObjectRecord& record,
               const std::string& name,
               JSValueRef value,
               JSValueRef* exception) override;
    JSValueRef call(ObjectRecord& function,
                    JSObjectRef thisObject,
                    size_t argc,
                    const JSValueRef argv[],
                    JSValueRef* exception) override;
    void drop(ObjectRecord& function) override;

private:
    // Adds the value of an answer to the reading. Texts are the plug-in's until it is called again,
    // so they are copied here.
    void convert(ObjectRecord& record,
                 const std::string& name,
                 const jsplugin_value& result,
                 Reading& reading,
                 JSValueRef* exception);

    JSGlobalContextRef context;
    ObjectStore& store;
    PluginCalls& calls;
    JSObjectRef typeError;  // protected; the page may put another in its place
};

#endif
