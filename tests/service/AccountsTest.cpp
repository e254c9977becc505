// The command that keeps the accounts, and stars and play counts that belong to them.

#include "Accounts.h"

#include "TestMusic.h"
#include "TestSession.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace sonolet::test {

namespace {

Ran user(const std::string& arguments, const std::string& input = "") {
    return runProgram("printf '" + input + "' | " SONOLET_USER " " + arguments + " 2>&1");
}

TEST(UserCommand, MakesListsAndRemovesAccounts) {
    const TestMusic music;
    EXPECT_EQ(user("list").output, "listener\n");
    EXPECT_EQ(user("add Ann", "secret\\n").status, 0);
    EXPECT_EQ(user("add Zo\xc3\xab", "no newline").status, 0);
    EXPECT_EQ(user("list").output, "ann\nlistener\nzo\xc3\xab\n");
    {
        TestSession session;
        EXPECT_EQ(session.login("ann", "secret"), SP_ERROR_OK);
        EXPECT_EQ(session.login("zo\xc3\xab", "no newline"), SP_ERROR_OK);
        EXPECT_EQ(user("passwd ann", "other\\n").status, 0);
        EXPECT_EQ(session.login("ann", "secret"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
        EXPECT_EQ(session.login("ann", "other"), SP_ERROR_OK);
    }
    EXPECT_EQ(user("remove listener").status, 0);
    EXPECT_EQ(user("list").output, "ann\nzo\xc3\xab\n") << "the first account stays away";
}

TEST(UserCommand, SeveralProcessesMayBeTheFirst) {
    const TestMusic music;
    const std::string list = "(" SONOLET_USER " list 2>&1) & ";
    const Ran ran = runProgram(list + list + list + list + "wait");
    EXPECT_EQ(ran.output, "listener\nlistener\nlistener\nlistener\n");
}

TEST(UserCommand, SaysWhatIsWrong) {
    const TestMusic music;
    for (const auto& [arguments, input, status, text] :
         {std::tuple{"add listener", "x\\n", 1, "exists already"},
          std::tuple{"add new", "", 1, "no password was given"},
          std::tuple{"add a:b", "x\\n", 1, "a user name has no ':'"},
          std::tuple{"add ''", "x\\n", 1, "1 to 64 bytes"},
          std::tuple{"remove nobody", "", 1, "there is no user nobody"},
          std::tuple{"passwd nobody", "x\\n", 1, "there is no user nobody"},
          std::tuple{"add", "", 2, "Usage:"}, std::tuple{"shout", "", 2, "Usage:"}}) {
        const Ran ran = user(arguments, input);
        EXPECT_EQ(ran.status, status) << arguments;
        EXPECT_NE(ran.output.find(text), std::string::npos) << arguments << ": " << ran.output;
    }
    EXPECT_EQ(user("list").output, "listener\n");
}

TEST(Stars, BelongToAUserAndOutliveTheSession) {
    const TestMusic music;
    music.add("one.wav", {{"TITLE", "One"}});
    music.add("two.wav", {{"TITLE", "Two"}});
    ASSERT_EQ(user("add ann", "secret\\n").status, 0);
    const auto linked = [&](const char* title) {
        return sp_link_create_from_string(music.link(title).c_str());
    };
    {
        TestSession session;
        ASSERT_TRUE(session.untilScanned());
        sp_link* links[] = {linked("One"), linked("Two")};
        sp_track* tracks[] = {sp_link_as_track(links[0]), sp_link_as_track(links[1])};
        EXPECT_EQ(sp_track_set_starred(session.get(), tracks, 2, true), SP_ERROR_PERMISSION_DENIED)
            << "nobody is logged in";
        ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
        EXPECT_EQ(sp_track_set_starred(session.get(), nullptr, 1, true), SP_ERROR_INVALID_INDATA);
        EXPECT_EQ(sp_track_set_starred(session.get(), tracks, -1, true), SP_ERROR_INVALID_INDATA);
        EXPECT_EQ(sp_track_set_starred(session.get(), tracks, 2, true), SP_ERROR_OK);
        EXPECT_EQ(sp_track_set_starred(session.get(), tracks + 1, 1, false), SP_ERROR_OK);
        EXPECT_TRUE(sp_track_is_starred(session.get(), tracks[0]));
        EXPECT_FALSE(sp_track_is_starred(session.get(), tracks[1]));
        sp_link_release(links[0]);
        sp_link_release(links[1]);
    }
    TestSession session;
    sp_link* link = linked("One");
    sp_track* track = sp_link_as_track(link);
    ASSERT_EQ(session.login("ann", "secret"), SP_ERROR_OK);
    EXPECT_FALSE(sp_track_is_starred(session.get(), track)) << "another user's star";
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    EXPECT_EQ(session.heard("logged_out"), 1U) << "a user gives way to the next";
    EXPECT_TRUE(sp_track_is_starred(session.get(), track));
    sp_link_release(link);
}

TEST(Popularity, ComparesWithTheMostPlayedTrack) {
    const TestMusic music;
    service::Accounts accounts(music.accountsFile());
    const std::int64_t listener = accounts.find("listener")->id;
    const service::Id often = service::Id::digest({"often"});
    const service::Id seldom = service::Id::digest({"seldom"});
    EXPECT_EQ(accounts.popularity(often), 0);
    accounts.recordPlay(listener, seldom);
    EXPECT_EQ(accounts.popularity(seldom), 100);
    for (int play = 0; play < 20; ++play) {
        accounts.recordPlay(listener, often);
    }
    EXPECT_EQ(accounts.popularity(often), 100);
    EXPECT_GT(accounts.popularity(seldom), 0);
    EXPECT_LT(accounts.popularity(seldom), 50);
    service::Accounts elsewhere(music.accountsFile());
    elsewhere.add("ann", service::Secret("secret"));
    const std::int64_t ann = elsewhere.find("ann")->id;
    for (int play = 0; play < 30; ++play) {
        elsewhere.recordPlay(ann, seldom);
    }
    EXPECT_EQ(accounts.popularity(seldom), 100) << "every user's plays count";
}

}  // namespace

}  // namespace sonolet::test
