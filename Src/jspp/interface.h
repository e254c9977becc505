#ifndef SONOLET_JSPP_INTERFACE_H
#define SONOLET_JSPP_INTERFACE_H

#include "jspp/function_context.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <map>
#include <set>
#include <string>
#include <variant>

namespace jspp {

namespace __detail {

// A member function of a class derived from interface, or a free function, behind one type. The
// conversion of the member pointer keeps its `this` adjustment.
template <class... Arguments>
class callee final {
public:
    callee() = default;

    template <class T>
    callee(void (T::*member)(Arguments...))  // NOLINT(google-explicit-constructor)
        : target(static_cast<plain>(member)) {}

    template <class T>
    callee(void (T::*member)(Arguments...) const)  // NOLINT(google-explicit-constructor)
        : target(static_cast<constant>(member)) {}

    callee(void (*function)(Arguments...))  // NOLINT(google-explicit-constructor)
        : target(function) {}

    explicit operator bool() const noexcept {
        return !std::holds_alternative<std::monostate>(target);
    }

    // REQUIRES: not empty, and `self` is of the member's class.
    void operator()(interface& self, Arguments... arguments) const {
        if (const auto* const member = std::get_if<plain>(&target)) {
            (self.**member)(arguments...);
        } else if (const auto* const const_member = std::get_if<constant>(&target)) {
            (self.**const_member)(arguments...);
        } else {
            std::get<free>(target)(arguments...);
        }
    }

private:
    using plain = void (interface::*)(Arguments...);
    using constant = void (interface::*)(Arguments...) const;
    using free = void (*)(Arguments...);

    std::variant<std::monostate, plain, constant, free> target;
};

}  // namespace __detail

// Base of every native object that page script sees.
//
// A derived class registers the script names it answers to; the base turns the host's property
// accesses and calls into calls of the registered members, and keeps at most one script object for
// each document. Threads: registration from any thread, dispatch on the script thread; no lock is
// held while a member or the host is called, so a member may register, remove and call back into
// script. Ownership: through orvo::shared_ptr; each script object owns a share. Errors: a member
// fails by throwing std::runtime_error with the text that script is to see; nothing that is thrown
// reaches the host.
class interface {
public:
    virtual ~interface();

    // Script objects refer to one native object.
    interface(const interface&) = delete;
    interface& operator=(const interface&) = delete;

    // The script object of this interface in the document of `owner_object`, made on first use.
    // `self` owns this. Throws std::runtime_error when there is no owner or the host refuses.
    jsplugin_obj* create_object(jsplugin_obj* owner_object,
                                const orvo::shared_ptr<interface>& self) const;

    // Makes `parent`, the script object of an embedded element, the script object of this
    // interface, and gives the host the callbacks for it.
    void create_object(jsplugin_obj* global,
                       jsplugin_obj* parent,
                       const orvo::shared_ptr<interface>& self,
                       int attrs_count,
                       jsplugin_attr* attrs,
                       jsplugin_getter** getter,
                       jsplugin_setter** setter,
                       jsplugin_destructor** destructor,
                       jsplugin_gc_trace** gc_trace,
                       jsplugin_notify** notify_a,
                       jsplugin_notify** notify_b,
                       jsplugin_notify** notify_c) const;

protected:
    interface();

    using function_member = __detail::callee<function_context&>;
    using get_member = __detail::callee<result_context&>;
    using set_member = __detail::callee<parameter_context&>;
    using catch_all_get = __detail::callee<const std::string&, result_context&>;
    using catch_all_set = __detail::callee<const std::string&, parameter_context&>;

    // A row of a class's table of functions. `signature` names the expected arguments, a character
    // each: n number, s string, b boolean, o object, - anything. It tells the reader; the members
    // check their arguments themselves.
    struct function_row {
        const char* name;
        function_member member;
        const char* signature;
    };

    // A name is registered at most once for reading and once for writing; a second time throws
    // std::runtime_error("Already registered").
    void _function(const std::string& name, function_member member, const std::string& signature);
    void _attribute_get(const std::string& name, get_member member);
    void _attribute_set(const std::string& name, set_member member);
    void _enum(const std::string& name, int value);
    void _string(const std::string& name, const std::string& value);
    void _boolean(const std::string& name, bool value);
    void _child(const std::string& name, const orvo::shared_ptr<interface>& value);

    template <class Rows>
    void _functions(const Rows& rows) {
        for (const function_row& row : rows) {
            _function(row.name, row.member, row.signature);
        }
    }

    // Consulted for names that no table knows.
    void _catch_all_get(catch_all_get member);
    void _catch_all_set(catch_all_set member);

    // Removes the name from every table, for reading and for writing.
    void _remove(const std::string& name);

    orvo::Mutex& table_mutex() const noexcept { return *mutex; }

private:
    struct _s_registered_function {
        function_member member;
        std::string signature;
    };
    struct _s_get_attribute_function {
        get_member member;
    };
    struct _s_set_attribute_function {
        set_member member;
    };

    // The host's callbacks, which find the interface through the object's private record.
    static int _static_getter(jsplugin_obj* obj, const char* name, jsplugin_value* result) noexcept;
    static int _static_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value) noexcept;
    static int _static_call(jsplugin_obj* this_obj,
                            jsplugin_obj* function_obj,
                            int argc,
                            jsplugin_value* argv,
                            jsplugin_value* result) noexcept;
    static void _static_destructor(jsplugin_obj* obj) noexcept;
    static void _static_call_destructor(jsplugin_obj* function_obj) noexcept;
    static void _static_gc(jsplugin_obj* obj) noexcept;

    int _getter(jsplugin_obj* obj,
                const std::string& name,
                jsplugin_value* result,
                std::string& scratch);
    int _setter(jsplugin_obj* obj, const std::string& name, jsplugin_value* value);
    int _function_call(const std::string& name,
                       jsplugin_obj* this_obj,
                       jsplugin_obj* function_obj,
                       int argc,
                       jsplugin_value* argv,
                       jsplugin_value* result,
                       std::string& scratch);

    void _try_register_get(const std::string& name);
    void _try_register_set(const std::string& name);

    jsplugin_obj* cached_object(jsplugin_obj* document) const;
    void adopt(jsplugin_obj* obj,
               jsplugin_obj* owner_object,
               jsplugin_obj* document,
               const orvo::shared_ptr<interface>& self) const;
    void forget(jsplugin_obj* obj, jsplugin_obj* document) const noexcept;
    static int make_function(jsplugin_obj* obj, const std::string& name, jsplugin_value* result);

    // By document. All below is guarded by the mutex.
    mutable std::map<jsplugin_obj*, jsplugin_obj*> object_cache;
    std::set<std::string> readable_names;
    std::set<std::string> writable_names;
    catch_all_get any_getter;
    catch_all_set any_setter;
    std::map<std::string, _s_registered_function> functions;
    std::map<std::string, _s_get_attribute_function> getters;
    std::map<std::string, _s_set_attribute_function> setters;
    std::map<std::string, double> numbers;
    std::map<std::string, std::string> strings;
    std::map<std::string, bool> booleans;
    std::map<std::string, orvo::shared_ptr<interface>> children;

    const orvo::shared_ptr<orvo::Mutex> mutex;
};

}  // namespace jspp

#endif
