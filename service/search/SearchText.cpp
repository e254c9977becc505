#include "search/SearchText.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace sonolet::service {

namespace {

// Nobody means more; what follows changes nothing, as nothing has that many words.
constexpr std::size_t mostWords = 64;
constexpr int lastYear = 9999;

constexpr char spaces[] = " \t\n\v\f\r";
constexpr char wordEnds[] = " \t\n\v\f\r\"";

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(),
                      [](char left, char right) { return left == lower(right); });
}

// Up to four digits off the front.
std::optional<int> takeYear(std::string_view& text) {
    int year = 0;
    std::size_t digits = 0;
    while (digits < text.size() && digits < 4 && g_ascii_isdigit(text[digits])) {
        year = year * 10 + (text[digits++] - '0');
    }
    text.remove_prefix(digits);
    return digits == 0 ? std::nullopt : std::optional<int>(year);
}

// "1990", "1990-1999", "1990-" or "-1999".
std::optional<std::pair<int, int>> parseYears(std::string_view text) {
    const std::optional<int> from = takeYear(text);
    if (text.empty()) {
        return from ? std::optional(std::pair(*from, *from)) : std::nullopt;
    }
    if (text.front() != '-') {
        return std::nullopt;
    }
    text.remove_prefix(1);
    const std::optional<int> to = takeYear(text);
    if (!text.empty() || (!from && !to)) {
        return std::nullopt;
    }
    return std::pair(from.value_or(0), to.value_or(lastYear));
}

// The beginnings that the years of a span have in common: 1990-2001 is 199*, 2000 and 2001.
void addYears(const std::string& start,
              int first,
              int size,
              int from,
              int to,
              std::vector<std::string>& prefixes) {
    const int last = first + size - 1;
    if (last < from || first > to) {
        return;
    }
    if ((from <= first && last <= to && !start.empty()) || size == 1) {
        prefixes.push_back('"' + start + '"' + (size == 1 ? "" : "*"));
        return;
    }
    for (int digit = 0; digit < 10; ++digit) {
        addYears(start + static_cast<char>('0' + digit), first + digit * size / 10, size / 10, from,
                 to, prefixes);
    }
}

std::string quoted(const Token& token) {
    // A word has no quotes: they part words.
    return '"' + token.word + '"';
}

// Whether the words begin there; of the last word of a prefix its beginning is enough.
SearchText::Match matchAt(const std::vector<Token>& words, bool prefix, const Token* place) {
    for (const Token& token : words) {
        const std::string& word = (place++)->word;
        if (word == token.word) {
            continue;
        }
        const bool begins = prefix && &token == &words.back() &&
                            word.compare(0, token.word.size(), token.word) == 0;
        return begins ? SearchText::Match::beginning : SearchText::Match::none;
    }
    return SearchText::Match::whole;
}

}  // namespace

SearchText::SearchText(std::string_view text, const Tokenizer& tokenizer, bool prefixes) {
    parse(text, tokenizer);
    for (Term& term : terms) {
        term.prefix = !term.quoted && (prefixes || &term == &terms.back());
        for (const Token& token : term.tokens) {
            wordList.push_back({token, term.prefix && &token == &term.tokens.back()});
        }
    }
}

void SearchText::parse(std::string_view text, const Tokenizer& tokenizer) {
    static constexpr std::array<std::pair<std::string_view, Field>, 5> filters = {
        {{"artist:", Field::artist},
         {"album:", Field::album},
         {"title:", Field::title},
         {"track:", Field::title},
         {"year:", Field::year}}};
    std::size_t place = 0;
    std::size_t wordCount = 0;
    const auto skipSpaces = [&] {
        place = std::min(text.find_first_not_of(spaces, place), text.size());
    };
    for (skipSpaces(); place < text.size() && wordCount < mostWords; skipSpaces()) {
        const std::size_t start = place;
        Term term;
        for (const auto& [name, field] : filters) {
            if (startsWith(text.substr(place), name)) {
                term.field = field;
                place += name.size();
                skipSpaces();
                break;
            }
        }
        const bool quote = place < text.size() && text[place] == '"';
        std::size_t valueStart = quote ? place + 1 : place;
        const std::size_t valueEnd =
            std::min(text.find_first_of(quote ? "\"" : wordEnds, valueStart), text.size());
        // Without its end it is still being typed.
        term.quoted = quote && valueEnd < text.size();
        place = term.quoted ? valueEnd + 1 : valueEnd;
        const std::string_view value = text.substr(valueStart, valueEnd - valueStart);
        if (term.field == Field::year) {
            if (const auto years = parseYears(value)) {
                yearsAsked = true;
                addYears("", 0, lastYear + 1, years->first, years->second, yearPrefixes);
                continue;
            }
            // No year: words, with the one that looked like a filter.
            term.field = Field::any;
            term.quoted = false;
            valueStart = start;
        }
        term.tokens =
            tokenizer.split(text.substr(valueStart, valueEnd - valueStart), mostWords - wordCount);
        for (Token& token : term.tokens) {
            token.begin += valueStart;
            token.end += valueStart;
        }
        wordCount += term.tokens.size();
        if (!term.tokens.empty()) {
            terms.push_back(std::move(term));
        }
    }
}

SearchText::Match SearchText::match(const std::vector<Token>& name) const {
    if (terms.empty() || yearsAsked) {
        return Match::none;
    }
    Match weakest = Match::whole;
    for (const Term& term : terms) {
        Match best = Match::none;
        for (std::size_t place = 0; place + term.tokens.size() <= name.size(); ++place) {
            best = std::max(best, matchAt(term.tokens, term.prefix, &name[place]));
        }
        weakest = std::min(weakest, term.field == Field::any ? best : Match::none);
    }
    return weakest;
}

const char* SearchText::columnOf(Field field, const Columns& columns) {
    switch (field) {
    case Field::any:
        return columns.any;
    case Field::artist:
        return columns.artist;
    case Field::album:
        return columns.album;
    case Field::title:
        return columns.title;
    case Field::year:
        return columns.year;
    }
    return nullptr;
}

SearchText::Expression SearchText::expression(const Columns& columns, bool ranked) const {
    Expression all;
    const auto also = [&all](const std::string& part) {
        all.text += (all.text.empty() ? "" : " AND ") + part;
    };
    for (const Term& term : terms) {
        const char* column = columnOf(term.field, columns);
        if (column == nullptr) {
            return {};
        }
        // Only a number can be taken for a year, and leaving the filter out is quicker.
        const bool unfiltered =
            term.field == Field::any && !g_ascii_isdigit(term.tokens.front().word[0]);
        const std::string filter = unfiltered ? std::string() : std::string(column) + " : ";
        std::string phrase;
        for (const Token& token : term.tokens) {
            phrase += (phrase.empty() ? "" : " + ") + quoted(token);
        }
        const std::string beginning = phrase + " *";
        if (term.prefix && ranked) {
            // A whole word is a better answer than one that only begins so: it counts twice.
            also(std::string(filter).append("(").append(phrase).append(" OR ").append(beginning) +
                 ')');
            all.phrases.push_back(filter + phrase);
            all.phrases.push_back(filter + beginning);
        } else {
            also(filter + (term.prefix ? beginning : phrase));
            all.phrases.push_back(filter + (term.prefix ? beginning : phrase));
        }
    }
    if (yearsAsked) {
        if (columns.year == nullptr) {
            return {};
        }
        std::string years;
        for (const std::string& prefix : yearPrefixes) {
            years += (years.empty() ? "" : " OR ") + prefix;
            all.phrases.emplace_back();
        }
        // A span that ends before it begins has no years.
        if (years.empty()) {
            return {};
        }
        also(std::string(columns.year) + " : (" + years + ')');
    }
    return all;
}

SearchText::Expression SearchText::trackExpression(bool ranked) const {
    return expression({"{title artist album}", "artist", "album", "title", "year"}, ranked);
}

SearchText::Expression SearchText::titleStartExpression() const {
    std::string phrase;
    for (const Term& term : terms) {
        if (term.field != Field::any || term.quoted) {
            return {};
        }
        for (const Token& token : term.tokens) {
            phrase += (phrase.empty() ? "title : ^ " : " + ") + quoted(token);
        }
    }
    if (phrase.empty() || yearsAsked) {
        return {};
    }
    return {phrase + " *", {phrase + " *"}};
}

SearchText::Expression SearchText::albumExpression(bool ranked) const {
    return expression({"{name artist}", "artist", "name", nullptr, "year"}, ranked);
}

SearchText::Expression SearchText::artistExpression(bool ranked) const {
    return expression({"name", "name", nullptr, nullptr, nullptr}, ranked);
}

}  // namespace sonolet::service
