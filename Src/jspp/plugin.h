#ifndef SONOLET_JSPP_PLUGIN_H
#define SONOLET_JSPP_PLUGIN_H

#include "jspp/interface.h"
#include "jspp/orvo/shared_ptr.h"
#include "jspp/result_context.h"

#include "jsplugin.h"

#include <string>
#include <vector>

// What a plug-in hangs into the framework. An empty hook is not called. All hooks run on the script
// thread; what a hook throws reaches script as an exception where script asked, else the log.
struct JSPP_functions {
    // Answers a read of a global name.
    void (*global_getter)(const std::string& name, jspp::result_context& context);
    // Makes the interface of an embedded element of that type.
    orvo::shared_ptr<jspp::interface> (*handle_object)(const std::string& type);
    // Decides whether a page may use the plug-in; empty: always.
    bool (*allow_access)(const std::string& protocol, const std::string& host, int port);
    std::vector<std::string> global_names;
    std::vector<std::string> object_types;
    // Once for every document, before the framework's own set-up.
    void (*init)(jsplugin_obj* ctx);
    void (*destroy)();
    // A document goes: first of all, stop what makes noise.
    void (*unload)();
};

// Filled by the plug-in proper when the host loads it.
void js_load_plugin(JSPP_functions& functions);

// Has `poll` called every `interval_ms` milliseconds on the script thread of `ctx`.
extern "C" __attribute__((visibility("default"))) void
jspp_add_poll_function(jsplugin_obj* ctx, unsigned interval_ms, jsplugin_poll* poll);

#endif
