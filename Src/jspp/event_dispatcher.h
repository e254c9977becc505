#ifndef SONOLET_JSPP_EVENT_DISPATCHER_H
#define SONOLET_JSPP_EVENT_DISPATCHER_H

#include "jspp/call_parameters.h"
#include "jspp/interface.h"
#include "jspp/name_table.h"
#include "jspp/object.h"

#include <atomic>
#include <cstddef>
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
    // a call is queued loses that event, not the caller. Values are copied; a wrapper among them is
    // held until the call has been made.
    template <class... Values>
    void dispatch_event(const std::string& name, const Values&... values) noexcept {
        try {
            call_parameters parameters;
            (parameters.add(values), ...);
            raise(name, parameters);
        } catch (...) {  // NOLINT(bugprone-empty-catch): out of memory; libspotify cannot be told
        }
    }

    ~event_dispatcher() override { delete tables.load(); }

protected:
    event_dispatcher() = default;

    // The two listener functions, for the table of a class.
    static const name_table& listener_functions();

    // Registers the two listener functions of an object without a class table; asked again, does
    // nothing.
    void _register();

    // Script: (event, function). The same function may be added again; the oldest entry goes first.
    void add_event_listener(function_context& context);
    void remove_event_listener(function_context& context);

    // What the accessors of an "on" attribute do. Null without a handler, or when it has gone.
    void get_handler(const std::string& event, result_context& context) const;
    void set_handler(const std::string& event, const parameter_context& context);

private:
    using listener_map = std::multimap<std::string, object>;
    using handler_map = std::map<std::string, object>;

    // By event name. Guarded by the mutex of the queue of calls; what is dropped goes when that
    // has been let go.
    struct subscriptions {
        listener_map listeners;
        handler_map handlers;
        std::size_t listeners_to_clean_at = 16;

        // Moves the listeners whose script function has gone to `gone`.
        void drop_dead(listener_map& gone);
    };

    void raise(const std::string& name, const call_parameters& parameters);
    // Script thread.
    subscriptions& made_subscriptions();

    // Made with the first listener, since most objects have none.
    std::atomic<subscriptions*> tables{nullptr};
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
