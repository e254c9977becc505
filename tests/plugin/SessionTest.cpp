#include "Session.h"

#include "PluginTest.h"

namespace {

using SessionTest = PluginTest;

// A session with a track to be loaded, and the backend that plays it.
class PlaybackTest : public PluginTest {
protected:
    PlaybackTest() {
        createSession();
        spotify.add<sp_track>("track");
        track = create("Track", "track");
        spotify.calls.clear();
    }
    FakeBackend& load() {
        EXPECT_EQ(session("playerLoad", {track}), returned(0));
        return factory.current();
    }
    int deliver(int frames, unsigned char value = 'f') {
        const std::vector<unsigned char> bytes(static_cast<std::size_t>(frames) * 4, value);
        return spotify.deliver(bytes.data(), frames);
    }

    jsplugin_obj* track = nullptr;
};

}  // namespace

TEST_F(SessionTest, CreatePassesTheOptionsOnFailsCleanlyAndMakesOneSession) {
    const auto& config = find("Spotify.SessionConfig");
    for (const char* name : {"userAgent", "proxy", "proxyUsername", "proxyPassword"}) {
        host->set(config, name, std::string("my ") + name);
    }
    for (const char* name : {"compressPlaylists", "initiallyUnloadPlaylists"}) {
        host->set(config, name, true);
    }
    spotify.answers["sp_session_create"] = SP_ERROR_BAD_APPLICATION_KEY;
    EXPECT_EQ(session("create", {config}), failed("Failed to initialize libspotify"));
    EXPECT_EQ(session("relogin"), failed("Spotify is not initialized"));
    EXPECT_EQ(call("Spotify.Track", "create", {"track"}),
              failed("Spotify not initialized correctly"));
    spotify.answers.clear();
    spotify.calls.clear();
    createSession();
    createSession();
    EXPECT_EQ(session("create"), returned(find("Spotify.Session")));
    EXPECT_EQ(spotify.calls,
              Strings{"sp_session_create(12, /var/tmp/spotify_cache, /settings/spotify, true, "
                      "my userAgent, true, false, true, my proxy, my proxyUsername, "
                      "my proxyPassword, /etc/ssl/certs_static/ca-certificates.crt)"});
    EXPECT_EQ(log.count(2, "Session::createInitializing Spotify session: OK"), 1);
}

TEST_F(SessionTest, AccountFunctionsAnswerWhatTheLibraryDoes) {
    createSession();
    spotify.calls.clear();
    EXPECT_EQ(session("login", {"me", "secret", true, ""}), returned(0));
    spotify.answers["sp_session_login"] = SP_ERROR_BAD_USERNAME_OR_PASSWORD;
    EXPECT_EQ(session("login", {"me", "", false, "blob"}), returned(6));
    EXPECT_EQ(session("setCacheSize", {100.7}), nothing());
    EXPECT_EQ(session("setCacheSize", {-5}), nothing());
    spotify.answers["sp_session_signup_perform_action"] = 9;
    EXPECT_EQ(session("signupPerformAction", {8}), returned(9));
    EXPECT_EQ(spotify.calls, (Strings{"sp_session_login(session, me, secret, true, null)",
                                      "sp_session_preferred_bitrate(session, 1)",
                                      "sp_session_login(session, me, , false, blob)",
                                      "sp_session_preferred_bitrate(session, 1)",
                                      "sp_session_set_cache_size(session, 100)",
                                      "sp_session_set_cache_size(session, 0)",
                                      "sp_session_signup_perform_action(session, 8)"}));
    expectReads(membersOf(find("Spotify.Session"), "session",
                          "n relogin n numFriends n userCountry n forgetMe n connectionstate "
                          "t signupGetUnacceptedLicenses U user U friend#"));
    EXPECT_EQ(session("rememberedUser"), returned(Value::null()));
    const std::string longName(300, 'n');
    for (const char* name : {"", "me", longName.c_str()}) {
        spotify.texts["sp_session_remembered_user"] = name;
        EXPECT_EQ(session("rememberedUser"), returned(name));
    }
}

TEST_F(SessionTest, TheLibrarysSessionGoesOnceAfterTheRootAndTheLastWrapper) {
    createSession();
    spotify.add<sp_track>("track");
    jsplugin_obj* track = create("Track", "track");
    for (const char* path : {"Spotify.SessionConfig", "Spotify.Session", "Spotify.Track"}) {
        host->collect(find(path));
    }
    host->collect(find("Spotify"));
    renewRoot();
    EXPECT_EQ(spotify.sessionsReleased, 0) << "released under a living wrapper";
    EXPECT_EQ(host->call(track, "disc"), returned(0));
    spotify.calls.clear();
    host->collect(track);
    EXPECT_EQ(spotify.calls, (Strings{"sp_track_release(track)", "sp_session_logout(session)",
                                      "sp_session_release(session)"}));
}

TEST_F(SessionTest, EveryCallbackRaisesItsEventWithItsArgumentsForListenersAndItsAttribute) {
    createSession();
    sp_session* const from = spotify.session();
    const sp_session_callbacks& on = spotify.callbacks();
    // clang-format off
    const std::vector<Event> events = {
        {"LoggedIn", [&] { on.logged_in(from, SP_ERROR_USER_BANNED); }, {7}},
        {"LoggedOut", [&] { on.logged_out(from); }, {}},
        {"MetadataUpdated", [&] { on.metadata_updated(from); }, {}, true, "onMetaDataUpdated"},
        {"ConnectionError", [&] { on.connection_error(from, SP_ERROR_OK); }, {0}},
        {"MessageToUser", [&] { on.message_to_user(from, "text"); }, {"text"}},
        {"PlayTokenLost", [&] { on.play_token_lost(from); }, {}},
        {"LogMessage", [&] { on.log_message(from, nullptr); }, {""}},
        {"EndOfTrack", [&] { on.end_of_track(from); }, {}},
        {"StreamingError", [&] { on.streaming_error(from, SP_ERROR_TIMEOUT); }, {29}},
        {"UserinfoUpdated", [&] { on.userinfo_updated(from); }, {}},
        {"OfflineStatusUpdated", [&] { on.offline_status_updated(from); }, {}, false},
        {"OfflineError", [&] { on.offline_error(from, SP_ERROR_OFFLINE_EXPIRED); }, {33}, false},
        {"CredentialsBlobUpdated", [&] { on.credentials_blob_updated(from, "b"); }, {"b"}},
        {"ShowSignupPage", [&] { on.show_signup_page(from, SP_SIGNUP_PAGE_DONE, true, 5, "who"); }, {6, true, 5, "who"}, false},
        {"ShowSignupErrorPage", [&] { on.show_signup_error_page(from, SP_SIGNUP_PAGE_NONE, SP_ERROR_TIMEOUT); }, {0, 29}, false},
        {"ShowTrialWelcome", [&] { on.show_trial_welcome(from); }, {}}};
    // clang-format on
    for (const Event& event : events) {
        expectEvent(find("Spotify.Session"), event);
    }
    host->calls.clear();
    on.notify_main_thread(from);
    on.connect_to_facebook(from, "permissions");
    tick();
    EXPECT_TRUE(host->calls.empty());
}

TEST_F(PlaybackTest, EachTickDrivesTheLibraryThenThePlayerAndReportsThePosition) {
    FakeBackend& backend = load();
    backend.position = 1.25;
    jsplugin_obj* listener = host->function(page);
    call("Spotify.Sonolet", "addEventListener", {"TrackProgress", listener});
    host->set(find("Spotify.Sonolet"), "onTrackProgress", listener);
    spotify.duringProcessEvents = [&] {
        EXPECT_EQ(deliver(100), 100);
        backend.request(0, 400);  // served in the same tick, from what has just come
    };
    spotify.calls.clear();
    host->advance(250);
    EXPECT_EQ(backend.writes.size(), 1U);
    EXPECT_EQ(spotify.calls, Strings{"sp_session_process_events(session)"});
    host->advance(850);
    EXPECT_EQ(spotify.calls.size(), 4U) << "the period follows what the library asks for";
    EXPECT_EQ(host->callsOf(listener), 8) << "as a listener and as the handler";
    EXPECT_EQ(host->calls[0].arguments, Values{1.25});
    spotify.duringProcessEvents = nullptr;
}

TEST_F(PlaybackTest, LoadReplacesTheTrackAndItsBackendWhateverTheLibraryAnswers) {
    EXPECT_EQ(deliver(10), 0) << "nothing takes the frames yet";
    FakeBackend& first = load();
    EXPECT_EQ(spotify.calls,
              (Strings{"sp_session_player_load(session, track)", "sp_track_duration(track)"}));
    EXPECT_EQ(deliver(100), 100);
    first.request(0, 4096);
    spotify.answers["sp_session_player_load"] = SP_ERROR_TRACK_NOT_PLAYABLE;
    EXPECT_EQ(session("playerLoad", {track}), returned(3));
    EXPECT_TRUE(first.released());
    FakeBackend& second = factory.current();
    EXPECT_EQ(deliver(10, 'x'), 10);
    second.request(0, 87);
    host->advance(250);
    ASSERT_EQ(second.writes.size(), 1U);
    EXPECT_EQ(second.writes[0].bytes[48], 'x') << "the earlier track's sound was kept";
    factory.grants = false;
    EXPECT_EQ(session("playerLoad", {track}), failed("Could not initialize backend"));
    EXPECT_EQ(deliver(10), 10) << "the new track is in place all the same";
    EXPECT_EQ(session("playerPlay", {true}), returned(0));
    spotify.calls.clear();
    EXPECT_EQ(session("playerLoad", {find("Spotify.Track")}), failed(notRetrieved));
    EXPECT_EQ(session("playerPrefetch", {find("Spotify.Track")}), failed(notRetrieved));
    EXPECT_EQ(spotify.calls, Strings());
}

TEST_F(PlaybackTest, ALoadFromInsideTheBackendOrItsFactoryIsRefusedAndChangesNothing) {
    int refusals = 0;
    const auto nest = [&](FakeBackend&) {
        spotify.calls.clear();
        EXPECT_EQ(session("playerLoad", {track}), failed("Could not initialize backend"));
        EXPECT_EQ(spotify.calls, Strings());
        ++refusals;
    };
    factory.whenRequested = factory.whenReleased = factory.whenWritten = nest;
    load();
    EXPECT_EQ(refusals, 1);
    EXPECT_EQ(deliver(100), 100);
    load().request(0, 40);
    EXPECT_EQ(refusals, 3);
    EXPECT_EQ(deliver(100), 100);
    host->advance(250);
    EXPECT_EQ(refusals, 4);
    EXPECT_EQ(factory.current().writes.size(), 1U);
    host->close(page);
    EXPECT_EQ(refusals, 5);
    factory.whenRequested = factory.whenReleased = factory.whenWritten = nullptr;
}

TEST_F(PlaybackTest, ASoundThatComesWhileTheTrackIsBeingLoadedIsRefusedOrKept) {
    load();
    int taken = -1;
    spotify.duringPlayerLoad = [&] { taken = deliver(100, 'n'); };
    FakeBackend& backend = load();
    spotify.duringPlayerLoad = nullptr;
    EXPECT_EQ(deliver(100, 'm'), 100);
    backend.request(0, 100);
    host->advance(250);
    ASSERT_EQ(backend.writes.size(), 1U);
    EXPECT_EQ(backend.writes[0].bytes[48], taken == 0 ? 'm' : 'n')
        << "the new track's first frames were taken and lost";
}

TEST_F(PlaybackTest, PlaySeekUnloadAndPrefetchReachTheLibraryAndTheBackend) {
    EXPECT_EQ(session("playerPlay", {true}), returned(0)) << "without a backend";
    FakeBackend& backend = load();
    spotify.calls.clear();
    spotify.answers["sp_session_player_play"] = 5;
    EXPECT_EQ(session("playerPlay", {false}), returned(5));
    EXPECT_EQ(session("playerPlay", {true}), returned(5));
    EXPECT_EQ(session("playerSeek", {1500.9}), nothing());
    EXPECT_EQ(session("playerUnload"), nothing());
    spotify.answers["sp_session_player_prefetch"] = 6;
    EXPECT_EQ(session("playerPrefetch", {track}), returned(6));
    EXPECT_EQ(
        spotify.calls,
        (Strings{"sp_session_player_play(session, false)", "sp_session_player_play(session, true)",
                 "sp_session_player_seek(session, 1500)", "sp_session_player_unload(session)",
                 "sp_session_player_prefetch(session, track)"}));
    EXPECT_EQ(backend.log, "source(\"\", 2, end, 0) play pause(0) play ");
    EXPECT_FALSE(backend.released());
}

TEST_F(PlaybackTest, TheEndIsToldWhenTheBackendHasPlayedOutWhatWasDelivered) {
    FakeBackend& backend = load();
    spotify.callbacks().end_of_track(spotify.session());
    EXPECT_EQ(deliver(1), 0);
    jsplugin_obj* listener = host->function(page);
    call("Spotify.Sonolet", "addEventListener", {"TrackComplete", listener});
    tick();
    EXPECT_EQ(host->callsOf(listener), 0);
    std::thread([&] { backend.send(4); }).join();
    tick();
    ASSERT_EQ(host->callsOf(listener), 1);
    EXPECT_EQ(host->calls.back().arguments, Values());
    EXPECT_FALSE(backend.released()) << "the track stays until the next";
}

TEST_F(PlaybackTest, UnloadingThePageStopsPlaybackFirst) {
    FakeBackend& backend = load();
    backend.request(0, 4096);
    jsplugin_obj* elsewhere = host->open();
    jsplugin_obj* listener = host->function(elsewhere);
    host->call(host->find(elsewhere, "Spotify.Sonolet"), "addEventListener",
               {"TrackComplete", listener});
    spotify.calls.clear();
    host->unload(page);
    EXPECT_EQ(spotify.calls,
              (Strings{"sp_session_player_unload(session)", "sp_session_logout(session)"}));
    EXPECT_TRUE(backend.released());
    EXPECT_EQ(log.count(2, "Session::forceStopPlayback"), 1);
    tick();
    EXPECT_EQ(host->callsOf(listener), 1);
    EXPECT_EQ(session("playerPlay", {true}).code, JSP_CALL_VALUE) << "the session stays created";
}
