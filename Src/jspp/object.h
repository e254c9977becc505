#ifndef SONOLET_JSPP_OBJECT_H
#define SONOLET_JSPP_OBJECT_H

#include "jspp/_detail/object_manager.h"
#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <vector>

namespace jspp {

class call_parameters;

// A handle to a script object or function of a page, kept by native code. Copies share one record.
//
// While a handle exists and its document lives, the script object survives collection. When the
// document has gone the handle stays valid and refers to nothing. Threads: handles may be copied,
// compared and dropped on any thread, and call_delayed() called; the constructor and call() belong
// to the script thread.
class object {
public:
    struct _s_data;

    // Refers to nothing.
    object() noexcept;

    // Registers `obj` in the document of `parent`, if the registry does not know it yet.
    object(jsplugin_obj* obj, jsplugin_obj* parent);

    object(const object&);
    object(object&&) noexcept;
    object& operator=(const object&);
    object& operator=(object&&) noexcept;
    ~object();

    // Calls the script function at once; its result is dropped. Script thread only.
    void call(const call_parameters& parameters) const;

    // Queues the call for the next framework tick of the object's document. False when the handle
    // refers to nothing (any more).
    bool call_delayed(const call_parameters& parameters) const;

    // What a tick does with a queued call: calls the function unless it has gone. `values` is
    // room to work in. Script thread only.
    void call_queued(const call_parameters& parameters, std::vector<jsplugin_value>& values) const;

    // The script object, or null when the handle refers to nothing (any more).
    jsplugin_obj* get() const noexcept;

    // The document of the script object, or null likewise.
    jsplugin_obj* document() const noexcept;

    // Equality is of the script object.
    friend bool operator==(const object& a, const object& b) noexcept;
    friend bool operator!=(const object& a, const object& b) noexcept { return !(a == b); }

private:
    __detail::object_manager::found find() const noexcept;
    void call_in(jsplugin_obj* context,
                 const call_parameters& parameters,
                 std::vector<jsplugin_value>& values) const;

    orvo::shared_ptr<_s_data> data;
};

}  // namespace jspp

#endif
