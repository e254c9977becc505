#include "search/SearchIndex.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace sonolet::service {

namespace {

// Weighing takes some microseconds a row, counting some hundredths of one.
constexpr int rowsWeighed = 1000;
constexpr int rowsSuggested = 300;
constexpr int suggestions = 10;
constexpr std::size_t meaningsTried = 8;
constexpr std::size_t countsKept = 5000;
constexpr std::size_t longestName = 1000;  // words

}  // namespace

SearchIndex::SearchIndex(Database& searched)
    : database(searched), tokenizer(searched),
      tracks{{database, "SELECT COUNT(*) FROM track_index WHERE track_index MATCH ?1"},
             {database, "SELECT rowid, relevance(track_index, ?2, 10, 5, 2, 0) FROM track_index"
                        " WHERE track_index MATCH ?1 LIMIT ?3"},
             {database, "SELECT rowid FROM track_index WHERE track_index MATCH ?1"},
             {database, "SELECT link FROM tracks WHERE id = ?1"}},
      albums{{database, "SELECT COUNT(*) FROM album_index WHERE album_index MATCH ?1"},
             {database, "SELECT rowid, relevance(album_index, ?2, 10, 5, 0) FROM album_index"
                        " WHERE album_index MATCH ?1 LIMIT ?3"},
             {database, "SELECT rowid FROM album_index WHERE album_index MATCH ?1"},
             {database, "SELECT link FROM albums WHERE id = ?1"}},
      artists{{database, "SELECT COUNT(*) FROM artist_index WHERE artist_index MATCH ?1"},
              {database, "SELECT rowid, relevance(artist_index, ?2, 1) FROM artist_index"
                         " WHERE artist_index MATCH ?1 LIMIT ?3"},
              {database, "SELECT rowid FROM artist_index WHERE artist_index MATCH ?1"},
              {database, "SELECT link FROM artists WHERE id = ?1"}},
      accountsVersion(database, "PRAGMA accounts.data_version"),
      listPopular(database,
                  "SELECT t.id, SUM(f.score) FROM temp.favours f JOIN tracks t ON t.link = f.track"
                  " GROUP BY t.id"),
      listPlaylists(database,
                    "SELECT DISTINCT l.link, a.name, l.name, l.image FROM accounts.lists c"
                    " JOIN accounts.list_entries e ON e.list_id = c.id AND e.removed IS NULL"
                    " JOIN accounts.lists l ON l.link = e.item"
                    " JOIN accounts.accounts a ON a.id = l.owner_id"
                    " WHERE c.kind = 3 AND e.kind = 0 AND l.kind = 0 AND (c.owner_id = ?1"
                    " OR (c.owner_id = l.owner_id AND l.published)) ORDER BY l.name COLLATE"
                    " NOCASE, l.link"),
      vocabulary(database) {}

SearchAnswer SearchIndex::search(const SearchRequest& request) {
    const SearchText asked(request.text, tokenizer, request.suggest);
    const Snapshot snapshot(database);
    refresh();
    const bool suggest = request.suggest;
    SearchAnswer answer;
    answer.tracks = find(tracks,
                         {asked.trackExpression(false), asked.trackExpression(!suggest),
                          asked.titleStartExpression()},
                         request.tracks, suggest);
    answer.albums =
        find(albums, {asked.albumExpression(false), asked.albumExpression(!suggest), {}},
             request.albums, suggest);
    answer.artists =
        find(artists, {asked.artistExpression(false), asked.artistExpression(!suggest), {}},
             request.artists, suggest);
    answer.playlists = findPlaylists(asked, request);
    const bool found = answer.tracks.total > 0 || answer.albums.total > 0 ||
                       answer.artists.total > 0 || answer.playlists.total > 0;
    if (!found && !request.suggest) {
        answer.didYouMean = suggestion(request, asked);
    }
    return answer;
}

std::int64_t SearchIndex::count(Index& index, const std::string& expression) {
    if (expression.empty()) {
        return 0;
    }
    const auto known = index.counts.find(expression);
    if (known != index.counts.end()) {
        return known->second;
    }
    Cursor row = index.count.run(expression);
    const std::int64_t rows = row.next() ? row.integer(0) : 0;
    if (index.counts.size() >= countsKept) {
        index.counts.clear();
    }
    index.counts.emplace(expression, rows);
    return rows;
}

FoundPage SearchIndex::find(Index& index, const Expressions& by, const Page& page, bool suggest) {
    FoundPage found;
    found.total = static_cast<int>(count(index, by.count.text));
    if (page.count <= 0 || page.offset >= found.total) {
        return found;
    }
    const int weighed = suggest ? rowsSuggested : rowsWeighed;
    const int rows = suggest ? std::min(page.count, suggestions) : page.count;
    std::vector<Hit> hits;
    std::unordered_set<std::int64_t> seen;
    // What is weighed by one expression comes before what is weighed by the next.
    const auto weigh = [&](const SearchText::Expression& expression, int limit) {
        const auto first = static_cast<std::ptrdiff_t>(hits.size());
        std::vector<std::int64_t> rowsWith;
        for (const std::string& phrase : expression.phrases) {
            rowsWith.push_back(count(index, phrase));
        }
        const Blob rowsBlob = {
            {reinterpret_cast<const char*>(rowsWith.data()), rowsWith.size() * sizeof rowsWith[0]}};
        for (Cursor row = index.rank.run(expression.text, rowsBlob, limit); row.next();) {
            if (seen.insert(row.integer(0)).second) {
                hits.push_back({row.integer(0), row.real(1), popularityOf(index, row.integer(0))});
            }
        }
        std::sort(hits.begin() + first, hits.end(), [](const Hit& left, const Hit& right) {
            if (left.score != right.score) {
                return left.score < right.score;
            }
            return left.popularity != right.popularity ? left.popularity > right.popularity
                                                       : left.row < right.row;
        });
    };
    if (found.total > weighed && !by.preferred.text.empty()) {
        weigh(by.preferred, weighed / 2);
    }
    weigh(by.rank, weighed - static_cast<int>(hits.size()));

    const auto wanted = static_cast<std::size_t>(
        std::min<std::int64_t>(std::int64_t{page.offset} + rows, found.total));
    if (hits.size() < wanted) {
        for (Cursor row = index.list.run(by.count.text); hits.size() < wanted && row.next();) {
            if (seen.insert(row.integer(0)).second) {
                hits.push_back({row.integer(0), 0, 0});
            }
        }
    }
    for (auto place = static_cast<std::size_t>(page.offset); place < std::min(wanted, hits.size());
         ++place) {
        Cursor row = index.link.run(hits[place].row);
        found.ids.push_back(row.next() ? row.id(0).value_or(Id()) : Id());
    }
    return found;
}

FoundPlaylists SearchIndex::findPlaylists(const SearchText& asked, const SearchRequest& request) {
    FoundPlaylists found;
    if (!request.account) {
        return found;
    }
    std::vector<FoundPlaylist> beginnings;
    for (Cursor row = listPlaylists.run(*request.account); row.next();) {
        const std::string name = row.text(2);
        const SearchText::Match match = asked.match(tokenizer.split(name, longestName));
        if (match != SearchText::Match::none) {
            auto& group = match == SearchText::Match::whole ? found.lists : beginnings;
            group.push_back({row.id(0).value_or(Id()), row.text(1), name, row.text(3)});
        }
    }
    std::move(beginnings.begin(), beginnings.end(), std::back_inserter(found.lists));
    found.total = static_cast<int>(found.lists.size());
    const Page& page = request.playlists;
    const int first = std::min(page.offset, found.total);
    const int most = request.suggest ? std::min(page.count, suggestions) : page.count;
    found.lists.erase(found.lists.begin() + first + std::min(most, found.total - first),
                      found.lists.end());
    found.lists.erase(found.lists.begin(), found.lists.begin() + first);
    return found;
}

std::int64_t SearchIndex::popularityOf(const Index& index, std::int64_t row) const {
    const auto known = &index == &tracks ? popularity.find(row) : popularity.end();
    return known == popularity.end() ? 0 : known->second;
}

// What was kept of an earlier state of the catalogue or the accounts goes.
void SearchIndex::refresh() {
    std::int64_t versions[2] = {database.dataVersion(), 0};
    if (Cursor row = accountsVersion.run(); row.next()) {
        versions[1] = row.integer(0);
    }
    if (std::equal(std::begin(versions), std::end(versions), std::begin(seenVersions))) {
        return;
    }
    if (versions[0] != seenVersions[0]) {
        for (Index* index : {&tracks, &albums, &artists}) {
            index->counts.clear();
        }
    }
    popularity.clear();
    for (Cursor row = listPopular.run(); row.next();) {
        popularity[row.integer(0)] = row.integer(1);
    }
    std::copy(std::begin(versions), std::end(versions), std::begin(seenVersions));
}

std::string SearchIndex::suggestion(const SearchRequest& request, const SearchText& asked) {
    const std::vector<SearchText::Word>& words = asked.words();
    vocabulary.refresh(database.dataVersion());
    const auto replaced = [](const std::string& text, const Token& token, const std::string& word) {
        return text.substr(0, token.begin) + word + text.substr(token.end);
    };
    // From the end, so that the places before stay where they are.
    std::string mended = request.text;
    bool allMended = true;
    bool anyUnknown = false;
    for (auto word = words.rbegin(); word != words.rend(); ++word) {
        if (word->prefix ? vocabulary.hasPrefix(word->token.word)
                         : vocabulary.has(word->token.word)) {
            continue;
        }
        anyUnknown = true;
        const std::vector<std::string> near = vocabulary.nearest(word->token.word, 1);
        if (near.empty()) {
            allMended = false;
            break;
        }
        mended = replaced(mended, word->token, near.front());
    }
    if (anyUnknown) {
        return allMended && findsAnything(mended) ? mended : std::string();
    }
    // Every word is one, but not beside the others: one of them may be another.
    std::size_t tried = 0;
    for (const SearchText::Word& word : words) {
        for (const std::string& near : vocabulary.nearest(word.token.word, 3)) {
            if (tried++ == meaningsTried) {
                return {};
            }
            mended = replaced(request.text, word.token, near);
            if (findsAnything(mended)) {
                return mended;
            }
        }
    }
    return {};
}

bool SearchIndex::findsAnything(const std::string& text) {
    const SearchText meant(text, tokenizer, false);
    return count(tracks, meant.trackExpression(false).text) > 0 ||
           count(albums, meant.albumExpression(false).text) > 0 ||
           count(artists, meant.artistExpression(false).text) > 0;
}

}  // namespace sonolet::service
