#include "PluginTest.h"

#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using RootTest = PluginTest;

}  // namespace

TEST_F(RootTest, EveryAttributeIsTheSameObjectAtEveryReadAndCannotBeWritten) {
    EXPECT_EQ(host->get(find("Spotify"), "SPOTIFY_API_VERSION"), cached(12));
    EXPECT_EQ(host->get(find("Spotify"), "SPOTIFY_JS_API_VERSION"), cached("12.8"));
    for (const char* name : {"Session",
                             "SessionConfig",
                             "Sonolet",
                             "Track",
                             "Album",
                             "Artist",
                             "SP_SIGNUP_PAGE",
                             "SP_SIGNUP_FEATURE",
                             "SP_SIGNUP_ACTION",
                             "SP_ERROR",
                             "SP_PLAYLIST_TYPE",
                             "SP_TRACK_AVAILABILITY",
                             "SP_ARTISTBROWSE_TYPE",
                             "SP_ALBUMTYPE",
                             "SP_IMAGE_FORMAT",
                             "SP_RELATION_TYPE",
                             "SP_TOPLIST_TYPE",
                             "SP_TOPLIST_REGION",
                             "SP_SEARCH_TYPE",
                             "SP_PLUGIN_ERROR"}) {
        const Answer first = host->get(find("Spotify"), name);
        EXPECT_EQ(first.value.type, JSP_TYPE_NATIVE_OBJECT) << name;
        EXPECT_EQ(host->get(find("Spotify"), name), first) << name;
        EXPECT_EQ(host->set(find("Spotify"), name, 1).code, JSP_PUT_READ_ONLY) << name;
    }
    log.reset();
    renewRoot();
    EXPECT_EQ(log.count(2, "Spotify::SpotifyInitializing the Spotify object"), 1);
    EXPECT_EQ(log.lines.back().file, "Src/Spotify");
    EXPECT_EQ(log.lines.back().line, 275);
}

TEST_F(RootTest, EveryConstantOfTheLibraryIsOfferedWithItsValue) {
    const std::map<std::string, const char*> groups = {
        {"sp_error", "SP_ERROR"},
        {"sp_playlist_type", "SP_PLAYLIST_TYPE"},
        {"sp_track_availability", "SP_TRACK_AVAILABILITY"},
        {"sp_artistbrowse_type", "SP_ARTISTBROWSE_TYPE"},
        {"sp_albumtype", "SP_ALBUMTYPE"},
        {"sp_imageformat", "SP_IMAGE_FORMAT"},
        {"sp_relation_type", "SP_RELATION_TYPE"},
        {"sp_toplisttype", "SP_TOPLIST_TYPE"},
        {"sp_toplistregion", "SP_TOPLIST_REGION"},
        {"sp_signup_page", "SP_SIGNUP_PAGE"},
        {"sp_signup_feature", "SP_SIGNUP_FEATURE"},
        {"sp_signup_action", "SP_SIGNUP_ACTION"}};
    // "typedef enum { SP_A = 0, SP_B = 1 } sp_name;", token by token.
    std::ifstream header(SONOLET_LIBRARY_HEADER);
    std::vector<std::pair<std::string, int>> constants;
    int checked = 0;
    for (std::string token, name; header >> token; name = token) {
        if (token == "=") {
            int value = 0;
            header >> value;
            constants.emplace_back(name, value);
        } else if (name == "}" && groups.count(token.substr(0, token.size() - 1)) != 0) {
            const char* group = groups.at(token.substr(0, token.size() - 1));
            for (const auto& [constant, value] : constants) {
                EXPECT_EQ(host->get(find((std::string("Spotify.") + group).c_str()), constant),
                          cached(value))
                    << constant;
                ++checked;
            }
            constants.clear();
        } else if (name == "}") {
            constants.clear();
        }
    }
    EXPECT_EQ(checked, 82);
    jsplugin_obj* own = find("Spotify.SP_PLUGIN_ERROR");
    EXPECT_EQ(host->get(own, "SP_PLUGIN_ERROR_OK"), cached(0));
    EXPECT_EQ(host->get(own, "SP_PLUGIN_ERROR_GENERAL"), cached(1));
    EXPECT_EQ(host->get(own, "SP_PLUGIN_ERROR_NO_AUDIO"), cached(2));
    for (const char* name : {"SP_SEARCH_STANDARD", "SP_SEARCH_SUGGEST", "addEventListener"}) {
        EXPECT_EQ(host->get(find("Spotify.SP_SEARCH_TYPE"), name).code, JSP_GET_NO_PROPERTY);
    }
}

TEST_F(RootTest, ErrorMessagesAreTheLibrarys) {
    spotify.texts["sp_error_message"] = "the text";
    EXPECT_EQ(call("Spotify", "errorMessage", {6.9}), returned("the text"));
    EXPECT_EQ(spotify.calls, std::vector<std::string>{"sp_error_message(6)"});
    spotify.texts["sp_error_message"] = nullptr;
    EXPECT_EQ(call("Spotify", "errorMessage", {0}), returned(""));
    EXPECT_EQ(call("Spotify", "errorMessage"), failed("Not enough arguments"));
    EXPECT_EQ(call("Spotify", "errorMessage", {"x"}), failed("Not a number"));
}

TEST_F(RootTest, TheVersionNamesTheLibrarysBuild) {
    EXPECT_EQ(call("Spotify.Sonolet", "version"), returned("12.8/fake build"));
    spotify.buildId = "";
    renewRoot();
    jsplugin_obj* fresh = host->open();
    EXPECT_EQ(host->call(host->find(fresh, "Spotify.Sonolet"), "version"), returned("12.8/"));
}
