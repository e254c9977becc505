#include "jspp/event_dispatcher.h"

#include "jspp/_detail/callback_manager.h"
#include "jspp/orvo/mutex.h"

#include <algorithm>
#include <iterator>

namespace jspp {

template <class Base>
const name_table& event_dispatcher<Base>::listener_functions() {
    static const function_row functions[] = {
        {"addEventListener", &event_dispatcher::add_event_listener, "so"},
        {"removeEventListener", &event_dispatcher::remove_event_listener, "s-"},
    };
    static const name_table& names = *new name_table(name_table(), functions);
    return names;
}

template <class Base>
void event_dispatcher<Base>::_register() {
    if (!this->has_class()) {
        this->_class(listener_functions());
    }
}

template <class Base>
void event_dispatcher<Base>::add_event_listener(function_context& context) {
    const std::string name = context.string(0);
    const object listener = context.object(1);
    const orvo::scoped_lock lock(this->table_mutex());
    subscriptions& all = made_subscriptions();
    all.listeners.emplace(name, listener);
    // Pages come and go, and the event may never be raised.
    if (all.listeners.size() >= all.listeners_to_clean_at) {
        drop_dead_listeners();
        all.listeners_to_clean_at = std::max<std::size_t>(16, 2 * all.listeners.size());
    }
}

template <class Base>
typename event_dispatcher<Base>::subscriptions& event_dispatcher<Base>::made_subscriptions() {
    if (!tables) {
        tables = std::make_unique<subscriptions>();
    }
    return *tables;
}

// REQUIRES: the mutex is held, and there is a listener.
template <class Base>
void event_dispatcher<Base>::drop_dead_listeners() {
    listener_map& listeners = tables->listeners;
    for (auto entry = listeners.begin(); entry != listeners.end();) {
        entry = entry->second.get() ? std::next(entry) : listeners.erase(entry);
    }
}

template <class Base>
void event_dispatcher<Base>::remove_event_listener(function_context& context) {
    const std::string name = context.string(0);
    const object listener = context.object(1);
    const orvo::scoped_lock lock(this->table_mutex());
    if (!tables) {
        return;
    }
    const auto [first, last] = tables->listeners.equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == listener) {
            tables->listeners.erase(entry);
            return;
        }
    }
}

template <class Base>
void event_dispatcher<Base>::get_handler(const std::string& event, result_context& context) const {
    object handler;
    if (this->has_table_mutex()) {
        const orvo::scoped_lock lock(this->table_mutex());
        if (tables) {
            const auto stored = tables->handlers.find(event);
            if (stored != tables->handlers.end()) {
                handler = stored->second;
            }
        }
    }
    context.return_object(handler);
}

template <class Base>
void event_dispatcher<Base>::set_handler(const std::string& event,
                                         const parameter_context& context) {
    object handler = context.object(0);
    const orvo::scoped_lock lock(this->table_mutex());
    std::swap(made_subscriptions().handlers[event], handler);
}

template <class Base>
void event_dispatcher<Base>::raise(const std::string& name, const call_parameters& parameters) {
    // Nobody can have listened yet.
    if (!this->has_table_mutex()) {
        return;
    }
    const orvo::scoped_lock lock(this->table_mutex());
    if (!tables) {
        return;
    }
    listener_map& listeners = tables->listeners;
    const auto [first, last] = listeners.equal_range(name);
    for (auto entry = first; entry != last;) {
        const bool queued = __detail::callbacks().add(entry->second, parameters);
        entry = queued ? std::next(entry) : listeners.erase(entry);
    }
    const auto handler = tables->handlers.find(name);
    if (handler != tables->handlers.end()) {
        __detail::callbacks().add(handler->second, parameters);
    }
}

template class event_dispatcher<interface>;

}  // namespace jspp
