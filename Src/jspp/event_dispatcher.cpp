#include "jspp/event_dispatcher.h"

#include "jspp/_detail/callback_manager.h"
#include "jspp/orvo/mutex.h"

#include <algorithm>

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
    subscriptions& all = made_subscriptions();
    listener_map gone;
    const orvo::scoped_lock lock(__detail::callbacks().mutex);
    all.listeners.emplace(name, listener);
    // Pages come and go, and the event may never be raised.
    if (all.listeners.size() >= all.listeners_to_clean_at) {
        all.drop_dead(gone);
        all.listeners_to_clean_at = std::max<std::size_t>(16, 2 * all.listeners.size());
    }
}

template <class Base>
typename event_dispatcher<Base>::subscriptions& event_dispatcher<Base>::made_subscriptions() {
    if (!tables.load()) {
        tables.store(new subscriptions);
    }
    return *tables.load();
}

template <class Base>
void event_dispatcher<Base>::subscriptions::drop_dead(listener_map& gone) {
    for (auto entry = listeners.begin(); entry != listeners.end();) {
        const auto listener = entry++;
        if (!listener->second.get()) {
            gone.insert(listeners.extract(listener));
        }
    }
}

template <class Base>
void event_dispatcher<Base>::remove_event_listener(function_context& context) {
    const std::string name = context.string(0);
    const object listener = context.object(1);
    typename listener_map::node_type removed;
    subscriptions* const all = tables.load();
    if (!all) {
        return;
    }
    const orvo::scoped_lock lock(__detail::callbacks().mutex);
    const auto [first, last] = all->listeners.equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == listener) {
            removed = all->listeners.extract(entry);
            return;
        }
    }
}

template <class Base>
void event_dispatcher<Base>::get_handler(const std::string& event, result_context& context) const {
    object handler;
    if (const subscriptions* const all = tables.load()) {
        const orvo::scoped_lock lock(__detail::callbacks().mutex);
        const auto stored = all->handlers.find(event);
        if (stored != all->handlers.end()) {
            handler = stored->second;
        }
    }
    context.return_object(handler);
}

template <class Base>
void event_dispatcher<Base>::set_handler(const std::string& event,
                                         const parameter_context& context) {
    object handler = context.object(0);
    subscriptions& all = made_subscriptions();
    const orvo::scoped_lock lock(__detail::callbacks().mutex);
    std::swap(all.handlers[event], handler);
}

template <class Base>
void event_dispatcher<Base>::raise(const std::string& name, const call_parameters& parameters) {
    subscriptions* const all = tables.load();
    if (!all) {
        return;
    }
    listener_map gone;
    __detail::callback_manager& queue = __detail::callbacks();
    const orvo::scoped_lock lock(queue.mutex);
    listener_map& listeners = all->listeners;
    for (auto entry = listeners.lower_bound(name);
         entry != listeners.end() && entry->first == name;) {
        const auto listener = entry++;
        if (!queue.add(listener->second, parameters)) {
            gone.insert(listeners.extract(listener));
        }
    }
    const auto handler = all->handlers.find(name);
    if (handler != all->handlers.end()) {
        queue.add(handler->second, parameters);
    }
}

template class event_dispatcher<interface>;

}  // namespace jspp
