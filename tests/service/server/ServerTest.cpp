#include "OneSong.h"
#include "UntrustedServer.h"
#include "server/Download.h"
#include "server/ServerStore.h"

namespace sonolet::service {
namespace {

using namespace sonolet::test;
using testing::HasSubstr;

struct ServerTest : OneSong {};

TEST_F(ServerTest, LogsInByTokenAndShowsSearchesAndPlays) {
    TestSession session;
    EXPECT_EQ(session.login("ann", "wrong"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(server.count("ping"), 1U) << "some servers count what is wrong";
    ASSERT_EQ(session.login("ann", "s\xc3\xa9same", true), SP_ERROR_OK);
    EXPECT_EQ(session.loginWith(session.blob, "ann"), SP_ERROR_OK);

    const auto found = session.found("1999");
    ASSERT_EQ(sp_search_num_tracks(found.get()), 1);
    sp_track* track = sp_search_track(found.get(), 0);
    EXPECT_STREQ(sp_track_name(track), "1999");
    EXPECT_STREQ(sp_album_name(sp_track_album(track)), "Blue");
    EXPECT_EQ(sp_track_duration(track), 2000);

    // Cut off every 100,000 bytes, it comes whole.
    most = 100000;
    ASSERT_EQ(sp_session_player_load(session.get(), track), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session.get(), true), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return session.ended.load(); }));
    EXPECT_TRUE(session.delivered == sound);
    EXPECT_GE(server.count("download"), 4U);

    EXPECT_TRUE(session.until([&] { return server.count("scrobble") == 2; }));

    // While it is away, what was seen is found and what was heard is played.
    server.answerAll("HTTP/1.1 503 Away\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(ask(session, "ann"), SP_ERROR_OTHER_TRANSIENT) << "that is how it is learnt";
    EXPECT_EQ(sp_session_connectionstate(session.get()), SP_CONNECTION_STATE_DISCONNECTED);
    EXPECT_EQ(sp_search_num_tracks(session.found("1999 ann").get()), 1);
    session.delivered.clear();
    session.ended = false;
    ASSERT_EQ(sp_session_player_seek(session.get(), 1000), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session.get(), true), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return session.ended.load(); }));
    EXPECT_EQ(session.delivered.size(), 88200U);

    // What has ended is a play though no event is processed any more. Who is remembered is let in
    // without it, and nobody else.
    session.release();
    EXPECT_EQ(plays, "7 false;7 true;");
    // On a long journey.
    constexpr int heard = 350;
    ServerStore store(storeFiles().at(0));
    store.together([&] {
        for (int number = 0; number < heard; ++number) {
            store.addPlay(Id::digest({"some"}), number);
        }
    });
    TestSession later;
    EXPECT_EQ(later.answered(sp_session_relogin(later.get())), SP_ERROR_OK);
    EXPECT_EQ(later.login("ann", "wrong"), SP_ERROR_OTHER_TRANSIENT);
    EXPECT_EQ(later.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
    const std::size_t told = server.count("scrobble");
    server.behave();
    EXPECT_TRUE(later.until(
        [&] { return sp_session_connectionstate(later.get()) == SP_CONNECTION_STATE_LOGGED_IN; }));
    EXPECT_THAT(later.log, HasSubstr("is back"));
    EXPECT_TRUE(later.until([&] { return server.count("scrobble") > told + heard; }))
        << "what was played without it is told later";
    EXPECT_EQ(later.log.find("same"), std::string::npos) << "no password in a line";
}

// What was asked before the loss may be answered after it.
TEST_F(ServerTest, ALateAnswerDoesNotBringTheConnectionBack) {
    TestSession session;
    ASSERT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
    const auto found = session.found("1999");
    server.answer("scrobble", [](const std::string&) { return std::string(); });
    ASSERT_EQ(sp_session_player_load(session.get(), sp_search_track(found.get(), 0)), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session.get(), true), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return session.ended && server.count("scrobble") == 1; }));

    server.answerAll("HTTP/1.1 503 Away\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(ask(session, "ann"), SP_ERROR_OTHER_TRANSIENT);
    server.answerLate(BadServer::envelope(""));
    ASSERT_TRUE(session.until([&] { return server.count("scrobble") == 2; })) << "the play is next";
    EXPECT_EQ(sp_session_connectionstate(session.get()), SP_CONNECTION_STATE_DISCONNECTED);
    EXPECT_EQ(session.log.find("is back"), std::string::npos);
}

TEST_F(ServerTest, EachFailureHasItsNumberAndEndsInTime) {
    const std::string cut = BadServer::envelope("").substr(0, 120);
    const struct {
        const char* what;
        std::string bytes;
        sp_error login;
        sp_error query;
        bool away;
    } cases[] = {
        // Who is refused is logged in no more, which answers everything.
        {"wrong user", BadServer::failure(40), SP_ERROR_BAD_USERNAME_OR_PASSWORD,
         SP_ERROR_OTHER_TRANSIENT, false},
        {"too old", BadServer::failure(20), SP_ERROR_CLIENT_TOO_OLD, SP_ERROR_CLIENT_TOO_OLD,
         false},
        {"unpaid", BadServer::failure(60), SP_ERROR_USER_NEEDS_PREMIUM, SP_ERROR_USER_NEEDS_PREMIUM,
         false},
        {"401", BadServer::reply("", "401 No"), SP_ERROR_BAD_USERNAME_OR_PASSWORD,
         SP_ERROR_OTHER_TRANSIENT, false},
        {"403", BadServer::reply("", "403 No", "text/html"), SP_ERROR_ACCESS_DENIED,
         SP_ERROR_ACCESS_DENIED, false},
        {"404", BadServer::reply("<p>", "404 No", "text/html"), SP_ERROR_OTHER_PERMANENT,
         SP_ERROR_OTHER_PERMANENT, false},
        {"429", BadServer::reply("", "429 Slowly", "text/html"), SP_ERROR_OTHER_TRANSIENT,
         SP_ERROR_OTHER_TRANSIENT, false},
        {"wrong JSON", BadServer::reply("{\"subsonic-response\":"), SP_ERROR_OTHER_TRANSIENT,
         SP_ERROR_OTHER_TRANSIENT, false},
        {"too deep", BadServer::reply(std::string(1 << 20, '[')), SP_ERROR_OTHER_TRANSIENT,
         SP_ERROR_OTHER_TRANSIENT, false},
        {"moved", BadServer::reply("", "302 Moved", "text/html", "Location: /other\r\n"),
         SP_ERROR_UNABLE_TO_CONTACT_SERVER, SP_ERROR_UNABLE_TO_CONTACT_SERVER, false},
        {"501", BadServer::reply("", "501 No", "text/html"), SP_ERROR_OTHER_PERMANENT,
         SP_ERROR_OTHER_PERMANENT, false},
        {"500", BadServer::reply("", "500 Oh", "text/html"), SP_ERROR_OTHER_TRANSIENT,
         SP_ERROR_OTHER_TRANSIENT, true},
        {"cut", cut, SP_ERROR_OTHER_TRANSIENT, SP_ERROR_OTHER_TRANSIENT, true},
        {"silence", "", SP_ERROR_TIMEOUT, SP_ERROR_TIMEOUT, true},
    };
    for (const auto& bad : cases) {
        SCOPED_TRACE(bad.what);
        server.behave();
        bePatient(bad.bytes.empty() ? "2" : "60");
        TestSession session;
        server.answerAll(bad.bytes);
        EXPECT_EQ(session.login("ann", "s\xc3\xa9same"), bad.login);
        EXPECT_THAT(session.log, HasSubstr("Login failed: "));
        server.behave();
        ASSERT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
        server.answerAll(bad.bytes);
        EXPECT_EQ(ask(session, "1999"), bad.query);
        EXPECT_EQ(sp_session_connectionstate(session.get()) == SP_CONNECTION_STATE_DISCONNECTED,
                  bad.away);
        const bool expelled = bad.login == SP_ERROR_BAD_USERNAME_OR_PASSWORD;
        EXPECT_TRUE(!expelled || session.untilHeard("logged_out"));
        EXPECT_THAT(session.log,
                    HasSubstr(expelled ? "is logged in no more" : "A query was not answered: "));
        if (bad.away) {
            server.behave();
            EXPECT_TRUE(session.until([&] {
                return sp_session_connectionstate(session.get()) == SP_CONNECTION_STATE_LOGGED_IN;
            }));
        }
        // Something is under way when it ends, and waits for nothing.
        server.answerAll("");
        const auto asked =
            std::shared_ptr<sp_search>(sp_search_create(session.get(), "more", 0, 9, 0, 9, 0, 9, 0,
                                                        9, SP_SEARCH_STANDARD, nullptr, nullptr),
                                       sp_search_release);
        session.release();
        EXPECT_TRUE(sp_search_is_loaded(asked.get()));
    }
}

TEST_F(ServerTest, WhatCannotBeReachedHasItsNumberItsEventAndItsLine) {
    const UntrustedServer untrusted(files.path("."));
    const struct {
        std::string url;
        sp_error error;
        const char* line;
    } cases[] = {
        {"http://-.invalid", SP_ERROR_HOST_NOT_FOUND, "http://-.invalid: "},
        {"http://127.0.0.1:1", SP_ERROR_UNABLE_TO_CONTACT_SERVER, "refused"},
        {untrusted.url(), SP_ERROR_UNABLE_TO_CONTACT_SERVER, "certificate"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.url);
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no session is there
        setenv("SONOLET_SERVER", each.url.c_str(), 1);
        std::optional<TestSession> session(std::in_place);
        EXPECT_EQ(session->login("ann", "s\xc3\xa9same"), each.error);
        EXPECT_THAT(session->log, HasSubstr("Login failed: "));
        EXPECT_THAT(session->log, HasSubstr(each.line));
        EXPECT_EQ(sp_session_connectionstate(session->get()), SP_CONNECTION_STATE_LOGGED_OUT);
        session.reset();
        // Who was remembered before is let in, and told.
        for (const std::string& store : storeFiles()) {
            ServerStore(store).setSetting("remembered", "ann\nsaltsalt\n0123456789abcdef");
        }
        session.emplace();
        EXPECT_EQ(session->answered(sp_session_relogin(session->get())), SP_ERROR_OK);
        EXPECT_TRUE(session->untilHeard("connection " + std::to_string(each.error)));
        EXPECT_EQ(sp_session_connectionstate(session->get()), SP_CONNECTION_STATE_DISCONNECTED);
        EXPECT_THAT(session->log, HasSubstr("The connection is lost: "));
    }
}

TEST_F(ServerTest, APasswordGoesWhereNobodyReadsItAndIsWrittenNowhere) {
    const std::string password = "s\xc3\xa9same";
    const std::string here = server.url();
    const std::string there = std::string(here).replace(here.find("127.0.0.1"), 9, "0.0.0.0");
    const struct {
        int code;  // of a server that knows no tokens
        std::string url;
        const char* allowed;
        sp_error error;
    } cases[] = {
        {10, here, "", SP_ERROR_OK},   {41, here, "", SP_ERROR_OK},
        {42, here, "", SP_ERROR_OK},   {10, there, "", SP_ERROR_ACCESS_DENIED},
        {10, there, "1", SP_ERROR_OK}, {40, here, "1", SP_ERROR_BAD_USERNAME_OR_PASSWORD},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.url + each.allowed + ' ' + std::to_string(each.code));
        std::atomic<int> sent{0};
        server.answer("ping", [&](const std::string& head) {
            const std::string plain = BadServer::parameter(head, "p");
            sent += plain.empty() ? 0 : 1;
            return plain.empty()                     ? BadServer::failure(each.code)
                   : plain == "enc:" + hex(password) ? BadServer::envelope("")
                                                     : BadServer::failure(40);
        });
        // NOLINTBEGIN(concurrency-mt-unsafe): no session is there
        setenv("SONOLET_SERVER", each.url.c_str(), 1);
        setenv("SONOLET_SERVER_PLAIN", each.allowed, 1);
        // NOLINTEND(concurrency-mt-unsafe)
        TestSession session;
        EXPECT_EQ(session.login("ann", password.c_str(), true), each.error);
        EXPECT_EQ(sent, each.error == SP_ERROR_OK ? 1 : 0);
        EXPECT_EQ(session.answered(sp_session_relogin(session.get())),
                  each.error == SP_ERROR_OK ? SP_ERROR_OK : SP_ERROR_NO_CREDENTIALS);
        const std::filesystem::recursive_directory_iterator state(music.stateFolder());
        for (const auto& entry : state) {
            if (!entry.is_regular_file()) {
                continue;
            }
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
            for (const std::string& secret : {password, hex(password), session.blob}) {
                EXPECT_TRUE(secret.empty() || bytes.find(secret) == std::string::npos)
                    << entry.path();
            }
        }
    }
}

TEST_F(ServerTest, ALinkIsAskedForAndLeadsBack) {
    ServerStore store(files.path("store.db"));
    const std::string uuid = "84e47682-111d-4767-a20f-6f9f452fa1da";
    EXPECT_EQ(store.link(SP_LINKTYPE_TRACK, uuid).text(), "42LoupOPY97FsnIrF3aWH8");
    for (const char* id :
         {"84e47682-111d-4767-a20f-6f9f452fa1da", "7", "al-12",
          "84E47682-111D-4767-A20F-6F9F452FA1DA", "84e47682111d4767a20f6f9f452fa1da"}) {
        EXPECT_EQ(store.serverId(SP_LINKTYPE_TRACK, store.link(SP_LINKTYPE_TRACK, id)), id);
    }
    EXPECT_NE(store.link(SP_LINKTYPE_TRACK, "7"), store.link(SP_LINKTYPE_ALBUM, "7"));

    TestSession session;
    const auto seven = trackOf("spotify:track:" + store.link(SP_LINKTYPE_TRACK, uuid).text());
    EXPECT_EQ(sp_track_error(seven.get()), SP_ERROR_IS_LOADING) << "nobody is logged in";
    ASSERT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
    EXPECT_TRUE(
        session.until([&] { return sp_track_error(seven.get()) == SP_ERROR_OTHER_PERMANENT; }));
    EXPECT_EQ(server.count("getSong"), 1U);

    // What it refuses is as good as not there; where it has no time it is asked again.
    const std::string eight = "84e47682-111d-4767-a20f-6f9f452fa1d8";
    const std::string nine = "84e47682-111d-4767-a20f-6f9f452fa1d9";
    const auto asked = std::make_shared<std::atomic<int>>(0);
    server.answer("getSong", [=](const std::string& head) {
        if (BadServer::parameter(head, "id") == eight) {
            return BadServer::failure(50);
        }
        return ++*asked == 1 ? BadServer::reply("", "429 Slowly", "text/html")
                             : BadServer::envelope(R"("song":{"id":")" + nine +
                                                   R"(","title":"Late","album":"Blue"})");
    });
    const auto late = trackOf("spotify:track:" + store.link(SP_LINKTYPE_TRACK, nine).text());
    const auto refused = trackOf("spotify:track:" + store.link(SP_LINKTYPE_TRACK, eight).text());
    EXPECT_EQ(sp_track_error(late.get()), SP_ERROR_IS_LOADING);
    EXPECT_TRUE(
        session.until([&] { return sp_track_error(refused.get()) == SP_ERROR_OTHER_PERMANENT; }));
    EXPECT_TRUE(session.until([&] { return sp_track_error(late.get()) == SP_ERROR_OK; }));
}

TEST_F(ServerTest, OfVeryManyUsersSomeAreFriendsAndTheLogSaysSo) {
    server.answer("getUsers", [](const std::string&) {
        std::string users;
        for (int number = 0; number <= 1000; ++number) {
            users +=
                (number == 0 ? "" : ",") + (R"({"username":"u)" + std::to_string(number) + "\"}");
        }
        return BadServer::envelope(R"("users":{"user":[)" + users + "]}");
    });
    TestSession session;
    ASSERT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
    EXPECT_TRUE(session.until([&] { return sp_session_num_friends(session.get()) == 1000; }));
    EXPECT_TRUE(session.until(
        [&] { return session.log.find("more than 1000 users") != std::string::npos; }));
}

// A list of 120 songs is put in another order, which takes three requests; the server goes after
// the first. Then it refuses one that is added.
TEST_F(ServerTest, AChangeIsSentUntilItIsTakenOrRefused) {
    setenv("SONOLET_SERVER_LOOK", "0.05", 1);  // NOLINT(concurrency-mt-unsafe): as above
    std::mutex mutex;
    std::vector<int> songs(120);
    std::iota(songs.begin(), songs.end(), 1);
    int left = 1000;  // requests that are still taken
    bool takesAll = true;
    const auto parameters = [](const std::string& head, const std::string& name) {
        std::vector<int> values;
        for (std::size_t at = head.find('&' + name + '='); at != std::string::npos;
             at = head.find('&' + name + '=', at + 1)) {
            values.push_back(std::atoi(head.c_str() + at + name.size() + 2));
        }
        return values;
    };
    const auto list = [&](bool withSongs) {
        std::string entries;
        for (const int id : songs) {
            entries += (entries.empty() ? "" : ",") + (R"({"id":)" + std::to_string(id) + "}");
        }
        return R"({"id":3,"name":"Mix","changed":")" + std::to_string(left) + '"' +
               (withSongs ? R"(,"entry":[)" + entries + "]}" : "}");
    };
    const auto change = [&](const std::string& head) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (left == 0) {
            return BadServer::reply("", "503 Away", "text/html");
        }
        if (!takesAll) {
            return BadServer::failure(70);
        }
        --left;
        if (head.find("createPlaylist") != std::string::npos) {
            songs.clear();
        }
        for (const char* name : {"songId", "songIdToAdd"}) {
            const std::vector<int> come = parameters(head, name);
            songs.insert(songs.end(), come.begin(), come.end());
        }
        return BadServer::envelope("");
    };
    server.answer("createPlaylist", change);
    server.answer("updatePlaylist", change);
    server.answer("getPlaylists", [&](const std::string&) {
        const std::lock_guard<std::mutex> lock(mutex);
        return BadServer::envelope(R"("playlists":{"playlist":)" + list(false) + "}");
    });
    server.answer("getPlaylist", [&](const std::string&) {
        const std::lock_guard<std::mutex> lock(mutex);
        return BadServer::envelope(R"("playlist":)" + list(true));
    });
    server.answer("getStarred2", [](const std::string&) { return BadServer::envelope(""); });

    TestSession session;
    ASSERT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
    sp_playlistcontainer* const container = sp_session_playlistcontainer(session.get());
    ASSERT_TRUE(session.until([&] { return sp_playlistcontainer_num_playlists(container) == 1; }));
    sp_playlist* const mix = sp_playlistcontainer_playlist(container, 0);
    ASSERT_EQ(sp_playlist_num_tracks(mix), 120);
    sp_track* const moved[] = {sp_playlist_track(mix, 119)};
    {
        const std::lock_guard<std::mutex> lock(mutex);
        left = 1;
    }
    ASSERT_EQ(sp_playlist_add_tracks(mix, moved, 1, 0, session.get()), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] {
        return sp_session_connectionstate(session.get()) == SP_CONNECTION_STATE_DISCONNECTED;
    }));
    EXPECT_EQ(sp_playlist_num_tracks(mix), 121) << "nothing is lost here";
    const auto there = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return songs;
    };
    EXPECT_EQ(there().size(), 50U) << "the server has a part";
    {
        const std::lock_guard<std::mutex> lock(mutex);
        left = 1000;
    }
    std::vector<int> whole(121);
    std::iota(whole.begin(), whole.end(), 0);
    whole[0] = 120;
    EXPECT_TRUE(session.until([&] { return there() == whole; }));

    {
        const std::lock_guard<std::mutex> lock(mutex);
        takesAll = false;
    }
    ASSERT_EQ(sp_playlist_add_tracks(mix, moved, 1, 0, session.get()), SP_ERROR_OK);
    EXPECT_TRUE(session.until([&] { return sp_playlist_num_tracks(mix) == 121; }))
        << "as the server has it";
    EXPECT_THAT(session.log, HasSubstr("A list is not changed: "));
    EXPECT_EQ(there(), whole);
}

TEST(ServerAddress, SaysWhatIsWrongAndWhatIsPrivate) {
    for (const char* wrong : {"", "music", "ftp://host", "http://", "http://ann:pw@host",
                              "http://host/?a=b", "http://host/#a"}) {
        EXPECT_THROW(ServerAddress{wrong}, std::runtime_error) << wrong;
    }
    EXPECT_EQ(ServerAddress("https://host:44/a/b//").base, "https://host:44/a/b");
    EXPECT_EQ(ServerAddress("http://[::1]:4533").base, "http://[::1]:4533");
    for (const char* known :
         {"https://host", "http://localhost:1", "http://127.0.0.9", "http://[::1]"}) {
        EXPECT_TRUE(ServerAddress(known).isPrivate) << known;
    }
    for (const char* open :
         {"http://host", "http://127.evil.example", "http://localhost.example"}) {
        EXPECT_FALSE(ServerAddress(open).isPrivate) << open;
    }
}

TEST(Spans, KnowWhatIsThereAndWhatIsNot) {
    Spans spans;
    spans.add(10, 20);
    spans.add(30, 40);
    spans.add(0, 5);
    EXPECT_EQ(spans.firstMissing(0), 5);
    EXPECT_EQ(spans.firstMissing(7), 7);
    EXPECT_EQ(spans.firstMissing(19), 20);
    spans.add(20, 30);
    EXPECT_EQ(spans.firstMissing(10), 40);
    EXPECT_EQ(Spans::fromText(spans.asText()).asText(), "0 5\n10 40\n");
    spans.add(3, 50);
    EXPECT_EQ(spans.asText(), "0 50\n");
    EXPECT_EQ(Spans::fromText("5 1\n-3 4\n1 2 x").asText(), "1 2\n");
}

}  // namespace
}  // namespace sonolet::service
