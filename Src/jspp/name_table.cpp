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

// Out of line, for every class has a table.
name_table::name_table() = default;
name_table::name_table(const name_table& other) = default;
name_table::~name_table() = default;

void name_table::add(const function_row* rows, std::size_t count) {
    for (const function_row* row = rows; row != rows + count; ++row) {
        add(row->name, function{row->member, row->signature});
    }
}

void name_table::add(const attribute_row* rows, std::size_t count) {
    for (const attribute_row* row = rows; row != rows + count; ++row) {
        add(row->name, row->getter);
        if (row->setter) {
            add_setter(row->name, row->setter);
        }
    }
}

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
