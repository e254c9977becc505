// Playlists and stars of a server: what either side changes reaches the other, and nothing is lost
// when both do.

#include "../../pages/MusicServer.h"
#include "../Heard.h"
#include "../TestMusic.h"
#include "../TestSession.h"
#include "OtherClient.h"
#include "accounts/ListItems.h"
#include "server/ServerStore.h"
#include "source/Source.h"

namespace sonolet::test {
namespace {

using namespace service;
using testing::HasSubstr;

Id letter(char name) {
    Id id;
    id.bytes[0] = static_cast<unsigned char>(name);
    return id;
}
std::vector<Id> letters(const std::string& names) {
    std::vector<Id> ids;
    std::transform(names.begin(), names.end(), std::back_inserter(ids), letter);
    return ids;
}
std::string namesOf(const std::vector<Id>& ids) {
    std::string names;
    for (const Id& id : ids) {
        names += static_cast<char>(id.bytes[0]);
    }
    return names;
}

TEST(MergedItems, HaveWhatEitherSideHasDone) {
    const struct {
        const char *base, *mine, *theirs, *merged;
    } cases[] = {
        {"", "", "", ""},
        {"abc", "abc", "abc", "abc"},
        {"abc", "ac", "abc", "ac"},
        {"abc", "abc", "bc", "bc"},
        {"abc", "abxc", "abc", "abxc"},
        {"abc", "abcx", "abcy", "abcyx"},
        {"abc", "ac", "ab", "a"},
        {"abc", "cab", "abc", "cab"},
        {"abc", "abc", "cab", "cab"},
        {"abc", "cab", "bac", "cab"},
        {"abc", "cab", "abcd", "cdab"},
        {"abc", "abcx", "xabc", "abcx"},  // the same put in by both is there once
        {"aa", "a", "aaa", "aa"},         // one taken out, one put in
        {"", "ab", "cd", "cdab"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(
            namesOf(mergedItems(letters(each.base), letters(each.mine), letters(each.theirs))),
            each.merged)
            << each.base << ' ' << each.mine << ' ' << each.theirs;
    }
}

// Whatever a list becomes, what stays of it is what it was, and no more moves than must.
TEST(SetItems, KeepsTheEntriesThatStay) {
    const Folder folder;
    Accounts accounts(folder.path("accounts.db"));
    ListStore store(accounts.connection());
    const ListRow list = store.create(accounts.find("listener")->id, "list");
    std::mt19937 random(7);
    std::string before;
    for (int round = 0; round < 200; ++round) {
        std::string after = before.substr(0, random() % 30);
        std::shuffle(after.begin(), after.begin() + static_cast<int>(random() % (after.size() + 1)),
                     random);
        for (unsigned i = random() % 4; i > 0; --i) {
            after.insert(random() % (after.size() + 1), 1, "abcdef"[random() % 6]);
        }
        std::set<std::int64_t> known;
        for (const ListEntry& entry : store.entries(list)) {
            known.insert(entry.id);
        }
        setItems(store, list, letters(after), "listener");
        const std::vector<ListEntry> entries = store.entries(list);
        ASSERT_EQ(namesOf(itemsOf(entries)), after) << before;
        std::size_t stayed = 0;
        for (const ListEntry& entry : entries) {
            stayed += known.count(entry.id);
        }
        std::string common;
        std::string one = before;
        std::string other = after;
        std::sort(one.begin(), one.end());
        std::sort(other.begin(), other.end());
        std::set_intersection(one.begin(), one.end(), other.begin(), other.end(),
                              std::back_inserter(common));
        EXPECT_EQ(stayed, common.size()) << before << " to " << after;
        before = after;
    }
    setItems(store, list, letters("uvwxyz"), "listener");
    const std::int64_t newest = store.log().newest();
    setItems(store, list, letters("vwxuyz"), "listener");
    EXPECT_EQ(store.log().newest(), newest + 1) << "one has moved";
}

// A server with the tracks "Aa" to "Ee", of which the letters stand for them here.
struct ServedLists : testing::Test {
    ServedLists() {
        for (const std::string title : {"Aa", "Bb", "Cc", "Dd", "Ee"}) {
            music.encode(title + ".flac", "flacenc", "TITLE=" + title + "|ARTIST=Ann|ALBUM=Blue");
        }
        server.emplace(state.path("server"), music.path(""));
        // NOLINTBEGIN(concurrency-mt-unsafe): no other thread is there yet
        setenv("SONOLET_SERVER", server->url().c_str(), 1);
        setenv("SONOLET_SERVER_LOOK", "0.1", 1);
        // NOLINTEND(concurrency-mt-unsafe)
        const Outcome made =
            ::run({"/bin/sh", "-c", "cd \"$0\" && supysonic-cli user add ann -p ann",
                   state.path("server")},
                  {{"HOME", state.path("server")}});
        EXPECT_EQ(made.exitCode, 0) << made.errors;
        other.emplace(server->url());
        for (const std::string title : {"Aa", "Bb", "Cc", "Dd", "Ee"}) {
            ids[title[0]] = other->ask("search3?query=" + title)["searchResult3"]["song"]
                                .list()
                                .at(0)["id"]
                                .text();
        }
    }
    ~ServedLists() override {
        session.reset();
        // NOLINTBEGIN(concurrency-mt-unsafe): the session has ended its threads
        unsetenv("SONOLET_SERVER");
        unsetenv("SONOLET_SERVER_LOOK");
        // NOLINTEND(concurrency-mt-unsafe)
    }
    void start() {
        session.reset();
        session.emplace();
        ASSERT_EQ(session->login("listener", "listener", true), SP_ERROR_OK);
        container = sp_session_playlistcontainer(session->get());
    }

    // At the server.
    std::string parameters(const std::string& name, const std::string& songs) const {
        std::string text;
        for (const char song : songs) {
            text += '&' + name + '=' + ids.at(song);
        }
        return text;
    }
    Reply listThere(const std::string& name) const {
        for (const Reply& list : other->ask("getPlaylists")["playlists"]["playlist"].list()) {
            if (list["name"].text() == name) {
                return other->ask("getPlaylist?id=" + list["id"].text())["playlist"];
            }
        }
        return {};
    }
    static std::string initials(const Reply& songs) {
        std::string text;
        for (const Reply& song : songs.list()) {
            text += song["title"].text().substr(0, 1);
        }
        return text;
    }
    std::string songsThere(const std::string& name) const {
        return initials(listThere(name)["entry"]);
    }
    std::string starsThere() const {
        return sorted(initials(other->ask("getStarred2")["starred2"]["song"]));
    }
    std::string idOf(const std::string& name) const { return listThere(name)["id"].text(); }
    static std::string sorted(std::string text) {
        std::sort(text.begin(), text.end());
        return text;
    }

    // Here.
    sp_playlist* list(const std::string& name) const {
        for (int i = 0; i < sp_playlistcontainer_num_playlists(container); ++i) {
            sp_playlist* each = sp_playlistcontainer_playlist(container, i);
            if (sp_playlist_name(each) == name) {
                return each;
            }
        }
        return nullptr;
    }
    static std::string songs(sp_playlist* of) {
        std::string text;
        for (int i = 0; i < sp_playlist_num_tracks(of); ++i) {
            text += sp_track_name(sp_playlist_track(of, i))[0];
        }
        return text;
    }
    std::string songsHere(const std::string& name) const { return songs(list(name)); }
    std::string starsHere() const {
        const std::shared_ptr<sp_playlist> starred(sp_session_starred_create(session->get()),
                                                   sp_playlist_release);
        return sorted(songs(starred.get()));
    }
    std::vector<Id> linksOf(const std::string& names) const {
        ServerStore links(state.path("links.db"));
        std::vector<Id> all;
        for (const char name : names) {
            all.push_back(links.link(SP_LINKTYPE_TRACK, ids.at(name)));
        }
        return all;
    }
    std::shared_ptr<sp_track> track(char name) const {
        return trackOf("spotify:track:" + linksOf({name}).at(0).text());
    }
    void star(char name, bool isStar) {
        const auto held = track(name);
        sp_track* const one[] = {held.get()};
        EXPECT_EQ(sp_track_set_starred(session->get(), one, 1, isStar), SP_ERROR_OK);
    }
    sp_error add(sp_playlist* to, char name, int position) {
        const auto held = track(name);
        sp_track* const one[] = {held.get()};
        return sp_playlist_add_tracks(to, one, 1, position, session->get());
    }
    void until(const std::function<bool()>& condition, const char* what) {
        EXPECT_TRUE(session->until(condition)) << what << '\n' << session->log;
    }
    // The tool, as a user runs it.
    static std::string tool(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONOLET_PLAYLIST};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Outcome outcome = ::run(command, {});
        EXPECT_EQ(outcome.exitCode, 0) << arguments.at(0) << '\n' << outcome.errors;
        return outcome.output;
    }

    const TestMusic music;
    const TestFiles state;
    std::optional<MusicServer> server;
    std::optional<OtherClient> other;
    std::map<char, std::string> ids;
    std::optional<TestSession> session;
    sp_playlistcontainer* container = nullptr;
    Heard heard, inContainer;
};

TEST_F(ServedLists, ChangesOfEitherSideReachTheOther) {
    const OtherClient ann(server->url(), "ann");
    ann.ask("createPlaylist?name=Hers" + parameters("songId", "ED"));
    const std::string hers =
        ann.ask("getPlaylists")["playlists"]["playlist"].list().at(0)["id"].text();
    ann.ask("updatePlaylist?public=true&playlistId=" + hers);
    other->ask("createPlaylist?name=Mix" + parameters("songId", "ABC"));
    other->ask("star?" + parameters("id", "B").substr(1));

    start();
    until([&] { return list("Mix") != nullptr && list("Hers") != nullptr && starsHere() == "B"; },
          "what was there comes");
    EXPECT_EQ(songsHere("Mix"), "ABC");
    EXPECT_EQ(songsHere("Hers"), "ED");
    EXPECT_STREQ(sp_user_canonical_name(sp_playlist_owner(list("Hers"))), "ann");
    EXPECT_EQ(add(list("Hers"), 'A', 0), SP_ERROR_PERMISSION_DENIED);

    // What somebody else does there is told as if it were done here.
    sp_playlist* const mix = list("Mix");
    const std::string id = idOf("Mix");
    sp_playlist_add_callbacks(mix, &heard.ofList, &heard);
    sp_playlistcontainer_add_callbacks(container, &inContainer.ofContainer, &inContainer);
    const struct {
        std::string asked;
        Lines told;
        std::string songs;
    } changes[] = {
        {"updatePlaylist?playlistId=" + id + parameters("songIdToAdd", "DE"),
         {"begin", "added Dd Ee at 3", "state", "done"},
         "ABCDE"},
        {"updatePlaylist?songIndexToRemove=0&songIndexToRemove=3&playlistId=" + id,
         {"begin", "removed 0 3", "state", "done"},
         "BCE"},
        {"createPlaylist?playlistId=" + id + parameters("songId", "EBC"),
         {"begin", "moved 2 to 0", "state", "done"},
         "EBC"},
        {"updatePlaylist?name=Mixed&playlistId=" + id,
         {"begin", "renamed Mixed", "state", "done"},
         "EBC"},
        {"updatePlaylist?comment=blue&playlistId=" + id,
         {"begin", "described blue", "state", "done"},
         "EBC"},
    };
    for (const auto& change : changes) {
        heard.lines.clear();
        other->ask(change.asked);
        until([&] { return heard.lines.size() >= 4; }, change.told[1].c_str());
        EXPECT_EQ(heard.lines, change.told);
        EXPECT_EQ(songs(mix), change.songs);
    }
    EXPECT_EQ(sp_playlist_remove_callbacks(mix, &heard.ofList, &heard), SP_ERROR_OK);
    other->ask("unstar?" + parameters("id", "B").substr(1));
    other->ask("star?" + parameters("id", "CD").substr(1));
    until([&] { return starsHere() == "CD"; }, "their stars");

    // What is done here is done there.
    EXPECT_EQ(add(mix, 'A', 0), SP_ERROR_OK);
    EXPECT_EQ(add(mix, 'D', 4), SP_ERROR_OK);
    star('A', true);
    star('C', false);
    until([&] { return songsThere("Mixed") == "AEBCD" && starsThere() == "AD"; }, "to the server");

    // A playlist goes with whoever deletes it.
    inContainer.lines.clear();
    other->ask("deletePlaylist?id=" + id);
    until([&] { return list("Mixed") == nullptr; }, "deleted there");
    ann.ask("deletePlaylist?id=" + hers);
    until([&] { return list("Hers") == nullptr; }, "deleted by its owner");
    EXPECT_EQ(inContainer.lines.size(), 2U);
    EXPECT_EQ(session->log.find("not changed"), std::string::npos) << session->log;
}

TEST_F(ServedLists, TheToolTellsTheServerAndASessionBesideIt) {
    start();
    tool({"new", "Evening", "--private"});
    tool({"add", "Evening", "Aa", "Bb", "Cc"});
    tool({"describe", "Evening", "after six"});
    tool({"new", "Folder", "--folder"});
    EXPECT_EQ(songsThere("Evening"), "ABC");
    EXPECT_EQ(listThere("Evening")["comment"].text(), "after six");
    EXPECT_FALSE(listThere("Evening")["public"].flag());
    until([&] { return list("Evening") != nullptr && songsHere("Evening") == "ABC"; }, "here");
    tool({"move", "Evening", "2", "0"});
    tool({"rename", "Evening", "Night"});
    EXPECT_EQ(songsThere("Night"), "CAB");
    tool({"remove", "Night", "1"});
    EXPECT_EQ(songsThere("Night"), "CB");
    EXPECT_THAT(tool({"list"}), HasSubstr("Folder"));
    tool({"remove", "Night"});
    EXPECT_FALSE(listThere("Night").exists());
    until([&] { return list("Night") == nullptr; }, "gone");
}

TEST_F(ServedLists, WhatBothHaveChangedIsKeptOfBoth) {
    tool({"new", "Mix"});
    tool({"add", "Mix", "Aa", "Bb", "Cc"});
    tool({"add", "starred", "Aa", "Bb"});
    tool({"new", "Gone"});
    tool({"new", "Doomed"});
    const std::string id = idOf("Mix");
    {
        // As a session leaves them that could not tell the server.
        Accounts accounts(makeSource({})->files(TestMusic::paths()).accounts,
                          Accounts::First::nobody);
        ListStore store(accounts.connection());
        std::map<std::string, ListRow> rows;
        for (const ListEntry& entry :
             store.entries(*store.ofUser("listener", ListKind::container))) {
            const ListRow row = store.find(entry.item).value();
            rows[row.name] = row;
        }
        setItems(store, rows.at("Mix"), linksOf("DBC"), "listener");
        store.rename(rows.at("Mix"), "Mine");
        store.describe(rows.at("Doomed"), "not yet");
        const ListRow starred = store.ofUser("listener", ListKind::starred).value();
        setItems(store, starred, linksOf("BC"), "listener");
    }
    other->ask("updatePlaylist?songIndexToRemove=1&playlistId=" + id);
    other->ask("updatePlaylist?name=Theirs&comment=theirs&playlistId=" + id +
               parameters("songIdToAdd", "E"));
    for (const char* name : {"Gone", "Doomed"}) {
        other->ask("deletePlaylist?id=" + idOf(name));
    }
    other->ask("star?" + parameters("id", "D").substr(1));
    other->ask("unstar?" + parameters("id", "B").substr(1));

    start();
    until(
        [&] { return songsThere("Mine") == "DCE" && starsThere() == "CD" && idOf("Doomed") != ""; },
        "at the server");
    until([&] { return list("Gone") == nullptr; }, "here");
    EXPECT_EQ(songsHere("Mine"), "DCE");
    EXPECT_STREQ(sp_playlist_get_description(list("Mine")), "theirs");
    EXPECT_EQ(listThere("Mine")["comment"].text(), "theirs");
    EXPECT_EQ(starsHere(), "CD");
    EXPECT_EQ(sp_playlistcontainer_num_playlists(container), 2);
    EXPECT_EQ(other->ask("getPlaylists")["playlists"]["playlist"].list().size(), 2U);
}

}  // namespace
}  // namespace sonolet::test
