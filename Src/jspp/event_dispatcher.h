#ifndef SONOLET_JSPP_EVENT_DISPATCHER_H
#define SONOLET_JSPP_EVENT_DISPATCHER_H

#include "jspp/call_parameters.h"
#include "jspp/interface.h"
#include "jspp/object.h"
#include "jspp/orvo/shared_ptr.h"

#include <map>
#include <string>

namespace jspp {

// Mix-in of a class that raises events: "addEventListener" and "removeEventListener", and for each
// event an attribute, "on" and the event's name, that holds one handler.
//
// Threads: dispatch_event() from any thread; everything else belongs to the script thread. No
// listener ever runs inside dispatch_event(): calls are queued for the document's next tick.
template <class Base>
class event_dispatcher : public Base {
public:
    // Queues a call of every listener of the event, oldest first, then of its handler, with these
    // arguments. Listeners whose script function has gone are dropped on the way. What fails while
    // a call is queued loses that event, not the caller.
    template <class... Values>
    void dispatch_event(const std::string& name, const Values&... values) noexcept {
        try {
            call_parameters parameters;
            (parameters.add(values), ...);
            raise(name, parameters);
        } catch (...) {  // NOLINT(bugprone-empty-catch): out of memory; libspotify cannot be told
        }
    }

protected:
    event_dispatcher()
        : listeners(new std::multimap<std::string, object>),
          handlers(new std::map<std::string, object>) {}

    // Registers the two listener functions; asked again, does nothing.
    void _register();

    void add_event_listener(function_context& context);
    void remove_event_listener(function_context& context);

    // A row of a class's table of event attributes; JSPP_EVENT_ROW writes one.
    struct event_row {
        const char* attribute;
        interface::get_member getter;
        interface::set_member setter;  // empty: read-only
    };

    template <class Rows>
    void _events(const Rows& rows) {
        for (const event_row& row : rows) {
            this->_attribute_get(row.attribute, row.getter);
            if (row.setter) {
                this->_attribute_set(row.attribute, row.setter);
            }
        }
    }

    void get_handler(const std::string& event, result_context& context) const;
    void set_handler(const std::string& event, const parameter_context& context);

private:
    void raise(const std::string& name, const call_parameters& parameters);

    // By event name; guarded by the interface's mutex.
    const orvo::shared_ptr<std::multimap<std::string, object>> listeners;
    const orvo::shared_ptr<std::map<std::string, object>> handlers;
    bool registered = false;
};

extern template class event_dispatcher<interface>;

}  // namespace jspp

// The accessors of the attribute "on" + name. `event` is the event that its handler answers.
#define JSPP_EVENT_ATTRIBUTE(name, event)                                                          \
    void _evt_get_##name(jspp::result_context& context) {                                          \
        this->get_handler(event, context);                                                         \
    }                                                                                              \
    void _evt_set_##name(jspp::parameter_context& context) {                                       \
        this->set_handler(event, context);                                                         \
    }

// The row of the attribute "on" + name in the table of a class.
#define JSPP_EVENT_ROW(type, name)                                                                 \
    { "on" #name, &type::_evt_get_##name, &type::_evt_set_##name }

#endif
