#include "search/Vocabulary.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace sonolet::service {

namespace {

// Longer words are compared no further.
constexpr std::size_t longestWord = 32;
constexpr std::size_t longWord = 6;
constexpr std::size_t shortestWord = 3;

// The letters of a word in UTF-8.
struct Letters {
    explicit Letters(const std::string& word) {
        for (std::size_t place = 0; place < word.size() && size < longestWord; ++size) {
            char32_t letter = static_cast<unsigned char>(word[place++]);
            while (place < word.size() && (word[place] & 0xc0) == 0x80) {
                letter = letter << 8 | static_cast<unsigned char>(word[place++]);
            }
            letters[size] = letter;
        }
    }
    std::array<char32_t, longestWord> letters{};
    std::size_t size = 0;
};

// How many slips lead from one word to the other; anything above `limit` when more than that.
int slips(const Letters& from, const Letters& to, int limit) {
    if (std::abs(static_cast<int>(from.size) - static_cast<int>(to.size)) > limit) {
        return limit + 1;
    }
    // Three rows of the table: a swap looks two back.
    std::array<std::array<int, longestWord + 1>, 3> rows{};
    for (std::size_t column = 0; column <= to.size; ++column) {
        rows[0][column] = static_cast<int>(column);
    }
    for (std::size_t row = 1; row <= from.size; ++row) {
        auto& current = rows[row % 3];
        const auto& before = rows[(row + 2) % 3];
        const auto& beforeThat = rows[(row + 1) % 3];
        current[0] = static_cast<int>(row);
        int least = current[0];
        for (std::size_t column = 1; column <= to.size; ++column) {
            const bool same = from.letters[row - 1] == to.letters[column - 1];
            current[column] = std::min(
                {before[column] + 1, current[column - 1] + 1, before[column - 1] + (same ? 0 : 1)});
            if (row > 1 && column > 1 && from.letters[row - 1] == to.letters[column - 2] &&
                from.letters[row - 2] == to.letters[column - 1]) {
                current[column] = std::min(current[column], beforeThat[column - 2] + 1);
            }
            least = std::min(least, current[column]);
        }
        if (least > limit) {
            return limit + 1;
        }
    }
    return rows[from.size % 3][to.size];
}

}  // namespace

Vocabulary::Vocabulary(Database& searched)
    : listWords(searched,
                "SELECT term, SUM(doc) FROM temp.words WHERE col <> 'year' GROUP BY term") {}

void Vocabulary::refresh(std::int64_t version) {
    if (version == readVersion) {
        return;
    }
    entries.clear();
    for (Cursor row = listWords.run(); row.next();) {
        entries.push_back({row.text(0), row.integer(1)});
    }
    entries.shrink_to_fit();
    readVersion = version;
}

std::vector<Vocabulary::Entry>::const_iterator
Vocabulary::lowerBound(const std::string& word) const {
    return std::lower_bound(
        entries.begin(), entries.end(), word,
        [](const Entry& entry, const std::string& wanted) { return entry.word < wanted; });
}

bool Vocabulary::has(const std::string& word) const {
    const auto found = lowerBound(word);
    return found != entries.end() && found->word == word;
}

bool Vocabulary::hasPrefix(const std::string& start) const {
    const auto found = lowerBound(start);
    return found != entries.end() && found->word.compare(0, start.size(), start) == 0;
}

std::vector<std::string> Vocabulary::nearest(const std::string& word, std::size_t count) const {
    struct Candidate {
        int distance;
        const Entry* entry;
    };
    const Letters letters(word);
    std::vector<Candidate> candidates;
    if (letters.size < shortestWord || letters.size == longestWord) {
        return {};
    }
    const int limit = letters.size < longWord ? 1 : 2;
    for (const Entry& entry : entries) {
        const int distance = slips(letters, Letters(entry.word), limit);
        if (distance > 0 && distance <= limit) {
            candidates.push_back({distance, &entry});
        }
    }
    // Entries are in the order of their words, and stay so among equals.
    std::stable_sort(
        candidates.begin(), candidates.end(), [](const Candidate& left, const Candidate& right) {
            return left.distance != right.distance ? left.distance < right.distance
                                                   : left.entry->uses > right.entry->uses;
        });
    std::vector<std::string> words;
    for (const Candidate& candidate : candidates) {
        if (words.size() < count) {
            words.push_back(candidate.entry->word);
        }
    }
    return words;
}

}  // namespace sonolet::service
