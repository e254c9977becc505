#include "jspp/name_table.h"

#include "jspp/interface.h"

#include <stdexcept>
#include <utility>

namespace jspp {

namespace {

template <class Table, class Value>
void add_to(Table& table, const std::string& name, Value&& value) {
    if (!table.emplace(name, std::forward<Value>(value)).second) {
        throw std::runtime_error("Already registered");
    }
}

template <class Table>
const typename Table::mapped_type* find_in(const Table& table, std::string_view name) noexcept {
    const auto entry = table.find(name);
    return entry == table.end() ? nullptr : &entry->second;
}

template <class Table>
void remove_from(Table& table, std::string_view name) {
    const auto entry = table.find(name);
    if (entry != table.end()) {
        table.erase(entry);
    }
}

}  // namespace

void name_table::add(const std::string& name, readable value) {
    add_to(readables, name, std::move(value));
}

void name_table::add_setter(const std::string& name, set_member member) {
    add_to(setters, name, member);
}

void name_table::remove(std::string_view name) {
    remove_from(readables, name);
    remove_from(setters, name);
}

const name_table::readable* name_table::find(std::string_view name) const noexcept {
    return find_in(readables, name);
}

const set_member* name_table::find_setter(std::string_view name) const noexcept {
    return find_in(setters, name);
}

}  // namespace jspp
