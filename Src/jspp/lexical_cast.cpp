#include "jspp/lexical_cast.h"

#include <locale>
#include <sstream>

namespace jspp {

namespace {

template <class T>
T read_whole(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    T number{};
    stream >> std::noskipws >> number;
    if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof()) {
        throw bad_lexical_cast();
    }
    return number;
}

}  // namespace

template <>
int lexical_cast<int>(const std::string& text) {
    return read_whole<int>(text);
}

template <>
unsigned lexical_cast<unsigned>(const std::string& text) {
    // A stream reads a negative number into an unsigned one and wraps it.
    if (!text.empty() && text.front() == '-') {
        throw bad_lexical_cast();
    }
    return read_whole<unsigned>(text);
}

}  // namespace jspp
