// Loading and playing through the interface; what the player does by itself is tested with it.

#include "Accounts.h"
#include "TestMusic.h"
#include "TestSession.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace sonolet::test {

namespace {

constexpr std::size_t frames = 44100;

class PlaybackTest : public testing::Test {
protected:
    void SetUp() override {
        music.add("song.wav", {{"TITLE", "Song"}, {"ARTIST", "Ann"}}, frames);
        session = std::make_unique<TestSession>();
        ASSERT_TRUE(session->untilScanned());
        link = sp_link_create_from_string(music.link("Song").c_str());
        track = sp_link_as_track(link);
    }
    void TearDown() override { sp_link_release(link); }

    const TestMusic music;
    std::unique_ptr<TestSession> session;
    sp_link* link = nullptr;
    sp_track* track = nullptr;
};

TEST_F(PlaybackTest, PlaysToTheEndAndCountsIt) {
    EXPECT_EQ(sp_session_player_load(session->get(), track), SP_ERROR_PERMISSION_DENIED)
        << "nobody is logged in";
    EXPECT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_NO_STREAM_AVAILABLE);
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    EXPECT_EQ(sp_session_player_load(session->get(), nullptr), SP_ERROR_INVALID_INDATA);
    ASSERT_EQ(sp_session_player_load(session->get(), track), SP_ERROR_OK);
    EXPECT_EQ(sp_session_player_seek(session->get(), -1), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_player_seek(session->get(), 1001), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_track_popularity(track), 0);
    ASSERT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_OK);
    ASSERT_TRUE(session->until([&] { return session->ended(); }));
    EXPECT_EQ(session->delivered(), sweep(frames));
    ASSERT_TRUE(session->until([&] { return sp_track_popularity(track) == 100; }));
    EXPECT_EQ(sp_session_player_unload(session->get()), SP_ERROR_OK);
    EXPECT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_NO_STREAM_AVAILABLE);
}

TEST_F(PlaybackTest, AnotherSessionOfTheAccountTakesThePlaybackOver) {
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_load(session->get(), track), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_OK);
    service::Accounts elsewhere(music.accountsFile());
    elsewhere.takePlayToken(elsewhere.find("listener")->id, "another process");
    ASSERT_TRUE(session->untilHeard("play_token_lost"));
    EXPECT_EQ(session->heard("play_token_lost"), 1U);
    ASSERT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_OK) << "and takes it back";
    EXPECT_NE(elsewhere.playToken(elsewhere.find("listener")->id), "another process");
}

TEST_F(PlaybackTest, RefusesWhatIsNotThere) {
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    sp_link* nowhere = sp_link_create_from_string("spotify:track:0000000000000000000000");
    EXPECT_EQ(sp_session_player_load(session->get(), sp_link_as_track(nowhere)),
              SP_ERROR_TRACK_NOT_PLAYABLE);
    sp_link_release(nowhere);
    music.remove("song.wav");
    EXPECT_NE(sp_session_player_load(session->get(), track), SP_ERROR_OK) << "gone since the scan";
    EXPECT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_NO_STREAM_AVAILABLE);
}

TEST_F(PlaybackTest, ALogoutSilencesThePlayer) {
    ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_load(session->get(), track), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_OK);
    ASSERT_EQ(sp_session_logout(session->get()), SP_ERROR_OK);
    const std::size_t delivered = session->delivered().size();
    ASSERT_TRUE(session->untilHeard("logged_out"));
    EXPECT_EQ(session->delivered().size(), delivered);
    EXPECT_EQ(sp_session_player_play(session->get(), true), SP_ERROR_NO_STREAM_AVAILABLE);
}

}  // namespace

}  // namespace sonolet::test
