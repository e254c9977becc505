#ifndef SONOLET_TESTS_FAKES_INSPECTION_H
#define SONOLET_TESTS_FAKES_INSPECTION_H

#include "jspp/_detail/object_manager.h"
#include "jspp/interface.h"
#include "jspp/name_table.h"

#include <cstddef>

namespace jspp::__detail {

// What tests see of the framework's inside.
struct inspection {
    static std::size_t size(const object_manager& registry = objects()) {
        const orvo::scoped_lock lock(registry.mutex);
        return registry.entries.size();
    }

    // Everything that the object answers to at this moment.
    static name_table names(const interface& native) {
        name_table all = native.shared ? *native.shared : name_table();
        if (auto* const own = native.own_in_use()) {
            const orvo::scoped_lock lock(own->mutex);
            for (const std::string& name : own->removed) {
                all.remove(name);
            }
            for (const auto& [name, value] : own->names.readables) {
                all.add(name, value);
            }
            for (const auto& [name, member] : own->names.setters) {
                all.add_setter(name, member);
            }
        }
        return all;
    }
    static const auto& readables(const name_table& table) { return table.readables; }
};

}  // namespace jspp::__detail

#endif
