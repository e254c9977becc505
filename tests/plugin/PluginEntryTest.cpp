#include "PluginTest.h"

namespace {

using PluginEntryTest = PluginTest;

}  // namespace

TEST_F(PluginEntryTest, LoadingTellsItOnceHandsOutTheRecordAndMakesTheContexts) {
    log.reset();
    testing::internal::CaptureStderr();
    const struct jsplugin_capabilities& record = FakeHost::load();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "====== SONOLET LOADED ======\n");
    EXPECT_STREQ(record.global_names[0], "Spotify");
    EXPECT_EQ(record.global_names[1], nullptr);
    EXPECT_EQ(record.object_types[0], nullptr);
    EXPECT_EQ(record.global_setter, nullptr);
    EXPECT_EQ(record.allow_access("http", "anywhere", 80), 1);
    record.destroy(page);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.lines[0].text, "====== spotify_interface plugin loaded ======");
    EXPECT_EQ(log.lines[0].file, "Src/main");
    EXPECT_EQ(log.lines[0].line, 54);
    EXPECT_EQ(log.lines[0].level, 2);
    log.threshold = 3;
    FakeHost::load();
    EXPECT_EQ(log.lines.size(), 1U) << "a line below the threshold was written";
    const Strings known = log.contexts;
    for (const char* place : {"Src/main:18", "Src/Logger:107", "Src/jspp/../Logger:107",
                              "Src/jspp/_detail/object_impl:16"}) {
        EXPECT_EQ(std::count(known.begin(), known.end(), std::string("Sonolet ") + place), 1)
            << place;
    }
    createSession();
    EXPECT_EQ(log.contexts, known) << "a context was made after load";
}

TEST_F(PluginEntryTest, EachDocumentGetsItsTicksItsUnloadListenerAndItsOwnGlobal) {
    EXPECT_EQ(host->lifecycle, (Strings{"poll 250", "poll 100", "unload listener"}));
    host->advance(10000);
    EXPECT_TRUE(spotify.callsTo("sp_session").empty()) << "the tick before the session did work";
    const Answer root = host->global(page, "Spotify");
    EXPECT_EQ(root.code, JSP_GET_VALUE_CACHE);
    EXPECT_EQ(host->global(page, "Spotify"), root);
    EXPECT_NE(host->global(host->open(), "Spotify"), root);
    for (const char* name : {"spotify", "Sonolet", ""}) {
        EXPECT_EQ(host->global(page, name).code, JSP_GET_NO_VALUE) << name;
    }
    host->refusesObjects = true;
    EXPECT_EQ(host->global(host->open(), "Spotify"), raised("Create object failed"));
}

TEST_F(PluginEntryTest, TheSessionIsReleasedOnceWhenTheProcessExits) {
    EXPECT_EXIT(
        {
            createSession();
            host.reset();
            exit(0);  // NOLINT(concurrency-mt-unsafe): the one thread
        },
        testing::ExitedWithCode(0), "released 1 of 1 sessions");
    const auto exitInsideACallback = [this] {
        createSession();
        host.reset();
        Session::withInstance([](Session&) { exit(0); });  // NOLINT(concurrency-mt-unsafe)
    };
    EXPECT_EXIT(exitInsideACallback(), testing::ExitedWithCode(0), "released 1 of 1 sessions");
}

// A wrapper of every kind that libspotify calls back, a queued call, and music.
TEST_F(PluginEntryTest, AHostMayTickUnloadAndCollectAfterTheExitHandlers) {
    const auto exitAmidst = [this] {
        createSession();
        spotify.add<sp_track>("track");
        spotify.handles = {
            {"sp_playlist_create", {spotify.add<sp_playlist>("playlist")}},
            {"sp_image_create", {spotify.add<sp_image>("image")}},
            {"sp_session_playlistcontainer", {spotify.add<sp_playlistcontainer>("list")}}};
        session("playerLoad", {create("Track", "track")});
        create("Playlist", "playlist");
        create("SpImage", imageText);
        session("Playlistcontainer");
        session("addEventListener", {"LoggedIn", host->function(page)});
        spotify.callbacks().logged_in(spotify.session(), SP_ERROR_OK);
        spotify.afterExit = [this] {
            host->advance(1000);
            const std::size_t calls = host->calls.size();
            host.reset();
            fprintf(stderr, "%zu calls, left: %s\n", calls, spotify.imbalance().c_str());
        };
        exit(0);  // NOLINT(concurrency-mt-unsafe): the one thread
    };
    EXPECT_EXIT(exitAmidst(), testing::ExitedWithCode(0),
                "1 calls, left: \nFakeSpotify: released 1 of 1 sessions");
}

TEST_F(PluginEntryTest, TheRootTellsItsVersionAndTheLibrarysTexts) {
    EXPECT_EQ(host->set(find("Spotify"), "Session", 1).code, JSP_PUT_READ_ONLY);
    spotify.texts["sp_error_message"] = "the text";
    EXPECT_EQ(call("Spotify", "errorMessage", {6.9}), returned("the text"));
    EXPECT_EQ(spotify.calls, Strings{"sp_error_message(6)"});
    spotify.texts.clear();
    EXPECT_EQ(call("Spotify", "errorMessage", {0}), returned(""));
    EXPECT_EQ(call("Spotify.Sonolet", "version"), returned("12.8/fake build"));

    log.reset();
    spotify.buildId = "";
    renewRoot();
    EXPECT_EQ(log.count(2, "Spotify::SpotifyInitializing the Spotify object"), 1);
    EXPECT_EQ(log.lines.back().file, "Src/Spotify");
    EXPECT_EQ(log.lines.back().line, 275);
    page = host->open();
    EXPECT_EQ(call("Spotify.Sonolet", "version"), returned("12.8/"));
}
