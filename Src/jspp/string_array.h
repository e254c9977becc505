#ifndef SONOLET_JSPP_STRING_ARRAY_H
#define SONOLET_JSPP_STRING_ARRAY_H

#include "jspp/interface.h"

#include <string>
#include <vector>

namespace __detail {

using string_array_c = std::vector<std::string>;

}  // namespace __detail

// A list of texts with the shape of a script array: "length", "item" and decimal indexes, all
// read-only. Every other name is refused with "bad_lexical_cast", an index that is not there with
// "Invalid index". Script thread; the list never changes.
class string_array final : public jspp::interface {
public:
    // Takes the texts over; they are UTF-8.
    explicit string_array(__detail::string_array_c texts);

private:
    void get_length(jspp::result_context& context) const;
    void item(jspp::function_context& context) const;
    void index_get(const std::string& name, jspp::result_context& context) const;
    // Where both ways to an item meet.
    void return_item(int index, jspp::result_context& context) const;

    const __detail::string_array_c items;
};

#endif
