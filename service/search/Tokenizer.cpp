#include "search/Tokenizer.h"

#include <exception>
#include <new>

namespace sonolet::service {

namespace {

// What the callback fills. An exception must not pass through SQLite.
struct Splitting {
    std::vector<Token>& tokens;
    std::size_t limit;
    bool outOfMemory = false;
};

int takeToken(void* context, int flags, const char* word, int size, int begin, int end) noexcept {
    auto& splitting = *static_cast<Splitting*>(context);
    if (splitting.tokens.size() >= splitting.limit) {
        return SQLITE_DONE;
    }
    if ((flags & FTS5_TOKEN_COLOCATED) != 0) {
        return SQLITE_OK;
    }
    try {
        splitting.tokens.push_back({std::string(word, static_cast<std::size_t>(size)),
                                    static_cast<std::size_t>(begin),
                                    static_cast<std::size_t>(end)});
        return SQLITE_OK;
    } catch (const std::exception&) {
        splitting.outOfMemory = true;
        return SQLITE_NOMEM;
    }
}

}  // namespace

Tokenizer::Tokenizer(Database& database) {
    fts5_api* const api = database.fullTextSearch();
    void* context = nullptr;
    const char* arguments[] = {"remove_diacritics", "2"};
    if (api->xFindTokenizer(api, "unicode61", &context, &methods) != SQLITE_OK ||
        methods.xCreate(context, arguments, 2, &tokenizer) != SQLITE_OK) {
        database.fail("unicode61");
    }
}

Tokenizer::~Tokenizer() {
    methods.xDelete(tokenizer);
}

std::vector<Token> Tokenizer::split(std::string_view text, std::size_t limit) const {
    std::vector<Token> tokens;
    Splitting splitting{tokens, limit};
    const int size = static_cast<int>(text.size());
    // The answer only tells that the callback had enough.
    static_cast<void>(methods.xTokenize(tokenizer, static_cast<void*>(&splitting),
                                        FTS5_TOKENIZE_QUERY, text.data(), size, &takeToken));
    if (splitting.outOfMemory) {
        throw std::bad_alloc();
    }
    return tokens;
}

}  // namespace sonolet::service
