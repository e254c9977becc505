#include "TrackArray.h"

#include "jspp/lexical_cast.h"

#include <stdexcept>

Playlist::track_array::track_array(std::vector<orvo::shared_ptr<Track>> tracks)
    : items(std::move(tracks)) {
    static const function_row functions[] = {{"item", &track_array::item, "n"}};
    static const attribute_row attributes[] = {{"length", &track_array::get_length, {}}};
    static const jspp::name_table& names = *[] {
        auto* const table = new jspp::name_table(jspp::name_table(), functions, attributes);
        table->any_getter = &track_array::index_get;
        return table;
    }();
    _class(names);
}

void Playlist::track_array::get_length(jspp::result_context& context) const {
    context.return_number(static_cast<double>(items.size()));
}

void Playlist::track_array::item(jspp::function_context& context) const {
    returnItem(context.integer(0), context);
}

void Playlist::track_array::index_get(const std::string& name,
                                      jspp::result_context& context) const {
    returnItem(jspp::lexical_cast<int>(name), context);
}

void Playlist::track_array::returnItem(int index, jspp::result_context& context) const {
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        throw std::runtime_error("Out of bounds array access");
    }
    context.return_interface(items[static_cast<std::size_t>(index)], false);
}
