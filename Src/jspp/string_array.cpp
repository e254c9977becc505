#include "jspp/string_array.h"

#include "jspp/lexical_cast.h"

#include <stdexcept>

string_array::string_array(__detail::string_array_c texts) : items(std::move(texts)) {
    static const function_row functions[] = {{"item", &string_array::item, "n"}};
    static const attribute_row attributes[] = {{"length", &string_array::get_length, {}}};
    static const jspp::name_table& names = *[] {
        auto* const table = new jspp::name_table(jspp::name_table(), functions, attributes);
        table->any_getter = &string_array::index_get;
        return table;
    }();
    _class(names);
}

void string_array::get_length(jspp::result_context& context) const {
    context.return_number(static_cast<double>(items.size()));
}

void string_array::item(jspp::function_context& context) const {
    return_item(context.integer(0), context);
}

void string_array::index_get(const std::string& name, jspp::result_context& context) const {
    return_item(jspp::lexical_cast<int>(name), context);
}

void string_array::return_item(int index, jspp::result_context& context) const {
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        throw std::runtime_error("Invalid index");
    }
    context.return_string(items[static_cast<std::size_t>(index)]);
}
