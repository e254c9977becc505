#include "jspp/number_array.h"

#include "jspp/lexical_cast.h"

#include <stdexcept>

namespace jspp {

namespace {

std::size_t checked(unsigned index, std::size_t count) {
    if (index >= count) {
        throw std::runtime_error("Out of bounds array access");
    }
    return index;
}

}  // namespace

number_array::number_array(std::vector<double> values) : items(std::move(values)) {
    static const function_row functions[] = {{"item", &number_array::item, "n"}};
    static const attribute_row attributes[] = {{"length", &number_array::get_length, {}}};
    static const name_table& names = *[] {
        auto* const table = new name_table(name_table(), functions, attributes);
        table->any_getter = &number_array::index_get;
        table->any_setter = &number_array::index_set;
        return table;
    }();
    _class(names);
}

void number_array::get_length(result_context& context) const {
    context.return_number(static_cast<double>(items.size()));
}

void number_array::item(function_context& context) const {
    // A negative index lies beyond every count once it is unsigned.
    const auto index = static_cast<unsigned>(context.integer(0));
    context.return_number(items[checked(index, items.size())]);
}

void number_array::index_get(const std::string& name, result_context& context) const {
    context.return_number(items[checked(lexical_cast<unsigned>(name), items.size())]);
}

void number_array::index_set(const std::string& name, parameter_context& context) {
    const std::size_t index = checked(lexical_cast<unsigned>(name), items.size());
    items[index] = context.number(0);
}

}  // namespace jspp
