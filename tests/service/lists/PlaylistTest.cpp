// Playlists, folders and the lists of every user: what is told of them, who may change them, and
// that nothing of them is lost.

#include "Heard.h"
#include "TestMusic.h"
#include "TestSession.h"
#include "accounts/Accounts.h"
#include "accounts/ListStore.h"

namespace sonolet::test {
namespace {

using namespace service;
using testing::HasSubstr;

Lines change(const std::string& line) {
    return {"begin", line, "state", "done"};
}

// The command of another process; its first line.
std::string playlist(const std::string& arguments, int status = 0) {
    const Ran ran = run(SONOLET_PLAYLIST " " + arguments);
    EXPECT_EQ(ran.status, status) << arguments << "\n" << ran.output;
    return ran.output.substr(0, ran.output.find('\n'));
}

// The store as another process sees it.
struct OtherStore {
    Accounts accounts{TestMusic::paths().accountsFile()};
    ListStore lists{accounts.connection()};
    ListRow container = *lists.ofUser("listener", ListKind::container);
    ListRow first() { return *lists.find(lists.entries(container).at(0).item); }
};

struct Handle : std::shared_ptr<sp_playlist> {
    explicit Handle(sp_playlist* list) : shared_ptr(list, sp_playlist_release) {}
    operator sp_playlist*() const { return get(); }  // NOLINT(google-explicit-constructor): as one
};

Lines titles(sp_playlist* list) {
    Lines names;
    for (int index = 0; index < sp_playlist_num_tracks(list); ++index) {
        names.emplace_back(sp_track_name(sp_playlist_track(list, index)));
    }
    return names;
}

struct PlaylistTest : testing::Test {
    PlaylistTest() {
        for (const std::string title : {"First", "Second", "Third"}) {
            music.add("a/" + title + ".wav", "TITLE=" + title);
        }
        EXPECT_EQ(run("echo ann | " SONOLET_USER " add Ann").status, 0);
        start();
    }
    void start(const char* user = "listener") {
        session.reset();
        session.emplace(TestSession::State::Scanned);
        EXPECT_EQ(session->login(user, user), SP_ERROR_OK);
    }
    Handle open(const std::string& link) {
        return Handle(sp_playlist_create(session->get(), linkOf(link).get()));
    }
    void listen(sp_playlist* list, Heard& by) { sp_playlist_add_callbacks(list, &by.ofList, &by); }
    sp_error add(sp_playlist* list, const std::string& title, int position) {
        const auto track = trackOf(TestMusic::link(title));
        sp_track* const tracks[] = {track.get()};
        return sp_playlist_add_tracks(list, tracks, 1, position, session->get());
    }
    // Waits for as many lines and takes them.
    Lines take(Heard& from, std::size_t count = 4) {
        EXPECT_TRUE(session->until([&] { return from.lines.size() >= count; }));
        return std::exchange(from.lines, {});
    }
    Lines takeAfter(const std::string& arguments, std::size_t count = 4) {
        playlist(arguments);
        return take(heard, count);
    }

    const TestMusic music;
    std::optional<TestSession> session;
    Heard heard, second, third;
};

TEST_F(PlaylistTest, TellsEveryHandleOfItsOwnChangesAndThoseOfOthers) {
    const Handle list = open(playlist("new Mix"));
    char link[100] = "";
    const std::shared_ptr<sp_link> made(sp_link_create_from_playlist(list), sp_link_release);
    sp_link_as_string(made.get(), link, sizeof(link));
    const Handle again = open(link);
    listen(list, heard);
    listen(again, second);
    EXPECT_EQ(add(list, "First", 0), SP_ERROR_OK);
    EXPECT_EQ(titles(again), Lines{"First"}) << "seen at once";
    EXPECT_EQ(heard.lines, Lines()) << "told by process_events alone";
    listen(list, third);
    EXPECT_EQ(take(heard), change("added First at 0"));
    EXPECT_EQ(take(second), change("added First at 0"));
    EXPECT_EQ(third.lines, Lines()) << "happened before it listened";
    EXPECT_EQ(sp_playlist_remove_callbacks(list, &third.ofList, &third), SP_ERROR_OK);
    EXPECT_NE(sp_playlist_remove_callbacks(list, &third.ofList, &third), SP_ERROR_OK);

    EXPECT_EQ(takeAfter("add Mix Second Third --at 0 --message hello"),
              change("added Second Third at 0"));
    EXPECT_STREQ(sp_playlist_track_message(list, 1), "hello");
    EXPECT_EQ(sp_playlist_track_message(list, 2), nullptr);
    EXPECT_EQ(takeAfter("message Mix 1 'hear this'"), change("message 1 hear this"));
    EXPECT_STREQ(sp_playlist_track_message(list, 1), "hear this");
    EXPECT_EQ(takeAfter("message Mix 1 ''"), change("message 1 "));
    EXPECT_EQ(sp_playlist_track_message(list, 1), nullptr);
    EXPECT_STREQ(sp_user_canonical_name(sp_playlist_track_creator(list, 1)), "listener");
    EXPECT_GT(sp_playlist_track_create_time(list, 1), 1500000000);
    EXPECT_EQ(takeAfter("move Mix 0 2"), change("moved 0 to 2"));
    EXPECT_EQ(titles(list), (Lines{"Third", "First", "Second"}));
    EXPECT_EQ(takeAfter("remove Mix 0 Second"), change("removed 0 2"));
    EXPECT_EQ(takeAfter("describe Mix 'all of it'"), change("described all of it"));
    EXPECT_STREQ(sp_playlist_get_description(list), "all of it");
    const std::string image = "image Mix spotify:image:" + std::string(38, 'a') + "07";
    EXPECT_EQ(takeAfter(image), change("image 7"));
    EXPECT_EQ(takeAfter("image Mix none"), change("image 0"));
    EXPECT_EQ(takeAfter("rename Mix 'B side'"), change("renamed B side"));
    EXPECT_EQ(sp_playlist_track_set_seen(list, 0, true), SP_ERROR_OK) << "no change";
    EXPECT_EQ(sp_playlist_track_set_seen(list, 0, false), SP_ERROR_OK);
    EXPECT_EQ(take(heard), change("seen 0 no"));
    EXPECT_EQ(third.lines, Lines());
}

TEST_F(PlaylistTest, CallbacksMayRemoveEachOtherAndReleaseWhatCallsThem) {
    Handle list = open(playlist("new Mix"));
    for (Heard* each : {&heard, &second, &third}) {
        listen(list, *each);
    }
    heard.onLine = [&](const std::string& line) {
        if (line == "begin") {
            sp_playlist_remove_callbacks(list, &second.ofList, &second);
            list.reset();
        }
    };
    ASSERT_EQ(add(list, "First", 0), SP_ERROR_OK);
    EXPECT_EQ(take(third), change("added First at 0"));
    EXPECT_EQ(second.lines, Lines());

    list = Handle(sp_session_starred_create(session->get()));
    listen(list, second);
    second.onLine = [&](const std::string& line) {
        if (line == "added First at 0") {
            session->release();
        }
    };
    ASSERT_EQ(add(list, "First", 0), SP_ERROR_OK);
    EXPECT_EQ(take(second, 2), (Lines{"begin", "added First at 0"}));
    EXPECT_EQ(sp_playlist_num_tracks(list), 1) << "what it has read it keeps";
}

TEST_F(PlaylistTest, RefusesWhatIsNotTheUsersToChange) {
    const std::string own = playlist("new Own");
    const std::string shared = playlist("new Shared --collaborative");
    playlist("new Hidden --private");
    playlist("send ann First --message 'for you'");
    const std::string inbox = playlist("show inbox");
    start("ann");
    const Handle list = open(own);
    EXPECT_EQ(add(list, "First", 0), SP_ERROR_PERMISSION_DENIED);
    EXPECT_EQ(add(open("spotify:user:listener:starred"), "First", 0), SP_ERROR_PERMISSION_DENIED);
    EXPECT_EQ(open(inbox.substr(6, inbox.rfind('\t') - 6)), nullptr) << "someone else's";
    EXPECT_EQ(open("spotify:user:nobody:starred"), nullptr);
    EXPECT_EQ(open("spotify:user:ann:playlist:0000000000000000000000"), nullptr);
    const Handle common = open(shared);
    EXPECT_EQ(add(common, "Second", 1), SP_ERROR_INDEX_OUT_OF_RANGE);
    EXPECT_EQ(add(common, "Second", 0), SP_ERROR_OK);
    EXPECT_STREQ(sp_user_canonical_name(sp_playlist_track_creator(common, 0)), "ann");
    EXPECT_FALSE(sp_playlist_track_seen(common, 0)) << "new to its owner";
    {
        OtherStore other;
        const ListRow row = *other.lists.find(other.lists.entries(other.container).at(1).item);
        other.lists.share(row, true, false);
        EXPECT_EQ(add(common, "Third", 0), SP_ERROR_PERMISSION_DENIED) << "not any more";
        other.lists.share(row, true, true);
        EXPECT_EQ(sp_playlist_track_set_seen(common, 0, true), SP_ERROR_OK);
    }
    const Handle received(sp_session_inbox_create(session->get()));
    ASSERT_EQ(titles(received), Lines{"First"});
    EXPECT_STREQ(sp_playlist_track_message(received, 0), "for you");
    EXPECT_STREQ(sp_user_canonical_name(sp_playlist_track_creator(received, 0)), "listener");
    EXPECT_THAT(playlist("--user ann rename " + own + " Mine", 1), HasSubstr("listener's"));
    EXPECT_THAT(playlist("add Own 'No such title'", 1), HasSubstr("\"No such title\""));
    EXPECT_THAT(playlist("rename Own", 2), HasSubstr("arguments"));

    const std::shared_ptr<sp_playlistcontainer> published(
        sp_session_publishedcontainer_for_user_create(session->get(), "Listener"),
        sp_playlistcontainer_release);
    ASSERT_EQ(sp_playlistcontainer_num_playlists(published.get()), 2);
    EXPECT_EQ(sp_playlistcontainer_playlist(published.get(), 1), common);
    sp_playlistcontainer_add_callbacks(published.get(), &heard.ofContainer, &heard);
    EXPECT_EQ(takeAfter("remove Own", 2), (Lines{"loaded", "removed Own 0"}));
}

TEST_F(PlaylistTest, ContainersHaveFoldersAndFollowers) {
    sp_playlistcontainer* all = sp_session_playlistcontainer(session->get());
    sp_playlistcontainer_add_callbacks(all, &heard.ofContainer, &heard);
    EXPECT_EQ(takeAfter("new Outside", 2), (Lines{"loaded", "added Outside 0"}));
    EXPECT_EQ(takeAfter("new Rock --folder", 2), (Lines{"added  1", "added  2"}));
    EXPECT_EQ(takeAfter("new Inside --in Rock", 1), Lines{"added Inside 2"});
    std::string types;
    for (int index = 0; index < 5; ++index) {
        types += std::to_string(sp_playlistcontainer_playlist_type(all, index));
    }
    EXPECT_EQ(types, "01023");
    char name[50] = "";
    EXPECT_EQ(sp_playlistcontainer_playlist_folder_name(all, 1, name, 3), SP_ERROR_OK);
    EXPECT_STREQ(name, "Ro");
    EXPECT_NE(sp_playlistcontainer_playlist_folder_name(all, 0, name, 50), SP_ERROR_OK);
    EXPECT_NE(sp_playlistcontainer_playlist_folder_id(all, 1), 0U);
    EXPECT_EQ(sp_playlistcontainer_playlist_folder_id(all, 1),
              sp_playlistcontainer_playlist_folder_id(all, 3));
    EXPECT_FALSE(sp_playlist_is_loaded(sp_playlistcontainer_playlist(all, 1)));
    EXPECT_EQ(takeAfter("move Outside 2", 1), Lines{"moved Outside 0 2"});
    EXPECT_EQ(takeAfter("remove Inside", 1), Lines{"removed Inside 1"});

    const std::string link = playlist("--user ann new Theirs");
    const Handle theirs = open(link);
    listen(theirs, second);
    EXPECT_EQ(sp_playlistcontainer_add_playlist(all, linkOf(link).get()), theirs);
    EXPECT_EQ(sp_playlistcontainer_add_playlist(all, linkOf(link).get()), nullptr) << "again";
    EXPECT_EQ(take(second, 1), Lines{"subscribers 1"});
    EXPECT_EQ(heard.lines, Lines{"added Theirs 3"});
    sp_subscribers* subscribers = sp_playlist_subscribers(theirs);
    EXPECT_STREQ(subscribers->subscribers[0], "listener");
    EXPECT_EQ(sp_playlist_subscribers_free(subscribers), SP_ERROR_OK);
    EXPECT_EQ(sp_playlist_update_subscribers(session->get(), theirs), SP_ERROR_OK);
    EXPECT_EQ(take(second, 1), Lines{"subscribers 1"});

    listen(sp_playlistcontainer_playlist(all, 1), third);
    const std::string shown = playlist("show Outside");
    playlist("--user ann follow " + shown.substr(8, shown.rfind('\t') - 8));
    EXPECT_EQ(take(third, 1), Lines{"subscribers 1"});
    EXPECT_EQ(run(SONOLET_USER " remove ann").status, 0);
    EXPECT_EQ(take(third, 1), Lines{"subscribers 0"});
    EXPECT_EQ(take(heard, 2), (Lines{"added Theirs 3", "removed Theirs 3"})) << "with their owner";
    EXPECT_EQ(takeAfter("remove Rock/", 2), (Lines{"removed  2", "removed  0"}));
    EXPECT_EQ(sp_playlistcontainer_num_playlists(all), 1) << "what was in it stays";
}

TEST_F(PlaylistTest, SearchesFindThemByName) {
    const std::string rock = playlist("new 'Rock mix'");
    playlist("image 'Rock mix' spotify:image:" + std::string(40, 'a'));
    playlist("new 'a Mix' --private");
    playlist("new 'Gone mix'");
    playlist("remove 'Gone mix'");
    playlist("--user ann new Mixtape");
    playlist("--user ann new 'Mix of mine' --private");
    // The names on the page, and how many there are.
    const auto search = [&](const char* query, int offset = 0, int count = 9) {
        const auto made = session->found(query, offset, count);
        Lines found;
        for (int index = 0; index < sp_search_num_playlists(made.get()); ++index) {
            found.emplace_back(sp_search_playlist_name(made.get(), index));
            sp_playlist* list = sp_search_playlist(made.get(), index);
            EXPECT_EQ(found.back(), sp_playlist_name(list));
            EXPECT_EQ(list, open(sp_search_playlist_uri(made.get(), index)));
            const std::string image = sp_search_playlist_image_uri(made.get(), index);
            EXPECT_EQ(image.size(), list == open(rock) ? 54U : 0U) << image;
        }
        EXPECT_EQ(sp_search_playlist(made.get(), sp_search_num_playlists(made.get())), nullptr);
        EXPECT_EQ(sp_search_playlist_name(made.get(), -1), nullptr);
        EXPECT_STREQ(sp_search_did_you_mean(made.get()), "");
        found.push_back(std::to_string(sp_search_total_playlists(made.get())));
        return found;
    };
    EXPECT_EQ(search("MIX"), (Lines{"a Mix", "Rock mix", "Mixtape", "3"}));
    EXPECT_EQ(search("mix", 1, 1), (Lines{"Rock mix", "3"}));
    EXPECT_EQ(search("mix", 5, 1), Lines{"3"});
    EXPECT_EQ(search("\"rock mix\" r"), (Lines{"Rock mix", "1"}));
    EXPECT_EQ(search("\"mix rock\""), Lines{"0"});
    EXPECT_EQ(search("title:mix"), Lines{"0"});
    sp_session_logout(session->get());
    EXPECT_EQ(search("mix"), Lines{"0"}) << "whose?";
}

TEST_F(PlaylistTest, StarsAreTheEntriesOfTheStarredList) {
    Handle starred(sp_session_starred_create(session->get()));
    listen(starred, heard);
    const auto first = trackOf(TestMusic::link("First"));
    sp_track* track = first.get();
    EXPECT_EQ(sp_track_set_starred(session->get(), &track, 1, true), SP_ERROR_OK);
    EXPECT_EQ(add(starred, "First", 0), SP_ERROR_OK) << "a star is given once";
    EXPECT_EQ(titles(starred), Lines{"First"});
    EXPECT_EQ(takeAfter("remove starred First", 8).at(5), "removed 0");
    EXPECT_FALSE(sp_track_is_starred(session->get(), track));
    session.reset();

    // As an earlier service kept them.
    Database old(TestMusic::paths().accountsFile(), Database::Durability::power);
    old.execute("DROP TRIGGER lists_for_account; DROP VIEW stars; DROP TABLE list_entries;"
                "DROP TABLE lists; DROP TABLE list_changes; PRAGMA user_version = 2;"
                "CREATE TABLE stars(account_id, track, time)");
    Statement(old, "INSERT INTO stars SELECT id, ?1, 5 FROM accounts WHERE name = 'listener'")
        .execute(*Id::fromText(TestMusic::link("Third").substr(14)));
    start();
    starred = Handle(sp_session_starred_for_user_create(session->get(), "listener"));
    EXPECT_EQ(titles(starred), Lines{"Third"});
    EXPECT_EQ(sp_playlist_track_create_time(starred, 0), 5);
}

TEST_F(PlaylistTest, PlaylistFilesOfTheMusicBecomePlaylists) {
    const std::string outside = music.stateFolder() + "/secret.m3u8";
    std::ofstream(outside) << "a/First.wav\n";
    const std::string absolute = music.path("a/Third.wav");
    music.write("a/mixed.m3u8", "\xef\xbb\xbf#EXTM3U\r\n#PLAYLIST: Evening\r\n#EXTINF:1,x\r\n"
                                "First.wav\r\n../a/Second.wav\r\n../../a/Third.wav\r\n"
                                "/etc/passwd\r\nhttp://example.org/a.mp3\r\ngone.wav\r\n" +
                                    absolute + "\r\n");
    music.write("numbers.PLS", "[playlist]\nFile10=a/First.wav\nFile2=file://" + absolute +
                                   "\nNumberOfEntries=2\n");
    music.write("bad.pls", "File1=a/First.wav\n");
    music.write("bad.m3u", "caf\xe9.wav\n");
    std::string whole;
    Lines many;
    for (int place = 0; place < 2500; ++place) {
        many.emplace_back(place % 3 == 0 ? "First" : "Second");
        whole += "a/" + many.back() + ".wav\n";
    }
    many.emplace_back("z");
    music.write("z.m3u", whole);
    std::string tooLong;
    while (tooLong.size() < 200002) {
        tooLong += "x\n";
    }
    music.write("zz.m3u", tooLong);
    std::filesystem::create_symlink(outside, music.path("link.m3u8"));
    const auto lists = [&] {
        start();
        std::vector<Lines> found;
        sp_playlistcontainer* all = sp_session_playlistcontainer(session->get());
        for (int index = 0; index < sp_playlistcontainer_num_playlists(all); ++index) {
            sp_playlist* list = sp_playlistcontainer_playlist(all, index);
            found.push_back(titles(list));
            found.back().emplace_back(sp_playlist_name(list));
        }
        return found;
    };
    const Lines evening = {"First", "Second", "Third", "Evening"};
    EXPECT_EQ(lists(), (std::vector<Lines>{evening, {"Third", "First", "numbers"}, many}));
    for (const char* line : {"mixed.m3u8: 4 of 7 entries",
                             "/bad.pls: ", "/bad.m3u: ", "/link.m3u8: it is a symbolic link",
                             "/zz.m3u: it has more than 100000 entries"}) {
        EXPECT_THAT(session->log, HasSubstr(line));
    }
    playlist("export Evening " + music.path("a/z.m3u8"));
    playlist("remove Evening 0 1");
    music.write("numbers.PLS", "[playlist]\nFile1=a/Second.wav\n");
    const std::vector<Lines> later = {{"Third", "Evening"}, {"Second", "numbers"}, many, evening};
    EXPECT_EQ(lists(), later) << "what the user changes stays while the file does";
    std::filesystem::remove(music.path("a/z.m3u8"));
    EXPECT_EQ(lists().size(), 3U);
}

TEST_F(PlaylistTest, ListsRestWhileNobodyIsLoggedInAndCatchUpLater) {
    const Handle list = open(playlist("new Mix"));
    listen(list, heard);
    EXPECT_EQ(takeAfter("add Mix First Second"), change("added First Second at 0"));
    ASSERT_EQ(sp_session_logout(session->get()), SP_ERROR_OK);
    ASSERT_TRUE(session->untilHeard("logged_out"));
    EXPECT_EQ(sp_session_playlistcontainer(session->get()), nullptr);
    EXPECT_EQ(sp_session_starred_create(session->get()), nullptr);
    EXPECT_EQ(add(list, "Third", 0), SP_ERROR_PERMISSION_DENIED);
    playlist("add Mix Third");
    EXPECT_EQ(titles(list), (Lines{"First", "Second"}));
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    EXPECT_EQ(take(heard), change("added Third at 2"));

    ASSERT_EQ(sp_session_logout(session->get()), SP_ERROR_OK);
    playlist("remove Mix Second");
    playlist("message Mix 0 late");
    OtherStore other;
    other.lists.together([&] {
        for (int moreThanTheLogKeeps = 10600; moreThanTheLogKeeps > 0; --moreThanTheLogKeeps) {
            other.lists.describe(other.container, "x");
        }
    });
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    EXPECT_EQ(take(heard, 9), (Lines{"subscribers 0", "begin", "removed 1", "state", "done",
                                     "begin", "message 0 late", "state", "done"}));
    EXPECT_EQ(titles(list), (Lines{"First", "Third"}));
}

TEST_F(PlaylistTest, AKilledWriterLosesNothingThatItConfirmed) {
    playlist("new Mix");
    session.reset();
    const auto kept = [] {
        OtherStore store;
        return store.lists.entries(store.first());
    };
    for (std::size_t round = 1; round <= 6; ++round) {
        const auto before = kept();
        std::optional<OtherStore> store;
        const std::size_t confirmed = killDuring(40 * round, [&] {
            if (!store) {
                store.emplace();
            }
            // Always at one place, so that entries have to give way.
            const std::int64_t place = before.empty() ? 0 : before.back().id;
            store->lists.insert(store->first(), place, {NewEntry()}, "x");
        });
        EXPECT_GE(confirmed, 40 * round);
        EXPECT_GE(kept().size(), before.size() + confirmed);
        EXPECT_LE(kept().size(), before.size() + confirmed + 1);
    }
}

// What SQLite's machine did for `action`: a measure that knows no clock.
std::int64_t stepsOf(Database& database, const std::function<void()>& action) {
    std::int64_t steps = 0;
    const auto count = [](unsigned, void* total, void* statement, void*) {
        *static_cast<std::int64_t*>(total) += sqlite3_stmt_status(
            static_cast<sqlite3_stmt*>(statement), SQLITE_STMTSTATUS_VM_STEP, 1);
        return 0;
    };
    sqlite3_trace_v2(database.handle(), SQLITE_TRACE_PROFILE, count, &steps);
    action();
    sqlite3_trace_v2(database.handle(), 0, nullptr, nullptr);
    return steps;
}

TEST_F(PlaylistTest, TenThousandTracksCostWhatIsAskedOfThem) {
    std::vector<std::int64_t> costs[2];
    for (const std::size_t size : {1000, 10000}) {
        OtherStore store;
        ListStore& lists = store.lists;
        const ListRow list = lists.create(store.container.ownerId, "Long");
        std::vector<std::int64_t> ids;
        const auto insert = [&] { return lists.insert(list, ids[size / 2], {NewEntry()}, "x"); };
        const std::function<void()> actions[] = {
            [&] { ids = lists.insert(list, 0, std::vector<NewEntry>(size), "x"); },
            [&] { EXPECT_EQ(lists.entries(list).size(), size); },
            [&] {
                const auto made = insert();
                lists.move(list, made, ids[3]);
                lists.remove(list, made);
            },
            [&] {
                for (int time = 0; time < 500; ++time) {
                    insert();
                }
            }};
        for (const auto& action : actions) {
            costs[size / 10000].push_back(stepsOf(store.accounts.connection(), action));
        }
    }
    const std::pair<const char*, int> growth[] = {
        {"fill", 11}, {"open", 11}, {"change", 2}, {"insert 500 times at one place", 2}};
    for (std::size_t index = 0; index < 4; ++index) {
        std::cout << growth[index].first << ": " << costs[0][index] << " steps in 1,000 tracks, "
                  << costs[1][index] << " in 10,000\n";
        EXPECT_GT(costs[0][index], 10);
        EXPECT_LT(costs[1][index], growth[index].second * costs[0][index]);
    }
}

}  // namespace
}  // namespace sonolet::test
