#include "jspp/interface.h"

#include "jspp/_detail/globals.h"
#include "jspp/_detail/guarded.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/_detail/private_record.h"

#include <memory>
#include <stdexcept>
#include <utility>
#include <variant>

namespace jspp {

using __detail::g_orvo_callbacks;
using __detail::guarded;
using __detail::not_ours;
using __detail::objects;
using __detail::private_record;
using __detail::record_use;

interface::interface() = default;

interface::~interface() {
    delete own_storage.load(std::memory_order_acquire);
}

// ---- Registration ----

interface::own_part& interface::own() const {
    own_part* part = own_storage.load(std::memory_order_acquire);
    if (!part) {
        auto made = std::make_unique<own_part>();
        // Another thread may have been faster; then `part` is its.
        if (own_storage.compare_exchange_strong(part, made.get(), std::memory_order_acq_rel)) {
            part = made.release();
        }
    }
    return *part;
}

interface::own_part* interface::own_in_use() const noexcept {
    own_part* const part = own_storage.load(std::memory_order_acquire);
    return part && part->in_use.load(std::memory_order_acquire) ? part : nullptr;
}

void interface::add_own(const std::string& name, name_table::readable value) {
    own_part& part = own();
    const orvo::scoped_lock lock(part.mutex);
    if (shared && shared->find(name) && part.removed.count(name) == 0) {
        throw std::runtime_error("Already registered");
    }
    part.names.add(name, std::move(value));
    part.in_use.store(true, std::memory_order_release);
}

void interface::_function(const std::string& name,
                          function_member member,
                          const std::string& signature) {
    add_own(name, name_table::function{member, signature});
}

void interface::_attribute_get(const std::string& name, get_member member) {
    add_own(name, member);
}

void interface::_attribute_set(const std::string& name, set_member member) {
    own_part& part = own();
    const orvo::scoped_lock lock(part.mutex);
    if (shared && shared->find_setter(name) && part.removed.count(name) == 0) {
        throw std::runtime_error("Already registered");
    }
    part.names.add_setter(name, member);
    part.in_use.store(true, std::memory_order_release);
}

void interface::_enum(const std::string& name, int value) {
    add_own(name, static_cast<double>(value));
}

void interface::_string(const std::string& name, const std::string& value) {
    add_own(name, value);
}

void interface::_boolean(const std::string& name, bool value) {
    add_own(name, value);
}

void interface::_child(const std::string& name, const orvo::shared_ptr<interface>& value) {
    add_own(name, value);
}

void interface::_remove(const std::string& name) {
    name_table::readable dropped;  // a child goes after the lock
    own_part& part = own();
    const orvo::scoped_lock lock(part.mutex);
    if (shared && (shared->find(name) || shared->find_setter(name))) {
        part.removed.insert(name);
        part.in_use.store(true, std::memory_order_release);
    }
    if (const name_table::readable* const found = part.names.find(name)) {
        dropped = *found;
    }
    part.names.remove(name);
}

const name_table::readable* interface::find(std::string_view name,
                                            name_table::readable& copy) const {
    if (own_part* const part = own_in_use()) {
        const orvo::scoped_lock lock(part->mutex);
        if (const name_table::readable* const found = part->names.find(name)) {
            copy = *found;
            return &copy;
        }
        if (part->removed.count(name) != 0) {
            return nullptr;
        }
    }
    return shared ? shared->find(name) : nullptr;
}

function_member interface::find_function(std::string_view name) const {
    name_table::readable copy;
    const name_table::readable* const found = find(name, copy);
    const auto* const function = found ? std::get_if<name_table::function>(found) : nullptr;
    return function ? function->member : function_member();
}

set_member interface::find_setter(std::string_view name) const {
    if (own_part* const part = own_in_use()) {
        const orvo::scoped_lock lock(part->mutex);
        if (const set_member* const found = part->names.find_setter(name)) {
            return *found;
        }
        if (part->removed.count(name) != 0) {
            return {};
        }
    }
    const set_member* const found = shared ? shared->find_setter(name) : nullptr;
    return found ? *found : set_member();
}

// ---- Script objects ----

jsplugin_obj* interface::cached_object(jsplugin_obj* document) const {
    jsplugin_obj* const obj = object_cache.find(document);
    // The entry of an unloaded document stays until its object is collected, and another document
    // may have come to the same address.
    return obj && objects().has_children(obj, document) ? obj : nullptr;
}

// Gives a new script object its private record, and enters it in registry and cache.
void interface::adopt(jsplugin_obj* obj,
                      jsplugin_obj* document,
                      const orvo::shared_ptr<interface>& self) const {
    // From here on the object's destructor frees what follows.
    obj->plugin_private = new private_record(self, document);
    objects().add_object(obj, document, true);
    object_cache.set(document, obj);
}

jsplugin_obj* interface::create_object(jsplugin_obj* owner_object,
                                       const orvo::shared_ptr<interface>& self) const {
    if (!owner_object) {
        throw std::runtime_error("create_object(): owner_object is NULL");
    }
    jsplugin_obj* const document = objects().document_of(owner_object);
    if (jsplugin_obj* const cached = cached_object(document)) {
        return cached;
    }
    jsplugin_obj* obj = nullptr;
    const int answer = g_orvo_callbacks->create_object(
        owner_object, &_static_getter, &_static_setter, &_static_destructor, &_static_gc, &obj);
    if (answer != JSP_CREATE_OK || !obj) {
        throw std::runtime_error("Create object failed");
    }
    if (owner_object != document && !objects().has_children(owner_object, document)) {
        throw std::runtime_error(not_ours);  // the owner went in there
    }
    adopt(obj, document, self);
    return obj;
}

void interface::create_object(jsplugin_obj* global,
                              jsplugin_obj* parent,
                              const orvo::shared_ptr<interface>& self,
                              int /*attrs_count*/,
                              jsplugin_attr* /*attrs*/,
                              jsplugin_getter** getter,
                              jsplugin_setter** setter,
                              jsplugin_destructor** destructor,
                              jsplugin_gc_trace** gc_trace,
                              jsplugin_notify** notify_a,
                              jsplugin_notify** notify_b,
                              jsplugin_notify** notify_c) const {
    adopt(parent, objects().document_of(global), self);
    *getter = &_static_getter;
    *setter = &_static_setter;
    *destructor = &_static_destructor;
    *gc_trace = &_static_gc;
    *notify_a = nullptr;
    *notify_b = nullptr;
    *notify_c = nullptr;
}

int interface::make_function(jsplugin_obj* obj,
                             const char* name,
                             const function_member* of_class,
                             jsplugin_value* result) const {
    objects().require_object(obj);
    auto made = std::make_unique<script_function>(name, of_class ? shared : nullptr, of_class);
    jsplugin_obj* function = nullptr;
    const int answer = g_orvo_callbacks->create_function(
        obj, nullptr, nullptr, &_static_call, &_static_call_destructor, nullptr, &function);
    if (answer != JSP_CREATE_OK || !function) {
        throw std::runtime_error("Couldn't create JS function using create_function");
    }
    objects().require_object(obj);  // it may have gone in there
    function->plugin_private = made.release();
    objects().add_object(function, obj, false);
    result->type = JSP_TYPE_NATIVE_OBJECT;
    result->u.object = function;
    return JSP_GET_VALUE_CACHE;
}

void interface::_static_destructor(jsplugin_obj* obj) noexcept {
    std::unique_ptr<private_record> record(static_cast<private_record*>(obj->plugin_private));
    obj->plugin_private = nullptr;
    objects().remove_object(obj);
    if (record) {
        record->self->object_cache.erase(record->document, obj);
        record_use::drop(std::move(record));
    }
}

void interface::_static_call_destructor(jsplugin_obj* function_obj) noexcept {
    const std::unique_ptr<script_function> dropped(
        static_cast<script_function*>(function_obj->plugin_private));
    function_obj->plugin_private = nullptr;
    objects().remove_object(function_obj);
}

void interface::_static_gc(jsplugin_obj*) noexcept {}

// ---- Dispatch ----

int interface::_static_getter(jsplugin_obj* obj,
                              const char* name,
                              jsplugin_value* result) noexcept {
    const record_use use(obj);
    private_record& record = use.record;
    return guarded(result, &record.scratch, JSP_GET_EXCEPTION,
                   [&] { return record.self->_getter(obj, name, result, record.scratch); });
}

int interface::_static_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value) noexcept {
    const record_use use(obj);
    private_record& record = use.record;
    return guarded(value, &record.scratch, JSP_PUT_EXCEPTION,
                   [&] { return record.self->_setter(obj, name, value); });
}

int interface::_static_call(jsplugin_obj* this_obj,
                            jsplugin_obj* function_obj,
                            int argc,
                            jsplugin_value* argv,
                            jsplugin_value* result) noexcept {
    const auto* const function = static_cast<const script_function*>(function_obj->plugin_private);
    // Script may call the function on anything, an object of another plug-in included; and a
    // function whose object went while it was made has nothing to call.
    if (!function || !objects().is_object(this_obj)) {
        __detail::set_exception(result, nullptr, not_ours);
        return JSP_CALL_EXCEPTION;
    }
    const record_use use(this_obj);
    private_record& record = use.record;
    return guarded(result, &record.scratch, JSP_CALL_EXCEPTION, [&] {
        return record.self->_function_call(*function, this_obj, argc, argv, result, record.scratch);
    });
}

int interface::_getter(jsplugin_obj* obj,
                       const char* name,
                       jsplugin_value* result,
                       __detail::text_slot& scratch) {
    name_table::readable copy;
    const name_table::readable* const found = find(name, copy);
    result_context context(obj, result, &scratch);
    if (!found) {
        const catch_all_get any = shared ? shared->any_getter : catch_all_get();
        if (!any) {
            return JSP_GET_NO_PROPERTY;
        }
        any(*this, name, context);
        return context.getter_answer();
    }
    if (const auto* const function = std::get_if<name_table::function>(found)) {
        return make_function(obj, name, found == &copy ? nullptr : &function->member, result);
    }
    if (const auto* const getter = std::get_if<get_member>(found)) {
        (*getter)(*this, context);
        return context.getter_answer();
    }
    if (const auto* const child = std::get_if<orvo::shared_ptr<interface>>(found)) {
        context.return_interface(*child, false);
        return context.getter_answer();
    }
    if (const auto* const number = std::get_if<double>(found)) {
        context.return_number(*number);
    } else if (const auto* const boolean = std::get_if<bool>(found)) {
        context.return_boolean(*boolean);
    } else {
        context.return_string(std::get<std::string>(*found));
    }
    return JSP_GET_VALUE_CACHE;
}

int interface::_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value) {
    parameter_context context(obj, 1, value);
    if (const set_member setter = find_setter(name)) {
        setter(*this, context);
        return JSP_PUT_OK;
    }
    if (shared && shared->any_setter) {
        shared->any_setter(*this, name, context);
        return JSP_PUT_OK;
    }
    return JSP_PUT_READ_ONLY;
}

int interface::_function_call(const script_function& function,
                              jsplugin_obj* this_obj,
                              int argc,
                              jsplugin_value* argv,
                              jsplugin_value* result,
                              __detail::text_slot& scratch) {
    const bool is_as_read = function.names && function.names == shared && !own_in_use();
    const function_member member = is_as_read ? *function.member : find_function(function.name);
    if (!member) {
        return JSP_CALL_NO_FUNCTION;
    }
    function_context context(this_obj, argc, argv, result, &scratch);
    member(*this, context);
    return context.has_result() ? JSP_CALL_VALUE : JSP_CALL_NO_VALUE;
}

}  // namespace jspp
