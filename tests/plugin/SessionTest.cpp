#include "Session.h"

#include "PluginTest.h"

#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

constexpr char notInitialized[] = "Spotify is not initialized";
constexpr char notRetrieved[] = "Failed to retrieve object from Spotify";

class SessionTest : public PluginTest {
protected:
    Answer session(const std::string& name, const std::vector<Value>& values = {}) {
        return call("Spotify.Session", name, values);
    }
};

// A session with a track loaded, and the backend that plays it.
class PlaybackTest : public SessionTest {
protected:
    PlaybackTest() {
        createSession();
        handle = spotify.addTrack("track");
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
    int callsAfterTick(const char* event) {
        jsplugin_obj* listener = host->function(page);
        call("Spotify.Sonolet", "addEventListener", {event, listener});
        host->advance(250);
        tick();
        return host->callsOf(listener);
    }

    sp_track* handle = nullptr;
    jsplugin_obj* track = nullptr;
};

}  // namespace

TEST_F(SessionTest, OptionsKeepTheirValueOnErrorAndReachTheLibrary) {
    jsplugin_obj* config = find("Spotify.SessionConfig");
    for (const char* name : {"userAgent", "proxy", "proxyUsername", "proxyPassword"}) {
        EXPECT_EQ(host->get(config, name),
                  valued(std::string(name) == "userAgent" ? "User-Agent string" : ""));
        EXPECT_EQ(host->set(config, name, std::string("my ") + name), stored());
        EXPECT_EQ(host->set(config, name, 5), (Answer{JSP_PUT_EXCEPTION, "Not a string"}));
        EXPECT_EQ(host->get(config, name), valued(std::string("my ") + name));
    }
    for (const char* name :
         {"compressPlaylists", "dontSaveMetadataForPlaylists", "initiallyUnloadPlaylists"}) {
        EXPECT_EQ(host->get(config, name), valued(false));
        EXPECT_EQ(host->set(config, name, true), stored());
        EXPECT_EQ(host->set(config, name, 0), (Answer{JSP_PUT_EXCEPTION, "Not a boolean"}));
        EXPECT_EQ(host->get(config, name), valued(true));
    }
    host->set(config, "dontSaveMetadataForPlaylists", false);
    createSession();
    EXPECT_FALSE(spotify.config["key"].empty());
    spotify.config.erase("key");
    const std::map<std::string, std::string> expected = {
        {"api", "12"},
        {"cache", "/var/tmp/spotify_cache"},
        {"settings", "/settings/spotify"},
        {"certificates", "/etc/ssl/certs_static/ca-certificates.crt"},
        {"agent", "my userAgent"},
        {"compress", "1"},
        {"dont_save", "0"},
        {"unload", "1"},
        {"proxy", "my proxy"},
        {"proxy_username", "my proxyUsername"},
        {"proxy_password", "my proxyPassword"}};
    EXPECT_EQ(spotify.config, expected);
}

TEST_F(SessionTest, BeforeCreateEveryFunctionSaysSo) {
    for (const char* name :
         {"relogin", "playerLoad", "friend", "numFriends", "userCountry", "playerUnload",
          "rememberedUser", "playerPrefetch", "playerSeek", "logout", "user", "setCacheSize",
          "forgetMe", "connectionstate", "login", "playerPlay", "signupGetUnacceptedLicenses",
          "signupPerformAction"}) {
        EXPECT_EQ(session(name), failed(notInitialized)) << name;
    }
    for (const char* kind : {"Spotify.Track", "Spotify.Album", "Spotify.Artist"}) {
        EXPECT_EQ(call(kind, "create"), failed("Not enough arguments"));
        EXPECT_EQ(call(kind, "create", {5}), failed("Not a string"));
        EXPECT_EQ(call(kind, "create", {"x"}), failed("Spotify not initialized correctly"));
    }
    host->advance(1000);
    EXPECT_TRUE(host->calls.empty());
    EXPECT_TRUE(spotify.calls.empty()) << spotify.calls[0];
}

TEST_F(SessionTest, CreateChecksItsArgumentFailsCleanlyAndMakesOneSession) {
    EXPECT_EQ(session("create"), failed("Not enough arguments"));
    EXPECT_EQ(session("create", {"x"}), failed("Not an interface"));
    EXPECT_EQ(session("create", {host->pageObject(page)}), failed("Not a jspp interface"));
    EXPECT_EQ(session("create", {find("Spotify.Session")}),
              failed("Parameter is not of the requested interface type."));
    spotify.answers["sp_session_create"] = SP_ERROR_BAD_APPLICATION_KEY;
    EXPECT_EQ(session("create", {find("Spotify.SessionConfig")}),
              failed("Failed to initialize libspotify"));
    EXPECT_EQ(session("relogin"), failed(notInitialized));
    EXPECT_EQ(log.count(2, "Session::createInitializing Spotify session: OK"), 0);
    spotify.answers.clear();
    createSession();
    createSession();
    EXPECT_EQ(session("create"), returned(find("Spotify.Session")));
    EXPECT_EQ(spotify.sessionsCreated, 1);
    EXPECT_EQ(log.count(2, "Session::createInitializing Spotify session: OK"), 1);
}

TEST_F(SessionTest, LoginPassesAnEmptyBlobAsNullAndSetsTheBitrateWhateverComes) {
    createSession();
    spotify.calls.clear();
    EXPECT_EQ(session("login", {"me", "secret", true, ""}), returned(0));
    spotify.answers["sp_session_login"] = SP_ERROR_BAD_USERNAME_OR_PASSWORD;
    EXPECT_EQ(session("login", {"me", "", false, "blob"}), returned(6));
    EXPECT_EQ(spotify.calls, (Strings{"sp_session_login(session, me, secret, true, null)",
                                      "sp_session_preferred_bitrate(session, 1)",
                                      "sp_session_login(session, me, , false, blob)",
                                      "sp_session_preferred_bitrate(session, 1)"}));
    const std::vector<std::pair<std::vector<Value>, const char*>> wrong = {
        {{}, "Not enough arguments"},
        {{1}, "Not a string"},
        {{"me", 1}, "Not a string"},
        {{"me", "s", 1}, "Not a boolean"},
        {{"me", "s", true}, "Not enough arguments"},
        {{"me", "s", true, Value::null()}, "Not a string"}};
    for (const auto& [values, message] : wrong) {
        EXPECT_EQ(session("login", values), failed(message));
    }
    EXPECT_EQ(spotify.calls.size(), 4U) << "the library was called in spite of a wrong argument";
}

TEST_F(SessionTest, AccountFunctionsAnswerWhatTheLibraryDoes) {
    createSession();
    const std::map<std::string, std::string> numbers = {{"relogin", "relogin"},
                                                        {"numFriends", "num_friends"},
                                                        {"userCountry", "user_country"},
                                                        {"forgetMe", "forget_me"},
                                                        {"connectionstate", "connectionstate"}};
    for (const auto& [name, function] : numbers) {
        spotify.answers["sp_session_" + function] = 7;
        EXPECT_EQ(session(name, {"ignored"}), returned(7)) << name;
    }
    EXPECT_EQ(session("rememberedUser"), returned(Value::null()));
    const std::string longName(300, 'n');
    for (const char* name : {"", "me", longName.c_str()}) {
        spotify.texts["sp_session_remembered_user"] = name;
        EXPECT_EQ(session("rememberedUser"), returned(name));
    }
    EXPECT_EQ(session("setCacheSize", {100.7}), nothing());
    EXPECT_EQ(session("setCacheSize"), failed("Not enough arguments"));
    EXPECT_EQ(session("setCacheSize", {"1"}), failed("Not a number"));
    EXPECT_EQ(spotify.callsTo("sp_session_set_cache"),
              Strings{"sp_session_set_cache_size(session, 100)"});
    EXPECT_EQ(session("signupGetUnacceptedLicenses"), returned(""));
    spotify.texts["sp_session_signup_get_unaccepted_licenses"] = "licences";
    EXPECT_EQ(session("signupGetUnacceptedLicenses"), returned("licences"));
    spotify.answers["sp_session_signup_perform_action"] = 9;
    EXPECT_EQ(session("signupPerformAction", {8}), returned(9));
    EXPECT_EQ(session("signupPerformAction"), failed("Not enough arguments"));
    EXPECT_EQ(spotify.callsTo("sp_session_signup_perform"),
              Strings{"sp_session_signup_perform_action(session, 8)"});
}

TEST_F(SessionTest, UsersAreWrappedAnewOnEveryRequest) {
    createSession();
    EXPECT_EQ(session("user"), failed(notRetrieved));
    EXPECT_EQ(session("friend", {0}), failed(notRetrieved));
    EXPECT_EQ(session("friend"), failed("Not enough arguments"));
    EXPECT_EQ(session("friend", {"0"}), failed("Not a number"));
    spotify.user = spotify.addUser("me");
    spotify.friends = {spotify.addUser("friend0"), spotify.addUser("friend1")};
    const Answer first = session("user");
    EXPECT_EQ(host->call(first.value.object, "fullName"), returned("full"));
    EXPECT_NE(session("user"), first);
    EXPECT_EQ(spotify.user->references, 2);
    EXPECT_EQ(session("friend", {1.9}).code, JSP_CALL_VALUE);
    EXPECT_EQ(spotify.friends[1]->references, 1);
}

TEST_F(SessionTest, LogoutTakesTheHandlesInOrderAndThenLogsOut) {
    createSession();
    spotify.addTrack("track");
    spotify.user = spotify.addUser("user");
    const std::vector<jsplugin_obj*> wrappers = {
        session("user").value.object, create("Track", "track"),
        create("Artist", "track.album.artist"), create("Album", "track.album")};
    host->collect(create("Track", "track"));  // dead ones are passed over
    create("Track", "track");
    spotify.calls.clear();
    EXPECT_EQ(session("logout"), nothing());
    EXPECT_EQ(spotify.calls,
              (Strings{"sp_album_release(track.album)", "sp_artist_release(track.album.artist)",
                       "sp_track_release(track)", "sp_track_release(track)",
                       "sp_user_release(user)", "sp_session_logout(session)"}));
    EXPECT_EQ(log.count(2, "Session::logoutlogging out"), 1);
    for (jsplugin_obj* wrapper : wrappers) {
        EXPECT_EQ(host->call(wrapper, "isLoaded"), failed(notRetrieved));
        EXPECT_EQ(host->get(wrapper, "addEventListener").code, JSP_GET_VALUE_CACHE);
    }
    EXPECT_EQ(session("playerLoad", {wrappers[1]}), failed(notRetrieved));
    EXPECT_EQ(session("logout"), nothing()) << "clearing an empty factory";
    EXPECT_EQ(spotify.callsTo("sp_track_release").size(), 2U);
}

TEST_F(SessionTest, TheLibrarysSessionGoesOnceAfterTheRootAndTheLastWrapper) {
    createSession();
    spotify.addTrack("track");
    jsplugin_obj* track = create("Track", "track");
    for (const char* path : {"Spotify.SessionConfig", "Spotify.Session", "Spotify.Track"}) {
        host->collect(find(path));
    }
    host->collect(find("Spotify"));
    renewRoot();
    EXPECT_EQ(spotify.sessionsReleased, 0) << "released under a living wrapper";
    EXPECT_EQ(host->call(track, "name"), returned("Track"));
    spotify.calls.clear();
    host->collect(track);
    EXPECT_EQ(spotify.calls, (Strings{"sp_track_release(track)", "sp_session_logout(session)",
                                      "sp_session_release(session)"}));
}

TEST_F(SessionTest, EveryCallbackRaisesItsEventWithItsArguments) {
    createSession();
    sp_session* const from = spotify.session();
    const sp_session_callbacks& on = spotify.callbacks();
    struct Case {
        const char* event;
        std::function<void()> raise;
        std::vector<Value> arguments;
    };
    const std::vector<Case> cases = {
        {"LoggedIn", [&] { on.logged_in(from, SP_ERROR_USER_BANNED); }, {7}},
        {"LoggedOut", [&] { on.logged_out(from); }, {}},
        {"MetadataUpdated", [&] { on.metadata_updated(from); }, {}},
        {"ConnectionError", [&] { on.connection_error(from, SP_ERROR_OK); }, {0}},
        {"MessageToUser", [&] { on.message_to_user(from, "text"); }, {"text"}},
        {"PlayTokenLost", [&] { on.play_token_lost(from); }, {}},
        {"LogMessage", [&] { on.log_message(from, nullptr); }, {""}},
        {"EndOfTrack", [&] { on.end_of_track(from); }, {}},
        {"StreamingError", [&] { on.streaming_error(from, SP_ERROR_TIMEOUT); }, {29}},
        {"UserinfoUpdated", [&] { on.userinfo_updated(from); }, {}},
        {"OfflineStatusUpdated", [&] { on.offline_status_updated(from); }, {}},
        {"OfflineError", [&] { on.offline_error(from, SP_ERROR_OFFLINE_EXPIRED); }, {33}},
        {"CredentialsBlobUpdated", [&] { on.credentials_blob_updated(from, "blob"); }, {"blob"}},
        {"ShowSignupPage",
         [&] { on.show_signup_page(from, SP_SIGNUP_PAGE_DONE, true, 5, "who"); },
         {6, true, 5, "who"}},
        {"ShowSignupErrorPage",
         [&] { on.show_signup_error_page(from, SP_SIGNUP_PAGE_NONE, SP_ERROR_TIMEOUT); },
         {0, 29}},
        {"ShowTrialWelcome", [&] { on.show_trial_welcome(from); }, {}}};
    for (const Case& each : cases) {
        jsplugin_obj* listener = host->function(page);
        jsplugin_obj* handler = host->function(page);
        session("addEventListener", {each.event, listener});
        std::string attribute = std::string("on") + each.event;
        attribute = attribute == "onMetadataUpdated" ? "onMetaDataUpdated" : attribute;
        const bool hasHandler =
            host->set(find("Spotify.Session"), attribute, handler).code == JSP_PUT_OK;
        host->calls.clear();
        each.raise();
        EXPECT_TRUE(host->calls.empty()) << each.event << " ran inside the callback";
        tick();
        ASSERT_EQ(host->calls.size(), hasHandler ? 2U : 1U) << each.event;
        EXPECT_EQ(host->calls[0].function, listener) << each.event;
        for (const FakeHost::Call& made : host->calls) {
            EXPECT_EQ(made.arguments, each.arguments) << each.event;
        }
    }
    host->calls.clear();
    on.notify_main_thread(from);
    on.connect_to_facebook(from, "permissions");
    tick();
    EXPECT_TRUE(host->calls.empty());
}

TEST_F(SessionTest, CallbacksWithoutASessionObjectDoNothing) {
    createSession();
    sp_session* const from = spotify.session();
    const sp_session_callbacks on = spotify.callbacks();
    host.reset();
    g_spotify_instance_Spotify.reset();
    const sp_audioformat format{SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, 2};
    const int frame = 0;
    EXPECT_EQ(on.music_delivery(from, &format, &frame, 1), 0);
    on.end_of_track(from);
    on.log_message(from, "late");
    on.logged_out(from);
    EXPECT_EQ(Session::instance.load(), nullptr);
    host = std::make_unique<FakeHost>();
    renewRoot();
    host->open();
}

TEST_F(PlaybackTest, EachTickDrivesTheLibraryThenThePlayerAndReportsThePosition) {
    FakeBackend& backend = load();
    backend.position = 1.25;
    jsplugin_obj* listener = host->function(page);
    call("Spotify.Sonolet", "addEventListener", {"TrackProgress", listener});
    spotify.duringProcessEvents = [&] {
        EXPECT_EQ(deliver(100), 100);
        backend.request(0, 400);  // served in the same tick, from what has just come
    };
    session("playerPlay", {false});
    spotify.calls.clear();
    host->advance(250);
    EXPECT_EQ(backend.writes.size(), 1U);
    EXPECT_EQ(spotify.calls, Strings{"sp_session_process_events(session)"});
    host->advance(850);
    EXPECT_EQ(spotify.calls.size(), 4U) << "the period follows what the library asks for";
    EXPECT_EQ(host->callsOf(listener), 4);
    EXPECT_EQ(host->calls[0].arguments, std::vector<Value>{1.25});
    spotify.duringProcessEvents = nullptr;
}

TEST_F(PlaybackTest, LoadReplacesTheTrackAndItsBackendWhateverTheLibraryAnswers) {
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
    EXPECT_EQ(session("playerSeek", {-0.5}), nothing());
    EXPECT_EQ(session("playerUnload"), nothing());
    spotify.answers["sp_session_player_prefetch"] = 6;
    EXPECT_EQ(session("playerPrefetch", {track}), returned(6));
    EXPECT_EQ(
        spotify.calls,
        (Strings{"sp_session_player_play(session, false)", "sp_session_player_play(session, true)",
                 "sp_session_player_seek(session, 1500)", "sp_session_player_seek(session, 0)",
                 "sp_session_player_unload(session)",
                 "sp_session_player_prefetch(session, track)"}));
    EXPECT_EQ(backend.log, "source(\"\", 2, end, 0) play pause(0) play ");
    EXPECT_FALSE(backend.released());
    EXPECT_EQ(log.count(2, "Session::playerLoad"), 1);
    EXPECT_EQ(log.count(2, "Session::playerPlay"), 3);
}

TEST_F(PlaybackTest, WrongArgumentsAreToldWithoutTouchingTheLibrary) {
    for (const char* name : {"playerLoad", "playerPrefetch"}) {
        EXPECT_EQ(session(name), failed("Not enough arguments"));
        EXPECT_EQ(session(name, {"track"}), failed("Not an interface"));
        EXPECT_EQ(session(name, {host->pageObject(page)}), failed("Not a jspp interface"));
        EXPECT_EQ(session(name, {create("Album", "track.album")}),
                  failed("Parameter is not of the requested interface type."));
        EXPECT_EQ(session(name, {find("Spotify.Track")}), failed(notRetrieved));
    }
    EXPECT_EQ(session("playerPlay"), failed("Not enough arguments"));
    EXPECT_EQ(session("playerPlay", {1}), failed("Not a boolean"));
    EXPECT_EQ(session("playerSeek"), failed("Not enough arguments"));
    EXPECT_EQ(session("playerSeek", {"1"}), failed("Not a number"));
    EXPECT_TRUE(spotify.callsTo("sp_session_player").empty());
    EXPECT_TRUE(factory.backends.empty());
}

TEST_F(PlaybackTest, DeliveriesAreTakenWholeUntilTheEndAndRefusedWithoutATrack) {
    EXPECT_EQ(deliver(10), 0);
    spotify.callbacks().end_of_track(spotify.session());
    load();
    int taken = 0;
    while (deliver(2048) == 2048) {
        ++taken;
    }
    EXPECT_EQ(taken, 79);
    EXPECT_EQ(deliver(2048), 0);
    EXPECT_GE(log.count(2, "Session::handleMusicDeliveryEvent"), taken);
    spotify.callbacks().end_of_track(spotify.session());
    EXPECT_EQ(deliver(1), 0);
    EXPECT_EQ(log.count(2, "Session::handleEndOfTrackEvent"), 2);
}

TEST_F(PlaybackTest, TheEndIsToldWhenTheBackendHasPlayedItOut) {
    FakeBackend& backend = load();
    spotify.callbacks().end_of_track(spotify.session());
    EXPECT_EQ(callsAfterTick("TrackComplete"), 0);
    std::thread([&] { backend.send(4); }).join();
    tick();
    EXPECT_EQ(host->calls.back().arguments, std::vector<Value>());
    EXPECT_EQ(host->calls.size(), 1U);
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
