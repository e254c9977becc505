// The command that keeps the accounts, and what belongs to one: playing, stars and play counts.

#include "accounts/Accounts.h"

#include "TestMusic.h"
#include "TestSession.h"

namespace sonolet::test {
namespace {

Ran user(const std::string& arguments, const std::string& input = "") {
    return run("printf '" + input + "' | " SONOLET_USER " " + arguments);
}

TEST(UserCommand, MakesListsAndRemovesAccounts) {
    const TestMusic music;
    const std::string list = SONOLET_USER " list & ";
    EXPECT_EQ(run(list + list + list + "wait").output, "listener\nlistener\nlistener\n")
        << "several processes may be the first";
    EXPECT_EQ(user("add Zoë", "no newline").status, 0);
    {
        TestSession session;
        EXPECT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
        EXPECT_EQ(sp_session_num_friends(session.get()), 1);
        EXPECT_EQ(user("add Ann", "secret\\n").status, 0);
        ASSERT_TRUE(session.untilHeard("userinfo", 2)) << "made by another process";
        ASSERT_EQ(sp_session_num_friends(session.get()), 2);
        sp_user* ann = sp_session_friend(session.get(), 0);
        EXPECT_STREQ(sp_user_canonical_name(ann), "ann");
        EXPECT_STREQ(sp_user_display_name(ann), "Ann");
        EXPECT_EQ(sp_user_relation_type(session.get(), ann), SP_RELATION_TYPE_BIDIRECTIONAL);
        EXPECT_EQ(session.login("zoë", "no newline"), SP_ERROR_OK);
        EXPECT_EQ(session.login("ann", "secret"), SP_ERROR_OK);
        EXPECT_EQ(user("passwd ann", "other\\n").status, 0);
        EXPECT_EQ(session.login("ann", "secret"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
        EXPECT_EQ(session.login("ann", "other"), SP_ERROR_OK);
    }
    EXPECT_EQ(user("remove listener").status, 0);
    EXPECT_EQ(user("list").output, "ann\nzoë\n") << "the first account stays away";

    for (const auto& [arguments, input, status, text] :
         {std::tuple{"add ann", "x\\n", 1, "exists already"},
          {"add new", "", 1, "no password was given"},
          {"add a:b", "x\\n", 1, "a user name has no ':'"},
          {"add ''", "x\\n", 1, "1 to 64 bytes"},
          {"remove nobody", "", 1, "there is no user nobody"},
          {"passwd nobody", "x\\n", 1, "there is no user nobody"},
          {"list >/dev/full", "", 1, ""},
          {"shout", "", 2, "usage:"}}) {
        const Ran ran = user(arguments, input);
        EXPECT_EQ(ran.status, status) << arguments;
        EXPECT_THAT(ran.output, testing::HasSubstr(text)) << arguments;
    }
    EXPECT_EQ(user("list").output, "ann\nzoë\n");
}

struct AccountTest : testing::Test {
    void SetUp() override {
        music.add("song.wav", "TITLE=Song", 44100);
        session.emplace(TestSession::State::Scanned);
        track = trackOf(TestMusic::link("Song"));
        EXPECT_EQ(load(), SP_ERROR_PERMISSION_DENIED) << "nobody is logged in";
        ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
        ASSERT_EQ(load(), SP_ERROR_OK);
    }

    sp_error load() const { return sp_session_player_load(session->get(), track.get()); }
    sp_error play() const { return sp_session_player_play(session->get(), true); }

    const TestMusic music;
    std::optional<TestSession> session;
    std::shared_ptr<sp_track> track;
};

TEST_F(AccountTest, PlaysToTheEndAndCountsIt) {
    EXPECT_EQ(sp_session_player_seek(session->get(), 1001), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_track_popularity(track.get()), 0);
    ASSERT_EQ(play(), SP_ERROR_OK);
    ASSERT_TRUE(session->until([&] { return session->ended.load(); }));
    EXPECT_EQ(session->delivered, sweep(44100));
    ASSERT_TRUE(session->until([&] { return sp_track_popularity(track.get()) == 100; }));
    EXPECT_EQ(sp_session_player_unload(session->get()), SP_ERROR_OK);
    EXPECT_EQ(play(), SP_ERROR_NO_STREAM_AVAILABLE);
}

TEST_F(AccountTest, StarsBelongToAUserAndOutliveTheSession) {
    const auto star = [this](sp_track** tracks, int count) {
        return sp_track_set_starred(session->get(), tracks, count, true);
    };
    sp_track* tracks[] = {track.get()};
    EXPECT_EQ(star(nullptr, 1), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(star(tracks, -1), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(star(tracks, 1), SP_ERROR_OK);
    ASSERT_EQ(run("echo secret | " SONOLET_USER " add ann").status, 0);
    ASSERT_EQ(session->login("ann", "secret"), SP_ERROR_OK);
    EXPECT_EQ(session->heard("logged_out"), 1U) << "a user gives way to the next";
    EXPECT_FALSE(sp_track_is_starred(session->get(), track.get())) << "another user's star";
    session.reset();
    session.emplace();
    track = trackOf(TestMusic::link("Song"));
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    EXPECT_TRUE(sp_track_is_starred(session->get(), track.get()));
}

TEST_F(AccountTest, AnotherSessionTakesPlaybackOver) {
    ASSERT_EQ(play(), SP_ERROR_OK);
    service::Accounts elsewhere(TestMusic::paths().accountsFile());
    const auto listener = elsewhere.find("listener")->id;
    elsewhere.takePlayToken(listener, "another process");
    ASSERT_TRUE(session->untilHeard("token lost"));
    ASSERT_EQ(play(), SP_ERROR_OK) << "and takes it back";
    EXPECT_NE(elsewhere.playToken(listener), "another process");
    EXPECT_EQ(session->heard("token lost"), 1U);
}

TEST_F(AccountTest, PlayingEndsWithALogout) {
    ASSERT_EQ(play(), SP_ERROR_OK);
    ASSERT_EQ(sp_session_logout(session->get()), SP_ERROR_OK);
    const std::size_t delivered = session->delivered.size();
    ASSERT_TRUE(session->untilHeard("logged_out"));
    EXPECT_EQ(session->delivered.size(), delivered);
    EXPECT_EQ(play(), SP_ERROR_NO_STREAM_AVAILABLE);
}

}  // namespace
}  // namespace sonolet::test
