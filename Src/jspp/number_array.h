#ifndef SONOLET_JSPP_NUMBER_ARRAY_H
#define SONOLET_JSPP_NUMBER_ARRAY_H

#include "jspp/interface.h"

#include <string>
#include <vector>

namespace jspp {

// A list of numbers with the shape of a script array: "length", "item" and decimal indexes. Script
// may assign items, not add any. Every other name is refused with "bad_lexical_cast", an index that
// is not there with "Out of bounds array access". Script thread.
class number_array final : public interface {
public:
    // Takes the values over.
    explicit number_array(std::vector<double> values);

private:
    // Script: "length" cannot be written. "item" takes a number, which is truncated, an index its
    // digits; a value that is no number is refused with "Not a number".
    void get_length(result_context& context) const;
    void item(function_context& context) const;
    void index_get(const std::string& name, result_context& context) const;
    void index_set(const std::string& name, parameter_context& context);

    std::vector<double> items;
};

}  // namespace jspp

#endif
