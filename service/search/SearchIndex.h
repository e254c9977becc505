#ifndef SONOLET_SERVICE_SEARCH_SEARCH_INDEX_H
#define SONOLET_SERVICE_SEARCH_SEARCH_INDEX_H

#include "search/SearchText.h"
#include "search/Vocabulary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace sonolet::service {

// Which part of what is found is wanted. Neither is negative.
struct Page {
    int offset = 0;
    int count = 0;
};

// What is asked for: a text as it was typed (SearchText tells what it may say) and a page of each
// kind.
struct SearchRequest {
    std::string text;
    // While someone types: quick, and of everything the first few.
    bool suggest = false;
    Page tracks;
    Page albums;
    Page artists;
    Page playlists{};
    // Whose playlists are found; none: no playlists.
    std::optional<std::int64_t> account{};
};

// One page of a kind, the best first.
struct FoundPage {
    std::vector<Id> ids;
    // On all pages. Exact, however many there are.
    int total = 0;
};

// A playlist as it was when it was found.
struct FoundPlaylist {
    Id link;
    std::string owner;  // canonical name
    std::string name;
    // 20 bytes or none.
    std::string image;
};

// One page of them, by name.
struct FoundPlaylists {
    std::vector<FoundPlaylist> lists;
    int total = 0;  // on all pages
};

// All that one query finds: a page of each kind.
struct SearchAnswer {
    FoundPage tracks;
    FoundPage albums;
    FoundPage artists;
    FoundPlaylists playlists;
    // The query in words that the catalogue has; empty when something was found.
    std::string didYouMean;
};

// Finds what the catalogue has by its words.
//
// The best answers come first: by BM25 (Relevance.h), where a word of a title counts more than one
// of an artist and that more than one of an album; of equals the one that was played more. Of a
// query that so much answers that no order means much only a part is weighed, titles that begin
// with the words before others; the rest follows as it comes. Playlists are found by their names
// among those of the account and those that others publish; they are few, so that each is looked
// at.
//
// `database` is the catalogue with the accounts attached. As for Database.
class SearchIndex final {
public:
    explicit SearchIndex(Database& searched);

    // A text without a word finds nothing; one of an index that is damaged is a DatabaseError. What
    // was counted and read is kept, so that the first search after a change takes longer. Whoever
    // asks has seen to it that no page is negative.
    SearchAnswer search(const SearchRequest& request);

private:
    struct Index {
        Statement count;
        Statement rank;
        Statement list;
        Statement link;
        // Rows by expression, since common words fill much of the index and are asked for again
        // and again.
        std::unordered_map<std::string, std::int64_t> counts = {};
    };
    // What is put to one index, as it counts, as it ranks, and as it prefers.
    struct Expressions {
        SearchText::Expression count;
        SearchText::Expression rank;
        SearchText::Expression preferred;  // what comes first when there is too much to weigh
    };
    struct Hit {
        std::int64_t row;
        double score;
        std::int64_t popularity;
    };

    static std::int64_t count(Index& index, const std::string& expression);
    FoundPage find(Index& index, const Expressions& by, const Page& page, bool suggest);
    FoundPlaylists findPlaylists(const SearchText& asked, const SearchRequest& request);
    std::int64_t popularityOf(const Index& index, std::int64_t row) const;
    // Forgets what was kept of a catalogue or of accounts that have changed.
    void refresh();
    std::string suggestion(const SearchRequest& request, const SearchText& asked);
    bool findsAnything(const std::string& text);

    Database& database;
    Tokenizer tokenizer;
    Index tracks;
    Index albums;
    Index artists;
    Statement accountsVersion;
    Statement listPopular;
    Statement listPlaylists;
    Vocabulary vocabulary;

    // Plays and stars of tracks, by row.
    std::unordered_map<std::int64_t, std::int64_t> popularity;
    std::int64_t seenVersions[2] = {-1, -1};  // of the catalogue and the accounts
};

}  // namespace sonolet::service

#endif
