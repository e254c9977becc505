// What a search finds in a catalogue, and in which order.

#include "TestMusic.h"
#include "accounts/Accounts.h"
#include "catalogue/CatalogueWriter.h"
#include "search/QueryStore.h"

namespace sonolet::test {
namespace {

using namespace service;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Song {
    std::string title;
    std::string artist = "Nobody";
    std::string album = "Nothing";
    int year = 0;
};

class SearchTest : public testing::Test {
protected:
    // Song by song into files 0, 1, ...
    void add(const std::vector<Song>& songs) {
        ScanBatch batch;
        for (const Song& song : songs) {
            ScannedFile file;
            file.name = std::to_string(files++);
            file.tags.emplace();
            file.tags->title = song.title;
            file.tags->artists = {song.artist};
            file.tags->album = song.album;
            file.tags->year = song.year;
            batch.files.push_back(file);
        }
        writer.apply(batch);
    }

    SearchAnswer search(const std::string& text, Page page = {0, 1000}, bool suggest = false) {
        return store.index.search({text, suggest, page, page, page});
    }
    std::vector<std::string> titles(const std::string& text) {
        std::vector<std::string> found;
        for (const Id& id : search(text).tracks.ids) {
            found.push_back(catalogue.track(id)->title);
        }
        return found;
    }
    std::string meant(const std::string& text) { return search(text).didYouMean; }

    // The indexes say what the catalogue says, else this throws.
    static void checkIndexes() {
        Database database(TestMusic::catalogueFile(), Database::Durability::process);
        for (const std::string index : {"track_index", "album_index", "artist_index"}) {
            std::string check = "INSERT INTO " + index;
            check += '(' + index + ", rank) VALUES('integrity-check', 1)";
            database.execute(check.c_str());
        }
    }

    const TestMusic music;
    Accounts accounts{TestMusic::paths().accountsFile()};
    CatalogueWriter writer{TestMusic::catalogueFile()};
    Catalogue catalogue{TestMusic::catalogueFile()};
    QueryStore store{TestMusic::catalogueFile(), TestMusic::paths().accountsFile()};
    int files = 0;
};

TEST_F(SearchTest, RanksByFieldThenByPlays) {
    add({{"One", "Ann", "Harbour"}, {"Two", "Harbour", "X"}, {"Harbour", "Bob", "Y"}});
    EXPECT_THAT(titles("harbour"), ElementsAre("Harbour", "Two", "One"));
    EXPECT_THAT(titles("HARB"), ElementsAre("Harbour", "Two", "One")) << "the last word may go on";
    EXPECT_THAT(titles("harb bob"), IsEmpty()) << "the others may not";
    EXPECT_EQ(search("harb bob", {0, 9}, true).tracks.total, 1) << "while typing they may";

    add({{"Loves", "Cyd", "A"}, {"Love", "Cyd", "A"}, {"Café del Mar", "Ørjan Ünal", "Ångström"}});
    EXPECT_THAT(titles("love"), ElementsAre("Love", "Loves")) << "a whole word is better";
    EXPECT_THAT(titles("cafe angstrom unal"), ElementsAre("Café del Mar"));
    EXPECT_THAT(titles("CAFÉ"), ElementsAre("Café del Mar"));

    add({{"Twin", "Dee", "A"}, {"Twin", "Dee", "B"}});
    const Id second = search("twin").tracks.ids.at(1);
    accounts.recordPlay(accounts.find("listener")->id, second);
    EXPECT_EQ(search("twin").tracks.ids.at(0), second) << "of equals the one that is played";
}

TEST_F(SearchTest, UnderstandsFiltersPhrasesAndYears) {
    add({{"Blue Moon", "Ann Blue", "Red", 1989},
         {"Moon Blue", "Bob", "Blue", 1990},
         {"Red", "AC/DC", "Moon Shot", 1999},
         {"Artist", "Cyd", "Years", 2000},
         {"100%", "O'Neil & Sons", "(Cut)"}});
    std::string many;
    while (many.size() < 10000) {
        many += "blue moon ";
    }
    const std::pair<std::string, std::set<std::string>> table[] = {
        {"Album: blue", {"Moon Blue"}},
        {"track:red", {"Red"}},
        {"\"blue moon\"", {"Blue Moon"}},
        {"artist:\"ann b", {"Blue Moon"}},
        {"\"ann b\"", {}},
        {"ac/dc", {"Red"}},
        {"artist:ac/d", {"Red"}},
        {"year:1990", {"Moon Blue"}},
        {"year:1989-1990 moon", {"Blue Moon", "Moon Blue"}},
        {"year:1990-2999", {"Moon Blue", "Red", "Artist"}},
        {"year:-1989", {"Blue Moon"}},
        {"year:2000-", {"Artist"}},
        {"year:2000-1990", {}},
        {"year:soon", {}},
        {"1990", {}},
        {"artist:blue album:red year:1989 moon", {"Blue Moon"}},
        // What the index gives a meaning of its own, or cannot hold.
        {"blue AND moon", {}},
        {"NEAR(blue moon, 2)", {}},
        {"rank:blue", {}},
        {"' OR 1=1 --", {}},
        {"(cut) + o'neil", {"100%"}},
        {"100%", {"100%"}},
        {"\"ac\"red*", {"Red"}},
        {"^o'neil 🎵", {"100%"}},
        {many, {"Blue Moon", "Moon Blue"}},
        {std::string(10000, 'x') + '"' + '\xff', {}},
    };
    for (const auto& [query, expected] : table) {
        const auto found = titles(query);
        EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected) << query;
    }
    EXPECT_EQ(search("album:blue").albums.total, 1);
    EXPECT_EQ(search("title:red").albums.total, 0);
    EXPECT_EQ(search("artist:a").artists.total, 2) << "Ann Blue and AC/DC";
    EXPECT_EQ(search("year:1990").artists.total, 0);
}

TEST_F(SearchTest, PagesAndTotalsAgreeWithCounting) {
    std::mt19937 random(7);
    const std::vector<std::string> words = {"sun", "sunny", "moon", "star", "sea", "stone", "so"};
    const auto some = [&] { return words[random() % words.size()]; };
    std::vector<Song> songs;
    // Twice as many as are weighed.
    while (songs.size() < 2000) {
        // The number is a word that no query has.
        songs.push_back({some() + ' ' + some() + " n" + std::to_string(songs.size()),
                         some() + ' ' + some(), some(), 1980 + static_cast<int>(random() % 5)});
    }
    add(songs);
    for (const std::string query : {"s", "su", "sun", "moon star", "moon sea su", "sunny"}) {
        const std::string last = query.substr(query.rfind(' ') + 1);
        const std::string first = query.substr(0, query.size() - last.size());
        const auto counted = std::count_if(songs.begin(), songs.end(), [&](const Song& song) {
            const std::string text = ' ' + song.title + ' ' + song.artist + ' ' + song.album + ' ';
            std::istringstream whole(first);
            for (std::string word; whole >> word;) {
                if (text.find(' ' + word + ' ') == std::string::npos) {
                    return false;
                }
            }
            return text.find(' ' + last) != std::string::npos;
        });
        std::set<Id> seen;
        int listed = 0;
        for (int offset = 0; offset < counted + 900; offset += 900) {
            const SearchAnswer answer = search(query, {offset, 900});
            EXPECT_EQ(answer.tracks.total, counted) << query;
            listed += static_cast<int>(answer.tracks.ids.size());
            seen.insert(answer.tracks.ids.begin(), answer.tracks.ids.end());
        }
        EXPECT_EQ(listed, counted) << query;
        EXPECT_EQ(seen.size(), static_cast<std::size_t>(counted)) << query << ": each once";
    }
    EXPECT_THAT(search("sun", {7, 0}).tracks.ids, IsEmpty());
    EXPECT_EQ(search("sun", {0, 1000}, true).tracks.ids.size(), 10U) << "suggestions are few";
    EXPECT_EQ(search("sun", {100000, 5}).tracks.total, search("sun").tracks.total);
}

TEST_F(SearchTest, GuessesWhatWasMeant) {
    add({{"Yesterday", "The Beatles", "Help"},
         {"Imagine", "John Lennon", "Imagine"},
         {"Jon", "Jon Bo", "Bo"}});
    EXPECT_EQ(meant("yesteday"), "yesterday");
    EXPECT_EQ(meant("yesterdya beatles"), "yesterday beatles");
    EXPECT_EQ(meant("artist:\"jon lennon\""), "artist:\"john lennon\"") << "known, not together";
    EXPECT_EQ(meant("  Imagne  LENON "), "  imagine  lennon ") << "the rest stays as it was typed";
    EXPECT_EQ(meant("yester"), "") << "something was found";
    EXPECT_EQ(meant("qqqqqqq"), "") << "nothing is near";
    EXPECT_EQ(meant("yesterday lennon"), "") << "nothing is near that is together";
    EXPECT_EQ(search("yesteday", {0, 9}, true).didYouMean, "") << "not while typing";
}

TEST_F(SearchTest, FollowsTheCatalogue) {
    music.add("a/1.wav", "TITLE=Morning|ARTIST=Ann|ALBUM=First");
    music.add("b/2.wav", "TITLE=Evening|ARTIST=Bob|ALBUM=Second");
    const auto scan = [] { ASSERT_EQ(run(SONOLET_INDEX).status, 0); };
    scan();
    EXPECT_EQ(titles("morning first ann"), std::vector<std::string>{"Morning"});
    music.add("a/1.wav", "TITLE=Noon|ARTIST=Cyd|ALBUM=Third|DATE=1999", 1000);
    scan();
    checkIndexes();
    EXPECT_THAT(titles("morning"), IsEmpty());
    EXPECT_THAT(titles("noon cyd year:1999"), ElementsAre("Noon"));
    EXPECT_EQ(search("ann").artists.total, 0) << "nothing of Ann is left";
    EXPECT_EQ(search("third").albums.total, 1);
    music.move("b", ".b");
    scan();
    checkIndexes();
    EXPECT_EQ(search("bob").artists.total + search("second").albums.total, 0);
    music.move(".b", "c");
    scan();
    checkIndexes();
    EXPECT_THAT(titles("bob"), ElementsAre("Evening"));
    EXPECT_EQ(search("second").albums.total, 1);
    const Ran found = run(SONOLET_INDEX " --search 'title:evning'");
    EXPECT_THAT(found.output, testing::HasSubstr("Did you mean: title:evening"));
}

}  // namespace
}  // namespace sonolet::test
