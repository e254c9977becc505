#include "jspp/event_dispatcher.h"

#include "jspp/orvo/mutex.h"

#include <iterator>

namespace jspp {

template <class Base>
void event_dispatcher<Base>::_register() {
    if (registered) {
        return;
    }
    this->_function("addEventListener", &event_dispatcher::add_event_listener, "so");
    this->_function("removeEventListener", &event_dispatcher::remove_event_listener, "s-");
    registered = true;
}

template <class Base>
void event_dispatcher<Base>::add_event_listener(function_context& context) {
    const std::string name = context.string(0);
    const object listener = context.object(1);
    const orvo::scoped_lock lock(this->table_mutex());
    // Pages come and go, and the event may never be raised.
    const auto [first, last] = listeners->equal_range(name);
    for (auto entry = first; entry != last;) {
        entry = entry->second.get() ? std::next(entry) : listeners->erase(entry);
    }
    listeners->emplace(name, listener);
}

template <class Base>
void event_dispatcher<Base>::remove_event_listener(function_context& context) {
    const std::string name = context.string(0);
    const object listener = context.object(1);
    const orvo::scoped_lock lock(this->table_mutex());
    const auto [first, last] = listeners->equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == listener) {
            listeners->erase(entry);
            return;
        }
    }
}

template <class Base>
void event_dispatcher<Base>::get_handler(const std::string& event, result_context& context) const {
    object handler;
    {
        const orvo::scoped_lock lock(this->table_mutex());
        const auto stored = handlers->find(event);
        if (stored != handlers->end()) {
            handler = stored->second;
        }
    }
    context.return_object(handler);
}

template <class Base>
void event_dispatcher<Base>::set_handler(const std::string& event,
                                         const parameter_context& context) {
    object handler = context.object(0);
    const orvo::scoped_lock lock(this->table_mutex());
    std::swap((*handlers)[event], handler);
}

template <class Base>
void event_dispatcher<Base>::raise(const std::string& name, const call_parameters& parameters) {
    const orvo::scoped_lock lock(this->table_mutex());
    const auto [first, last] = listeners->equal_range(name);
    for (auto entry = first; entry != last;) {
        if (entry->second.get()) {
            entry->second.call_delayed(parameters);
            ++entry;
        } else {
            entry = listeners->erase(entry);
        }
    }
    const auto handler = handlers->find(name);
    if (handler != handlers->end() && handler->second.get()) {
        handler->second.call_delayed(parameters);
    }
}

template class event_dispatcher<interface>;

}  // namespace jspp
