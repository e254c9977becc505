#include "jspp/global_functions.h"

#include "Logger.h"
#include "jspp/_detail/callback_manager.h"
#include "jspp/_detail/globals.h"
#include "jspp/_detail/guarded.h"
#include "jspp/_detail/handles.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/plugin.h"

#include <cstdio>
#include <cstring>

namespace jspp::__detail {

jsplugin_callbacks* g_orvo_callbacks = nullptr;

}  // namespace jspp::__detail

namespace {

using jspp::__detail::callbacks;
using jspp::__detail::g_orvo_callbacks;
using jspp::__detail::guarded;
using jspp::__detail::objects;

constexpr unsigned framework_tick_ms = 100;

const Logger logger SONOLET_AT_LOAD("Src/jspp/global_functions");

// Made on first use, never freed: a host may unload documents after the exit handlers.
JSPP_functions& functions() {
    static JSPP_functions& hooks = *new JSPP_functions();
    return hooks;
}

// For what nobody waits for an answer of: a failure goes to the log.
template <class Body>
void logged(const char* function, const Body& body) noexcept {
    try {
        body();
    } catch (const std::exception& error) {
        logger.error(function, ": ", error.what());
    } catch (...) {
        logger.error(function, ": unknown exception");
    }
}

// Names as the capabilities record wants them: NULL-terminated, for the life of the process.
class name_list final {
public:
    explicit name_list(const std::vector<std::string>& names) : texts(names) {
        for (std::string& text : texts) {
            pointers.push_back(text.data());
        }
        pointers.push_back(nullptr);
    }

    char** get() { return pointers.data(); }

private:
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};

}  // namespace

void jspp_add_poll_function(jsplugin_obj* ctx, unsigned interval_ms, jsplugin_poll* poll) {
    g_orvo_callbacks->add_poll_function(ctx, interval_ms, poll);
}

void _js_global_functions::js_init(jsplugin_obj* ctx) noexcept {
    logged("_js_global_functions::js_init", [&] {
        if (functions().init) {
            functions().init(ctx);
        }
    });
    g_orvo_callbacks->add_poll_function(ctx, framework_tick_ms, &js_document_interval);
    g_orvo_callbacks->add_unload_listener(ctx, &js_unload);
}

void _js_global_functions::js_destroy(jsplugin_obj*) noexcept {
    logged("_js_global_functions::js_destroy", [] {
        if (functions().destroy) {
            functions().destroy();
        }
    });
}

int _js_global_functions::js_global_getter(jsplugin_obj* ctx,
                                           const char* name,
                                           jsplugin_value* result) noexcept {
    if (!functions().global_getter) {
        return JSP_GET_NO_VALUE;
    }
    return guarded(result, nullptr, JSP_GET_EXCEPTION, [&] {
        jspp::result_context context(ctx, result);
        functions().global_getter(name, context);
        return context.getter_answer();
    });
}

int _js_global_functions::js_allow_access(const char* protocol,
                                          const char* host,
                                          int port) noexcept {
    if (!functions().allow_access) {
        return 1;
    }
    return guarded(nullptr, nullptr, 0,
                   [&] { return functions().allow_access(protocol, host, port) ? 1 : 0; });
}

int _js_global_functions::js_handle_object(jsplugin_obj* global,
                                           jsplugin_obj* parent,
                                           int attrs_count,
                                           jsplugin_attr* attrs,
                                           jsplugin_getter** getter,
                                           jsplugin_setter** setter,
                                           jsplugin_destructor** destructor,
                                           jsplugin_gc_trace** gc_trace,
                                           jsplugin_notify** notify_a,
                                           jsplugin_notify** notify_b,
                                           jsplugin_notify** notify_c) noexcept {
    if (!functions().handle_object) {
        return 0;
    }
    return guarded(nullptr, nullptr, 0, [&] {
        const jsplugin_attr* const end = attrs + attrs_count;
        const jsplugin_attr* attr = attrs;
        while (attr != end && std::strcmp(attr->name, "type") != 0) {
            ++attr;
        }
        if (attr == end) {
            return 0;
        }
        const orvo::shared_ptr<jspp::interface> native = functions().handle_object(attr->value);
        if (!native) {
            return 0;
        }
        native->create_object(global, parent, native, attrs_count, attrs, getter, setter,
                              destructor, gc_trace, notify_a, notify_b, notify_c);
        return 1;
    });
}

void _js_global_functions::js_global_gc_trace(jsplugin_obj* ctx) noexcept {
    jspp::__detail::mark_handles(ctx);
}

void _js_global_functions::js_unload(jsplugin_obj* ctx) noexcept {
    logged("_js_global_functions::js_unload", [] {
        if (functions().unload) {
            functions().unload();
        }
    });
    jspp::__detail::forget_handles(ctx);
    objects().remove_parent(ctx);
    // What still waits for the document would only be skipped; dropping it frees its arguments.
    logged("_js_global_functions::js_unload", [&] { callbacks().take(ctx); });
}

int _js_global_functions::js_document_interval(const jsplugin_obj* ctx) noexcept {
    auto* const document = const_cast<jsplugin_obj*>(ctx);
    std::vector<jsplugin_value> values;
    // Calls queued by these calls wait for the next tick. A function may have gone since its call
    // was queued, and with any call before it.
    auto taken = callbacks().take(document);
    for (; !taken.empty(); taken.pop_front()) {
        for (const auto& [function, parameters] : taken.front()) {
            logged("_js_global_functions::js_document_interval",
                   [&, &call = function, &with = parameters] { call.call_queued(with, values); });
        }
    }
    return 1;
}

int jsplugin_capabilities(struct jsplugin_capabilities** result,
                          struct jsplugin_callbacks* host_callbacks) {
    static constexpr char banner[] = "====== SONOLET LOADED ======\n";
    static struct jsplugin_capabilities capabilities;
    std::fwrite(banner, 1, sizeof banner - 1, stderr);
    try {
        JSPP_functions& hooks = functions();
        hooks.global_names.clear();
        hooks.object_types.clear();
        js_load_plugin(hooks);
        // Never freed: the host may look at them up to process exit.
        static name_list& global_names = *new name_list(hooks.global_names);
        static name_list& object_types = *new name_list(hooks.object_types);
        capabilities.global_names = global_names.get();
        capabilities.object_types = object_types.get();
    } catch (const std::exception& error) {
        // Another call tries again.
        logger.error("jsplugin_capabilities", ": ", error.what());
        return 1;
    }
    capabilities.global_getter = &_js_global_functions::js_global_getter;
    capabilities.global_setter = nullptr;
    capabilities.init = &_js_global_functions::js_init;
    capabilities.destroy = &_js_global_functions::js_destroy;
    capabilities.handle_object = &_js_global_functions::js_handle_object;
    capabilities.allow_access = &_js_global_functions::js_allow_access;
    capabilities.gc_trace = &_js_global_functions::js_global_gc_trace;
    *result = &capabilities;
    g_orvo_callbacks = host_callbacks;
    return 0;
}
