// Creating, logging in and out, and the pumping of events.

#include "TestMusic.h"
#include "TestSession.h"

namespace sonolet::test {
namespace {

using testing::HasSubstr;

struct SessionTest : testing::Test {
    const TestMusic music;
};

std::string rememberedUser(sp_session* session, std::size_t size = 64) {
    std::string name(size, '\0');
    const int length = sp_session_remembered_user(session, name.data(), static_cast<int>(size));
    return length < 0 ? "nobody" : std::to_string(length) + ": " + name.c_str();
}

TEST_F(SessionTest, RefusesAConfigurationThatCannotBeUsed) {
    TestSession living;
    sp_session* session = nullptr;
    sp_session_config config = living.configuration();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_API_INITIALIZATION_FAILED)
        << "a second session of one process";
    living.release();

    const std::string agent(256, 'x');
    const std::pair<sp_error, std::function<void()>> cases[] = {
        {SP_ERROR_BAD_API_VERSION, [&] { --config.api_version; }},
        {SP_ERROR_BAD_APPLICATION_KEY, [&] { config.application_key_size = 0; }},
        {SP_ERROR_BAD_USER_AGENT, [&] { config.user_agent = ""; }},
        {SP_ERROR_BAD_USER_AGENT, [&] { config.user_agent = agent.c_str(); }},
        {SP_ERROR_MISSING_CALLBACK, [&] { config.callbacks = nullptr; }}};
    for (const auto& [error, spoil] : cases) {
        config = living.configuration();
        spoil();
        EXPECT_EQ(sp_session_create(&config, &session), error);
    }
    EXPECT_EQ(session, nullptr);
    config = living.configuration();
    config.user_agent = agent.c_str() + 1;
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_OK) << "after a release";
    EXPECT_EQ(sp_session_userdata(session), &living);
    EXPECT_EQ(sp_session_release(session), SP_ERROR_OK);
    EXPECT_EQ(sp_session_release(session), SP_ERROR_INVALID_INDATA) << "a second time";

    std::filesystem::remove_all(music.stateFolder());
    std::ofstream(music.stateFolder()) << "not a folder";
    testing::internal::CaptureStderr();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_API_INITIALIZATION_FAILED);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(music.stateFolder()));
}

TEST_F(SessionTest, AnswersALoginLaterAndALogoutOvertakesIt) {
    TestSession session;
    EXPECT_EQ(session.login(nullptr, "x"), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(session.login("listener", nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(session.login("nobody", "listener"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(sp_session_user(session.get()), nullptr);
    ASSERT_EQ(session.login(" LISTENER ", "listener"), SP_ERROR_OK) << "names know no case";
    EXPECT_STREQ(sp_user_canonical_name(sp_session_user(session.get())), "listener");
    EXPECT_EQ(session.heard("userinfo"), 1U);

    EXPECT_EQ(sp_session_logout(session.get()), SP_ERROR_OK);
    EXPECT_EQ(session.heard("logged_out"), 0U) << "comes from process_events";
    ASSERT_TRUE(session.untilHeard("logged_out"));
    EXPECT_EQ(sp_session_user(session.get()), nullptr);
    EXPECT_EQ(sp_session_logout(session.get()), SP_ERROR_OK) << "once more does no harm";

    const std::size_t answers = session.heard("logged_in");
    ASSERT_EQ(sp_session_login(session.get(), "listener", "listener", false, nullptr), SP_ERROR_OK);
    ASSERT_EQ(sp_session_logout(session.get()), SP_ERROR_OK);
    // The next login is answered after whatever the first one still had to say.
    ASSERT_EQ(session.login("listener", "wrong"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.heard("logged_in"), answers + 1);
}

TEST_F(SessionTest, RemembersAUserAndTakesABlobAcrossSessions) {
    std::string blob;
    {
        TestSession session;
        EXPECT_EQ(sp_session_relogin(session.get()), SP_ERROR_NO_CREDENTIALS);
        ASSERT_EQ(session.login("listener", "listener", true), SP_ERROR_OK);
        blob = session.blob;
    }
    ASSERT_GE(blob.size(), 32U);
    TestSession session;
    EXPECT_EQ(rememberedUser(session.get()), "8: listener");
    EXPECT_EQ(rememberedUser(session.get(), 5), "8: list");
    ASSERT_EQ(sp_session_relogin(session.get()), SP_ERROR_OK);
    ASSERT_TRUE(session.untilHeard("logged_in"));
    EXPECT_EQ(session.lastError, SP_ERROR_OK);
    EXPECT_EQ(sp_session_forget_me(session.get()), SP_ERROR_OK);
    EXPECT_EQ(rememberedUser(session.get()), "nobody");

    EXPECT_EQ(session.loginWith(blob + "0", "listener"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.loginWith(blob, "nobody"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    EXPECT_EQ(session.loginWith(blob, "listener"), SP_ERROR_OK);
    ASSERT_EQ(run("echo changed | " SONOLET_USER " passwd listener").status, 0);
    EXPECT_EQ(session.loginWith(blob, "listener"), SP_ERROR_BAD_USERNAME_OR_PASSWORD)
        << "a new password ends what the old one allowed";
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
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    EXPECT_FALSE(session.until([] { return false; })) << "a released session has no events";
    EXPECT_EQ(session.events.back(), "logged_in") << "nothing follows a release";
}

}  // namespace
}  // namespace sonolet::test
