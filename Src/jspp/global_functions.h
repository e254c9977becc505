#ifndef SONOLET_JSPP_GLOBAL_FUNCTIONS_H
#define SONOLET_JSPP_GLOBAL_FUNCTIONS_H

#include "jsplugin.h"

// The functions that the host calls for documents and globals: the contents of the capabilities
// record. Script thread only; nothing is thrown.
struct _js_global_functions {
    // A document begins: the plug-in's own hook, then the tick and the unload listener.
    static void js_init(jsplugin_obj* ctx) noexcept;
    // The host lets the plug-in go; documents have gone before.
    static void js_destroy(jsplugin_obj* ctx) noexcept;
    static int
    js_global_getter(jsplugin_obj* ctx, const char* name, jsplugin_value* result) noexcept;
    // 1: the page may use the plug-in. So it is without a hook.
    static int js_allow_access(const char* protocol, const char* host, int port) noexcept;
    // 1 when an interface was made for the element, else 0.
    static int js_handle_object(jsplugin_obj* global,
                                jsplugin_obj* parent,
                                int attrs_count,
                                jsplugin_attr* attrs,
                                jsplugin_getter** getter,
                                jsplugin_setter** setter,
                                jsplugin_destructor** destructor,
                                jsplugin_gc_trace** gc_trace,
                                jsplugin_notify** notify_a,
                                jsplugin_notify** notify_b,
                                jsplugin_notify** notify_c) noexcept;
    // Marks what native code holds of the document.
    static void js_global_gc_trace(jsplugin_obj* ctx) noexcept;
    // The document goes: its sound first, then its handles, objects and queued calls.
    static void js_unload(jsplugin_obj* ctx) noexcept;
    // The framework's tick: runs the calls queued for the document.
    static int js_document_interval(const jsplugin_obj* ctx) noexcept;
};

#endif
