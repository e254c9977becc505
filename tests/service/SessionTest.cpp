// Creating, logging in and out, and the pumping of events.

#include "TestMusic.h"
#include "TestSession.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace sonolet::test {

namespace {

class SessionTest : public testing::Test {
protected:
    TestMusic music;
};

std::string rememberedUser(sp_session* session) {
    char name[64] = "";
    const int length = sp_session_remembered_user(session, name, sizeof(name));
    return length < 0 ? "(none)" : name;
}

TEST_F(SessionTest, RefusesAConfigurationThatCannotBeUsed) {
    TestSession living;
    sp_session* session = nullptr;
    sp_session_config config = living.configuration();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_API_INITIALIZATION_FAILED)
        << "a second session of one process";
    living.release();

    config.api_version = SPOTIFY_API_VERSION - 1;
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_BAD_API_VERSION);
    config = living.configuration();
    config.application_key_size = 0;
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_BAD_APPLICATION_KEY);
    config = living.configuration();
    const std::string longAgent(256, 'x');
    for (const char* agent : {static_cast<const char*>(nullptr), "", longAgent.c_str()}) {
        config.user_agent = agent;
        EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_BAD_USER_AGENT);
    }
    config = living.configuration();
    config.callbacks = nullptr;
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_MISSING_CALLBACK);
    EXPECT_EQ(session, nullptr);

    const std::string longestAgent(255, 'x');
    config = living.configuration();
    config.user_agent = longestAgent.c_str();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_OK) << "after a release";
    EXPECT_EQ(sp_session_release(session), SP_ERROR_OK);
    EXPECT_EQ(sp_session_release(session), SP_ERROR_INVALID_INDATA) << "a second time";
}

TEST_F(SessionTest, AnUnusableStateFolderIsAnErrorThatNamesIt) {
    std::ofstream(music.stateFolder()) << "not a folder";
    TestSession* none = nullptr;
    sp_session_callbacks callbacks{};
    sp_session_config config{};
    config.api_version = SPOTIFY_API_VERSION;
    config.application_key = "key";
    config.application_key_size = 3;
    config.user_agent = "test";
    config.callbacks = &callbacks;
    config.userdata = none;
    sp_session* session = nullptr;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_API_INITIALIZATION_FAILED);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(music.stateFolder()), std::string::npos);
}

TEST_F(SessionTest, TellsTheOutcomeOfALoginLater) {
    TestSession session;
    EXPECT_EQ(sp_session_connectionstate(session.get()), SP_CONNECTION_STATE_LOGGED_OUT);
    EXPECT_EQ(sp_session_login(session.get(), nullptr, "x", false, nullptr),
              SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_login(session.get(), "listener", nullptr, false, nullptr),
              SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(session.login("listener", "wrong"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.login("nobody", "listener"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(sp_session_user(session.get()), nullptr);
    EXPECT_EQ(sp_session_connectionstate(session.get()), SP_CONNECTION_STATE_LOGGED_OUT);

    ASSERT_EQ(session.login(" LISTENER ", "listener"), SP_ERROR_OK) << "names know no case";
    EXPECT_EQ(sp_session_connectionstate(session.get()), SP_CONNECTION_STATE_LOGGED_IN);
    EXPECT_STREQ(sp_user_canonical_name(sp_session_user(session.get())), "listener");
    EXPECT_TRUE(sp_user_is_loaded(sp_session_user(session.get())));
    EXPECT_EQ(session.heard("userinfo_updated"), 1U);

    EXPECT_EQ(sp_session_logout(session.get()), SP_ERROR_OK);
    EXPECT_EQ(session.heard("logged_out"), 0U) << "comes from process_events";
    ASSERT_TRUE(session.untilHeard("logged_out"));
    EXPECT_EQ(sp_session_user(session.get()), nullptr);
    EXPECT_EQ(sp_session_logout(session.get()), SP_ERROR_OK) << "once more does no harm";
}

TEST_F(SessionTest, ALogoutOvertakesALogin) {
    TestSession session;
    ASSERT_EQ(sp_session_login(session.get(), "listener", "listener", false, nullptr), SP_ERROR_OK);
    ASSERT_EQ(sp_session_logout(session.get()), SP_ERROR_OK);
    ASSERT_TRUE(session.untilHeard("logged_out"));
    // The next login is answered after whatever the first one still had to say.
    ASSERT_EQ(session.login("listener", "wrong"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.heard("logged_in"), 1U);
}

TEST_F(SessionTest, ABlobTakesThePlaceOfThePassword) {
    TestSession session;
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    const std::string blob = session.blob;
    ASSERT_GE(blob.size(), 32U);
    session.release();

    TestSession later;
    const auto loginWith = [&](const char* name, const std::string& text) {
        const std::size_t answers = later.heard("logged_in") + 1;
        EXPECT_EQ(sp_session_login(later.get(), name, nullptr, false, text.c_str()), SP_ERROR_OK);
        return later.untilHeard("logged_in", answers) ? later.lastError : SP_ERROR_TIMEOUT;
    };
    EXPECT_EQ(loginWith("listener", blob + "0"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(loginWith("nobody", blob), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(loginWith("listener", blob), SP_ERROR_OK);

    ASSERT_EQ(runProgram("echo changed | " SONOLET_USER " passwd listener").status, 0);
    EXPECT_EQ(loginWith("listener", blob), SP_ERROR_BAD_USERNAME_OR_PASSWORD)
        << "a new password ends what the old one allowed";
}

TEST_F(SessionTest, RemembersAUserAcrossSessions) {
    {
        TestSession session;
        EXPECT_EQ(rememberedUser(session.get()), "(none)");
        EXPECT_EQ(sp_session_relogin(session.get()), SP_ERROR_NO_CREDENTIALS);
        ASSERT_EQ(session.login("listener", "listener", true), SP_ERROR_OK);
    }
    TestSession session;
    EXPECT_EQ(rememberedUser(session.get()), "listener");
    char tooSmall[5] = "xxxx";
    EXPECT_EQ(sp_session_remembered_user(session.get(), tooSmall, sizeof(tooSmall)), 8);
    EXPECT_STREQ(tooSmall, "list");
    ASSERT_EQ(sp_session_relogin(session.get()), SP_ERROR_OK);
    ASSERT_TRUE(session.untilHeard("logged_in"));
    EXPECT_EQ(session.lastError, SP_ERROR_OK);
    EXPECT_STREQ(sp_user_canonical_name(sp_session_user(session.get())), "listener");
    EXPECT_EQ(sp_session_forget_me(session.get()), SP_ERROR_OK);
    EXPECT_EQ(rememberedUser(session.get()), "(none)");
}

TEST_F(SessionTest, CallbacksMayPumpLogOutAndRelease) {
    TestSession session;
    int timeout = -1;
    session.onLoggedIn = [&] {
        const std::size_t before = session.events.size();
        EXPECT_EQ(sp_session_process_events(session.get(), &timeout), SP_ERROR_OK);
        EXPECT_EQ(session.events.size(), before) << "an event ran inside another";
        EXPECT_EQ(sp_session_logout(session.get()), SP_ERROR_OK);
    };
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    ASSERT_TRUE(session.untilHeard("logged_out"));
    EXPECT_GE(timeout, 0);

    session.onLoggedIn = [&] { session.release(); };
    ASSERT_EQ(sp_session_login(session.get(), "listener", "listener", false, nullptr), SP_ERROR_OK);
    EXPECT_FALSE(session.until([] { return false; })) << "a released session has no events";
    EXPECT_EQ(session.heard("logged_in"), 2U);
    EXPECT_EQ(session.events.back(), "logged_in") << "nothing follows a release";
}

TEST_F(SessionTest, KeepsSecretsOutOfFilesAndLines) {
    const std::string password = "correct-horse-battery";
    ASSERT_EQ(runProgram("echo " + password + " | " SONOLET_USER " add Secretive").status, 0);
    TestSession session;
    ASSERT_EQ(session.login("secretive", password.c_str(), true), SP_ERROR_OK);
    const std::string blob = session.blob;
    EXPECT_EQ(session.login("secretive", (password + "x").c_str()),
              SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.logText().find(password), std::string::npos);
    EXPECT_EQ(session.logText().find(blob), std::string::npos);

    std::size_t files = 0;
    std::size_t hashes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(music.stateFolder())) {
        struct stat status {};
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & (S_IRWXG | S_IRWXO), 0U) << entry.path();
        if (entry.is_regular_file()) {
            ++files;
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
            EXPECT_EQ(bytes.find(password), std::string::npos) << entry.path();
            EXPECT_EQ(bytes.find(blob), std::string::npos) << entry.path();
            hashes += bytes.find("$y$") != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_GE(files, 2U);
    EXPECT_GE(hashes, 1U);
}

TEST_F(SessionTest, KnowsTheOtherAccountsAsFriends) {
    TestSession session;
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    EXPECT_EQ(sp_session_num_friends(session.get()), 0);
    const std::size_t told = session.heard("userinfo_updated");
    ASSERT_EQ(runProgram("echo secret | " SONOLET_USER " add Ann").status, 0);
    ASSERT_TRUE(session.untilHeard("userinfo_updated", told + 1)) << "made by another process";
    ASSERT_EQ(sp_session_num_friends(session.get()), 1);
    sp_user* ann = sp_session_friend(session.get(), 0);
    EXPECT_STREQ(sp_user_canonical_name(ann), "ann");
    EXPECT_STREQ(sp_user_display_name(ann), "Ann");
    EXPECT_EQ(sp_user_relation_type(session.get(), ann), SP_RELATION_TYPE_BIDIRECTIONAL);
    EXPECT_EQ(sp_user_relation_type(session.get(), sp_session_user(session.get())),
              SP_RELATION_TYPE_NONE);
    EXPECT_EQ(sp_session_friend(session.get(), 1), nullptr);
    EXPECT_EQ(sp_session_friend(session.get(), -1), nullptr);
}

TEST_F(SessionTest, ReleaseDuringAScanIsPrompt) {
    for (int number = 0; number < 60; ++number) {
        music.add("folder/" + std::to_string(number) + ".wav", {{"TITLE", "Any"}});
    }
    TestSession session;
    ASSERT_TRUE(session.until([&] { return !session.logLines.empty(); }));
    session.release();
    EXPECT_EQ(session.logText().find("Scanned"), std::string::npos);
    TestSession again;
    ASSERT_TRUE(again.untilScanned());
    EXPECT_EQ(music.titles().size(), 60U);
}

}  // namespace

}  // namespace sonolet::test
