#ifndef SONOLET_JSPP_CALL_PARAMETERS_H
#define SONOLET_JSPP_CALL_PARAMETERS_H

#include "jspp/interface.h"
#include "jspp/object.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <string>
#include <vector>

namespace jspp {

// The arguments of a call from native code into script, in order. Copies share the values.
//
// Threads: built on any thread, turned into the host's values on the script thread.
class call_parameters {
public:
    // One argument. get_value() gives it for a document, whose script thread calls; the host's
    // value is valid as long as the parameters are.
    class _s_value_base {
    public:
        _s_value_base() = default;
        _s_value_base(const _s_value_base&) = delete;
        _s_value_base& operator=(const _s_value_base&) = delete;
        virtual ~_s_value_base() = default;
        // Throws what making a script object throws.
        virtual jsplugin_value get_value(jsplugin_obj* context) const = 0;
    };

    // Each appends one argument. A number reaches script as a double, a handle as its script
    // object.
    void add(double number);
    void add(int number);
    void add(bool boolean);
    void add(const char* text);  // null is the empty text
    void add(const std::string& text);
    // Undefined when the object has gone by the time of the call.
    void add(const object& script_object);
    // Part of the framework's interface; no class here calls them.
    void add_null();
    void add_undefined();

    // An interface; its script object is made in the document that is called, when it is.
    template <class T>
    void add(const orvo::shared_ptr<T>& native) {
        values.push_back(orvo::shared_ptr<_s_value_base>(new _s_value_interface<T>(native)));
    }

    // A pointer would otherwise become a boolean.
    template <class T>
    void add(const T* pointer) = delete;

    // Appends the host's value of each argument. Throws what creating a script object throws.
    void generate_values(jsplugin_obj* context, std::vector<jsplugin_value>& result) const;

private:
    // Numbers, booleans, null and undefined.
    class _s_value_standart final : public _s_value_base {
    public:
        explicit _s_value_standart(const jsplugin_value& ready) : value(ready) {}
        jsplugin_value get_value(jsplugin_obj*) const override { return value; }

    private:
        const jsplugin_value value;
    };

    // The host's value points at the held text.
    class _s_value_string final : public _s_value_base {
    public:
        explicit _s_value_string(std::string held) : text(std::move(held)) {}
        jsplugin_value get_value(jsplugin_obj* context) const override;

    private:
        const std::string text;
    };

    // Undefined, once the script object has gone.
    class _s_value_object final : public _s_value_base {
    public:
        explicit _s_value_object(const object& held) : script_object(held) {}
        jsplugin_value get_value(jsplugin_obj* context) const override;

    private:
        const object script_object;
    };

    // The script object of a native one in the document of the call; null for a null pointer.
    template <class T>
    class _s_value_interface final : public _s_value_base {
    public:
        explicit _s_value_interface(const orvo::shared_ptr<T>& held) : native(held) {}
        jsplugin_value get_value(jsplugin_obj* context) const override {
            jsplugin_value value{};
            value.type = JSP_TYPE_NULL;
            if (native) {
                value.u.object = native->create_object(context, native);
                value.type = JSP_TYPE_NATIVE_OBJECT;
                kept = object(value.u.object, context);
            }
            return value;
        }

    private:
        const orvo::shared_ptr<T> native;
        // Making the next argument may collect garbage, and nobody else holds this one yet.
        mutable object kept;
    };

    // In order; shared with copies, since a call is queued for each listener.
    std::vector<orvo::shared_ptr<_s_value_base>> values;
};

}  // namespace jspp

#endif
