#ifndef SONOLET_SERVICE_SEARCH_SEARCH_TEXT_H
#define SONOLET_SERVICE_SEARCH_SEARCH_TEXT_H

#include "search/Tokenizer.h"

#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// What a person asks for: words, "phrases in quotes", and filters: artist:, album:, title: (or
// track:) before a word or a phrase, year:1990 and year:1990-1999. The last word may be the
// beginning of one. Whatever is none of that is words, so that every text has a meaning.
//
// The expressions are made of the index's own words alone, never of the text itself; an empty one
// finds nothing.
class SearchText final {
public:
    // `prefixes`: every word may be the beginning of one.
    SearchText(std::string_view text, const Tokenizer& tokenizer, bool prefixes);

    struct Expression {
        std::string text;
        // Its phrases in order, each an expression by itself; empty for one that only filters.
        std::vector<std::string> phrases;
    };

    // `ranked`: for ordering; otherwise for counting alone, which is quicker.
    Expression trackExpression(bool ranked) const;
    // Of the tracks those whose titles begin with the words; empty when filters or phrases say
    // more.
    Expression titleStartExpression() const;
    // Empty for filters that albums, or artists, do not have.
    Expression albumExpression(bool ranked) const;
    Expression artistExpression(bool ranked) const;

    // How a name of these words answers, where there is no index and are no fields: filters find
    // nothing.
    enum class Match { none, beginning, whole };
    Match match(const std::vector<Token>& name) const;

    // The words outside of years, with their places in the text.
    struct Word {
        Token token;
        bool prefix = false;
    };
    const std::vector<Word>& words() const { return wordList; }

private:
    enum class Field { any, artist, album, title, year };

    // Words in sequence, in one field or in any.
    struct Term {
        Field field = Field::any;
        std::vector<Token> tokens;
        bool prefix = false;
        bool quoted = false;
    };

    // What the fields are called in one of the indexes; null: it has none such.
    struct Columns {
        const char* any;
        const char* artist;
        const char* album;
        const char* title;
        const char* year;
    };

    void parse(std::string_view text, const Tokenizer& tokenizer);
    Expression expression(const Columns& columns, bool ranked) const;
    static const char* columnOf(Field field, const Columns& columns);

    std::vector<Term> terms;
    std::vector<std::string> yearPrefixes;
    bool yearsAsked = false;
    std::vector<Word> wordList;
};

}  // namespace sonolet::service

#endif
