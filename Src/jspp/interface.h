#ifndef SONOLET_JSPP_INTERFACE_H
#define SONOLET_JSPP_INTERFACE_H

#include "jspp/_detail/object_cache.h"
#include "jspp/_detail/pool.h"
#include "jspp/function_context.h"
#include "jspp/name_table.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <atomic>
#include <set>
#include <string>
#include <string_view>

namespace jspp {

// Base of every native object that page script sees.
//
// The names that every object of a class answers to stand in one table of the class; an object may
// register and remove names of its own besides. The base turns the host's property accesses and
// calls into calls of the registered members, and keeps at most one script object for each
// document. Threads: an object's own names from any thread, everything else on the script thread;
// no lock is held while a member or the host is called, so a member may register, remove and call
// back into script. Ownership: through orvo::shared_ptr; each script object owns a share. Errors: a
// member fails by throwing std::runtime_error with the text that script is to see; nothing that is
// thrown reaches the host.
class interface {
public:
    virtual ~interface();

    // Script objects refer to one native object.
    interface(const interface&) = delete;
    interface& operator=(const interface&) = delete;

    // The script object of this interface in the document of `owner_object`, made on first use.
    // `self` owns this. Throws std::runtime_error when there is no owner, the host refuses, or the
    // owner goes meanwhile.
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

    using function_member = jspp::function_member;
    using get_member = jspp::get_member;
    using set_member = jspp::set_member;
    using function_row = jspp::function_row;
    using attribute_row = jspp::attribute_row;

    // The class's names, which this object answers to from here on in place of those of an earlier
    // call. The table is complete and never freed: objects outlive the exit handlers.
    void _class(const name_table& names) noexcept { shared = &names; }
    bool has_class() const noexcept { return shared != nullptr; }

    // This object's own names.
    //
    // A name is registered at most once for reading and once for writing; a second time throws
    // std::runtime_error("Already registered"). Script thread. They cost a table for each object:
    // what all objects of a class have is _class()'s.
    void _function(const std::string& name, function_member member, const std::string& signature);
    void _attribute_get(const std::string& name, get_member member);
    void _attribute_set(const std::string& name, set_member member);
    void _enum(const std::string& name, int value);
    void _string(const std::string& name, const std::string& value);

    // Part of the framework's interface; from here on no class here calls them.
    void _boolean(const std::string& name, bool value);
    // The object it names is held by this one, and is answered as an attribute.
    void _child(const std::string& name, const orvo::shared_ptr<interface>& value);

    // Removes a name, the class's or its own, for reading and for writing. Script reads no such
    // property afterwards; a function object that it kept answers no call.
    void _remove(const std::string& name);

private:
    friend struct __detail::inspection;  // tests

    // What an object has beside its class.
    struct own_part {
        orvo::Mutex mutex;
        name_table names;
        std::set<std::string, std::less<>> removed;  // names of the class
        std::atomic<bool> in_use{false};             // something was registered or removed
    };

    // What hangs in the plugin_private of a function object. The member is a shortcut for objects
    // with these class names, and null when an object's own name was read.
    struct script_function : __detail::pooled<script_function> {
        script_function(const char* first_name,
                        const name_table* class_names,
                        const function_member* class_member)
            : name(first_name), names(class_names), member(class_member) {}

        std::string name;
        const name_table* names;
        const function_member* member;
    };

    // The host's callbacks, which find the interface through the object's private record.
    static int _static_getter(jsplugin_obj* obj, const char* name, jsplugin_value* result) noexcept;
    static int _static_setter(jsplugin_obj* obj, const char* name, jsplugin_value* value) noexcept;
    static int _static_call(jsplugin_obj* this_obj,
                            jsplugin_obj* function_obj,
                            int argc,
                            jsplugin_value* argv,
                            jsplugin_value* result) noexcept;
    // The script object has gone: its share of the interface goes, and maybe the interface.
    static void _static_destructor(jsplugin_obj* obj) noexcept;
    static void _static_call_destructor(jsplugin_obj* function_obj) noexcept;
    static void _static_gc(jsplugin_obj* obj) noexcept;

    int _getter(jsplugin_obj* obj,
                const char* name,
                jsplugin_value* result,
                __detail::text_slot& scratch);
    int _setter(jsplugin_obj* obj, const char* name, jsplugin_value* value);
    int _function_call(const script_function& function,
                       jsplugin_obj* this_obj,
                       int argc,
                       jsplugin_value* argv,
                       jsplugin_value* result,
                       __detail::text_slot& scratch);

    // The part is made on first use.
    own_part& own() const;
    // Null while the object answers to its class's names alone.
    own_part* own_in_use() const noexcept;
    void add_own(const std::string& name, name_table::readable value);

    // What the object answers a name with, or null. An own name's answer is copied to `copy`.
    const name_table::readable* find(std::string_view name, name_table::readable& copy) const;
    function_member find_function(std::string_view name) const;
    set_member find_setter(std::string_view name) const;

    // The living script object of the document, or null.
    jsplugin_obj* cached_object(jsplugin_obj* document) const;
    void
    adopt(jsplugin_obj* obj, jsplugin_obj* document, const orvo::shared_ptr<interface>& self) const;
    int make_function(jsplugin_obj* obj,
                      const char* name,
                      const function_member* of_class,
                      jsplugin_value* result) const;

    mutable __detail::object_cache object_cache;  // script thread
    const name_table* shared = nullptr;
    mutable std::atomic<own_part*> own_storage{nullptr};
};

}  // namespace jspp

#endif
