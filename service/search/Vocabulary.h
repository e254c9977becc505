#ifndef SONOLET_SERVICE_SEARCH_VOCABULARY_H
#define SONOLET_SERVICE_SEARCH_VOCABULARY_H

#include "store/Database.h"

#include <string>
#include <vector>

namespace sonolet::service {

// The words of the search index, to tell what someone may have meant. Reading them takes a while
// for a large catalogue; what was read is kept until the catalogue changes. As for Database.
class Vocabulary final {
public:
    // Knows no word before the first refresh().
    explicit Vocabulary(Database& searched);

    // Reads the words when they have changed since.
    void refresh(std::int64_t version);

    // Whether a text of the catalogue has the word, or one that begins so.
    bool has(const std::string& word) const;
    bool hasPrefix(const std::string& start) const;

    // Up to `count` other words that differ by one slip (two in a long word), the nearest and
    // then the most used first. A slip is a letter too many, too few, wrong, or two in each
    // other's place.
    std::vector<std::string> nearest(const std::string& word, std::size_t count) const;

private:
    struct Entry {
        std::string word;
        std::int64_t uses = 0;
    };
    std::vector<Entry>::const_iterator lowerBound(const std::string& word) const;

    Statement listWords;
    std::int64_t readVersion = -1;
    std::vector<Entry> entries;  // sorted by word
};

}  // namespace sonolet::service

#endif
