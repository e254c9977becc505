#ifndef SONOLET_JSPP_LEXICAL_CAST_H
#define SONOLET_JSPP_LEXICAL_CAST_H

#include <string>
#include <typeinfo>

namespace jspp {

// Reaches script as an exception with that text, when a page uses a name that is no index.
class bad_lexical_cast final : public std::bad_cast {
public:
    const char* what() const noexcept override { return "bad_lexical_cast"; }
};

// The number that the whole text spells, in the classic locale. Throws bad_lexical_cast for
// anything else: an empty text, trailing characters, a number that T cannot hold. No white space,
// no sign but "-" for a type that has one, decimal digits alone.
template <class T>
T lexical_cast(const std::string& text);

// The two kinds of index there are.
template <>
int lexical_cast<int>(const std::string& text);
template <>
unsigned lexical_cast<unsigned>(const std::string& text);

}  // namespace jspp

#endif
