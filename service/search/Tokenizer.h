#ifndef SONOLET_SERVICE_SEARCH_TOKENIZER_H
#define SONOLET_SERVICE_SEARCH_TOKENIZER_H

#include "store/Database.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// A word as the search index has it, and where it stands in the text.
struct Token {
    std::string word;  // in lower case, without diacritics
    // In bytes, the second behind the word.
    std::size_t begin = 0;
    std::size_t end = 0;
};

// Splits texts into words as the search index does: by SQLite's own tokenizer, so that what is
// asked for and what is indexed never part ways.
//
// Threads: that of its database, which must outlive it. Errors: DatabaseError from the constructor.
class Tokenizer final {
public:
    explicit Tokenizer(Database& database);
    ~Tokenizer();

    Tokenizer(const Tokenizer&) = delete;
    Tokenizer& operator=(const Tokenizer&) = delete;

    // Any bytes; what is no letter or digit parts the words. At most `limit` words.
    std::vector<Token> split(std::string_view text, std::size_t limit) const;

private:
    fts5_tokenizer methods{};
    Fts5Tokenizer* tokenizer = nullptr;  // owned
};

}  // namespace sonolet::service

#endif
