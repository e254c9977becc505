#include "PluginTest.h"

#include <fstream>
#include <map>
#include <utility>

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

TEST_F(PluginEntryTest, AnEmbeddedElementGetsNothing) {
    char text[] = "application/x-sonolet";
    jsplugin_attr attributes[] = {{text, text}};
    jsplugin_getter* getter = nullptr;
    jsplugin_setter* setter = nullptr;
    jsplugin_destructor* destructor = nullptr;
    jsplugin_gc_trace* trace = nullptr;
    jsplugin_notify* notify = nullptr;
    jsplugin_obj* element = host->pageObject(page);
    host->plugin().handle_object(page, element, 1, attributes, &getter, &setter, &destructor,
                                 &trace, &notify, &notify, &notify);
    EXPECT_EQ(getter, nullptr);
    EXPECT_EQ(element->plugin_private, nullptr);
}

TEST_F(PluginEntryTest, TheSessionIsReleasedOnceWhenTheProcessExits) {
    const auto leave = [&] {
        createSession();
        host.reset();
        exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "released 1 of 1 sessions");
}

TEST_F(PluginEntryTest, TheRootsAttributesAreTheSameObjectsAtEveryReadAndCannotBeWritten) {
    EXPECT_EQ(host->get(find("Spotify"), "SPOTIFY_API_VERSION"), cached(12));
    EXPECT_EQ(host->get(find("Spotify"), "SPOTIFY_JS_API_VERSION"), cached("12.8"));
    for (const char* name :
         {"Session", "SessionConfig", "Sonolet", "Track", "Album", "Artist", "SP_SEARCH_TYPE"}) {
        const Answer first = host->get(find("Spotify"), name);
        EXPECT_EQ(first.value.type, JSP_TYPE_NATIVE_OBJECT) << name;
        EXPECT_EQ(host->get(find("Spotify"), name), first) << name;
        EXPECT_EQ(host->set(find("Spotify"), name, 1).code, JSP_PUT_READ_ONLY) << name;
    }
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

TEST_F(PluginEntryTest, EveryConstantOfTheLibraryIsOfferedWithItsValue) {
    const std::map<std::string, const char*> groups = {
        {"sp_error;", "SP_ERROR"},
        {"sp_playlist_type;", "SP_PLAYLIST_TYPE"},
        {"sp_track_availability;", "SP_TRACK_AVAILABILITY"},
        {"sp_artistbrowse_type;", "SP_ARTISTBROWSE_TYPE"},
        {"sp_albumtype;", "SP_ALBUMTYPE"},
        {"sp_imageformat;", "SP_IMAGE_FORMAT"},
        {"sp_relation_type;", "SP_RELATION_TYPE"},
        {"sp_toplisttype;", "SP_TOPLIST_TYPE"},
        {"sp_toplistregion;", "SP_TOPLIST_REGION"},
        {"sp_signup_page;", "SP_SIGNUP_PAGE"},
        {"sp_signup_feature;", "SP_SIGNUP_FEATURE"},
        {"sp_signup_action;", "SP_SIGNUP_ACTION"}};
    // "typedef enum { SP_A = 0, SP_B = 1 } sp_name;", token by token.
    std::ifstream header(SONOLET_LIBRARY_HEADER);
    std::vector<std::pair<std::string, int>> constants;
    int checked = 0;
    for (std::string token, name; header >> token; name = token) {
        if (token == "=") {
            header >> constants.emplace_back(name, 0).second;
        } else if (name == "}") {
            const auto group = groups.find(token);
            for (const auto& [constant, value] : std::exchange(constants, {})) {
                if (group != groups.end()) {
                    const std::string path = std::string("Spotify.") + group->second;
                    EXPECT_EQ(host->get(find(path), constant), cached(value)) << constant;
                    ++checked;
                }
            }
        }
    }
    EXPECT_EQ(checked, 82);
    jsplugin_obj* own = find("Spotify.SP_PLUGIN_ERROR");
    for (const char* name : {"OK", "GENERAL", "NO_AUDIO"}) {
        EXPECT_EQ(host->get(own, std::string("SP_PLUGIN_ERROR_") + name), cached(checked++ - 82));
    }
    EXPECT_EQ(host->get(own, "addEventListener").code, JSP_GET_NO_PROPERTY);
}
