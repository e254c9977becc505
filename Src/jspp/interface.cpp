#include "jspp/interface.h"

#include "jspp/_detail/globals.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/_detail/private_record.h"

#include <memory>
#include <optional>
#include <stdexcept>

namespace jspp {

using __detail::g_orvo_callbacks;
using __detail::guarded;
using __detail::objects;
using __detail::private_record;

namespace {

constexpr char not_ours[] = "Not a jspp interface";

template <class Table>
auto lookup(const Table& table, const std::string& name) {
    const auto entry = table.find(name);
    return entry == table.end() ? std::optional<typename Table::mapped_type>()
                                : std::optional<typename Table::mapped_type>(entry->second);
}

}  // namespace

interface::interface() : mutex(new orvo::Mutex) {}

interface::~interface() = default;

// ---- Registration ----

void interface::_try_register_get(const std::string& name) {
    if (!readable_names.insert(name).second) {
        throw std::runtime_error("Already registered");
    }
}

void interface::_try_register_set(const std::string& name) {
    if (!writable_names.insert(name).second) {
        throw std::runtime_error("Already registered");
    }
}

void interface::_function(const std::string& name,
                          function_member member,
                          const std::string& signature) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    functions[name] = {member, signature};
}

void interface::_attribute_get(const std::string& name, get_member member) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    getters[name] = {member};
}

void interface::_attribute_set(const std::string& name, set_member member) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_set(name);
    setters[name] = {member};
}

void interface::_enum(const std::string& name, int value) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    numbers[name] = value;
}

void interface::_string(const std::string& name, const std::string& value) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    strings[name] = value;
}

void interface::_boolean(const std::string& name, bool value) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    booleans[name] = value;
}

void interface::_child(const std::string& name, const orvo::shared_ptr<interface>& value) {
    const orvo::scoped_lock lock(*mutex);
    _try_register_get(name);
    children[name] = value;
}

void interface::_catch_all_get(catch_all_get member) {
    const orvo::scoped_lock lock(*mutex);
    any_getter = member;
}

void interface::_catch_all_set(catch_all_set member) {
    const orvo::scoped_lock lock(*mutex);
    any_setter = member;
}

void interface::_remove(const std::string& name) {
    orvo::shared_ptr<interface> child;  // dropped after the lock
    const orvo::scoped_lock lock(*mutex);
    const auto entry = children.find(name);
    if (entry != children.end()) {
        child.swap(entry->second);
        children.erase(entry);
    }
    readable_names.erase(name);
    writable_names.erase(name);
    functions.erase(name);
    getters.erase(name);
    setters.erase(name);
    numbers.erase(name);
    strings.erase(name);
    booleans.erase(name);
}

// ---- Script objects ----

jsplugin_obj* interface::cached_object(jsplugin_obj* document) const {
    jsplugin_obj* obj = nullptr;
    {
        const orvo::scoped_lock lock(*mutex);
        const auto cached = object_cache.find(document);
        if (cached != object_cache.end()) {
            obj = cached->second;
        }
    }
    // The entry of an unloaded document stays until its object is collected, and another document
    // may have come to the same address.
    return obj && objects().has_children(obj, document) ? obj : nullptr;
}

// Gives a new script object its private record, and enters it in registry and cache.
void interface::adopt(jsplugin_obj* obj,
                      jsplugin_obj* owner_object,
                      jsplugin_obj* document,
                      const orvo::shared_ptr<interface>& self) const {
    // From here on the object's destructor frees what follows.
    obj->plugin_private = new private_record{self, std::string(), document, false};
    objects().add_object(obj, owner_object, true);
    const orvo::scoped_lock lock(*mutex);
    object_cache[document] = obj;
}

void interface::forget(jsplugin_obj* obj, jsplugin_obj* document) const noexcept {
    const orvo::scoped_lock lock(*mutex);
    const auto cached = object_cache.find(document);
    if (cached != object_cache.end() && cached->second == obj) {
        object_cache.erase(cached);
    }
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
    adopt(obj, owner_object, document, self);
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
    adopt(parent, global, objects().document_of(global), self);
    *getter = &_static_getter;
    *setter = &_static_setter;
    *destructor = &_static_destructor;
    *gc_trace = &_static_gc;
    *notify_a = nullptr;
    *notify_b = nullptr;
    *notify_c = nullptr;
}

int interface::make_function(jsplugin_obj* obj, const std::string& name, jsplugin_value* result) {
    auto script_name = std::make_unique<std::string>(name);
    jsplugin_obj* function = nullptr;
    const int answer = g_orvo_callbacks->create_function(
        obj, nullptr, nullptr, &_static_call, &_static_call_destructor, nullptr, &function);
    if (answer != JSP_CREATE_OK || !function) {
        throw std::runtime_error("Couldn't create JS function using create_function");
    }
    function->plugin_private = script_name.release();
    objects().add_object(function, obj, false);
    result->type = JSP_TYPE_NATIVE_OBJECT;
    result->u.object = function;
    return JSP_GET_VALUE_CACHE;
}

void interface::_static_destructor(jsplugin_obj* obj) noexcept {
    const std::unique_ptr<private_record> record(static_cast<private_record*>(obj->plugin_private));
    obj->plugin_private = nullptr;
    objects().remove_object(obj);
    if (record) {
        record->self->forget(obj, record->document);
    }
}

void interface::_static_call_destructor(jsplugin_obj* function_obj) noexcept {
    const std::unique_ptr<std::string> name(
        static_cast<std::string*>(function_obj->plugin_private));
    function_obj->plugin_private = nullptr;
    objects().remove_object(function_obj);
}

void interface::_static_gc(jsplugin_obj*) noexcept {}

// ---- Dispatch ----

int interface::_static_getter(jsplugin_obj* obj,
                              const char* name,
                              jsplugin_value* result) noexcept {
    private_record& record = private_record::of(obj);
    const orvo::shared_ptr<interface> self = record.self;
    return guarded(result, &record.scratch, JSP_GET_EXCEPTION,
                   [&] { return self->_getter(obj, name, result, record.scratch); });
}

int interface::_static_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value) noexcept {
    private_record& record = private_record::of(obj);
    if (record.unloaded) {
        __detail::set_exception(value, &record.scratch, not_ours);
        return JSP_PUT_EXCEPTION;
    }
    const orvo::shared_ptr<interface> self = record.self;
    return guarded(value, &record.scratch, JSP_PUT_EXCEPTION,
                   [&] { return self->_setter(obj, name, value); });
}

int interface::_static_call(jsplugin_obj* this_obj,
                            jsplugin_obj* function_obj,
                            int argc,
                            jsplugin_value* argv,
                            jsplugin_value* result) noexcept {
    // Script may call the function on anything, an object of another plug-in included.
    if (!this_obj || !objects().is_object(this_obj)) {
        __detail::set_exception(result, nullptr, not_ours);
        return JSP_CALL_EXCEPTION;
    }
    const auto* const name = static_cast<const std::string*>(function_obj->plugin_private);
    private_record& record = private_record::of(this_obj);
    const orvo::shared_ptr<interface> self = record.self;
    return guarded(result, &record.scratch, JSP_CALL_EXCEPTION, [&] {
        return self->_function_call(*name, this_obj, function_obj, argc, argv, result,
                                    record.scratch);
    });
}

int interface::_getter(jsplugin_obj* obj,
                       const std::string& name,
                       jsplugin_value* result,
                       std::string& scratch) {
    get_member getter;
    catch_all_get any;
    orvo::shared_ptr<interface> child;
    bool is_function = false;
    {
        const orvo::scoped_lock lock(*mutex);
        result_context constant(obj, result, &scratch);
        if (functions.count(name) != 0) {
            is_function = true;
        } else if (const auto attribute = lookup(getters, name)) {
            getter = attribute->member;
        } else if (const auto found_child = lookup(children, name)) {
            child = *found_child;
        } else if (const auto number = lookup(numbers, name)) {
            constant.return_number(*number);
            return JSP_GET_VALUE_CACHE;
        } else if (const auto boolean = lookup(booleans, name)) {
            constant.return_boolean(*boolean);
            return JSP_GET_VALUE_CACHE;
        } else if (const auto string = lookup(strings, name)) {
            constant.return_string(*string);
            return JSP_GET_VALUE_CACHE;
        } else {
            any = any_getter;
        }
    }
    if (is_function) {
        return make_function(obj, name, result);
    }
    result_context context(obj, result, &scratch);
    if (getter) {
        getter(*this, context);
    } else if (child) {
        context.return_interface(child, false);
    } else if (any) {
        any(*this, name, context);
    } else {
        return JSP_GET_NO_PROPERTY;
    }
    return context.getter_answer();
}

int interface::_setter(jsplugin_obj* obj, const std::string& name, jsplugin_value* value) {
    set_member setter;
    catch_all_set any;
    {
        const orvo::scoped_lock lock(*mutex);
        if (const auto attribute = lookup(setters, name)) {
            setter = attribute->member;
        } else {
            any = any_setter;
        }
    }
    parameter_context context(obj, 1, value);
    if (setter) {
        setter(*this, context);
    } else if (any) {
        any(*this, name, context);
    } else {
        return JSP_PUT_READ_ONLY;
    }
    return JSP_PUT_OK;
}

int interface::_function_call(const std::string& name,
                              jsplugin_obj* this_obj,
                              jsplugin_obj* /*function_obj*/,
                              int argc,
                              jsplugin_value* argv,
                              jsplugin_value* result,
                              std::string& scratch) {
    function_member member;
    {
        const orvo::scoped_lock lock(*mutex);
        const auto function = functions.find(name);
        if (function == functions.end()) {
            return JSP_CALL_NO_FUNCTION;
        }
        member = function->second.member;
    }
    function_context context(this_obj, argc, argv, result, &scratch);
    member(*this, context);
    return context.has_result() ? JSP_CALL_VALUE : JSP_CALL_NO_VALUE;
}

}  // namespace jspp
