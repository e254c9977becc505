// The library's face: what it exports, and that nothing a caller gives it brings it down.

#include "TestMusic.h"

#include "libspotify/api.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace sonolet::test {

namespace {

// Every name that begins with sp_ and has an argument list behind it.
std::set<std::string> declaredFunctions() {
    std::ifstream stream(SPOTIFY_HEADER);
    const std::string header((std::istreambuf_iterator<char>(stream)), {});
    const auto inName = [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
    };
    std::set<std::string> names;
    for (std::size_t at = header.find("sp_"); at != std::string::npos;
         at = header.find("sp_", at)) {
        const std::size_t start = at;
        while (inName(header[at])) {
            ++at;
        }
        if (header[at] == '(' && !inName(header[start - 1])) {
            names.insert(header.substr(start, at - start));
        }
    }
    return names;
}

TEST(Interface, ExportsExactlyTheFunctionsOfTheHeader) {
    const Ran nm = runProgram("nm -D --defined-only " SPOTIFY_LIBRARY);
    ASSERT_EQ(nm.status, 0);
    std::set<std::string> exported;
    std::istringstream lines(nm.output);
    for (std::string address, type, name; lines >> address >> type >> name;) {
        EXPECT_EQ(type, "T") << name;
        exported.insert(name);
    }
    EXPECT_EQ(exported, declaredFunctions());
    EXPECT_EQ(exported.count("sp_session_create"), 1U);
}

TEST(Interface, CarriesItsNameAndNoVersionOfSymbols) {
    const Ran dynamic = runProgram("readelf -d -V " SPOTIFY_LIBRARY);
    ASSERT_EQ(dynamic.status, 0);
    EXPECT_NE(dynamic.output.find("soname: [libspotify.so.12]"), std::string::npos);
    EXPECT_EQ(dynamic.output.find("Version definition"), std::string::npos);
}

TEST(Interface, NullHandlesAnswerInsteadOfCrashing) {
    char buffer[8] = "";
    EXPECT_EQ(sp_session_release(nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_login(nullptr, "a", "b", false, nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_process_events(nullptr, nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_remembered_user(nullptr, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(sp_session_player_load(nullptr, nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_user(nullptr), nullptr);
    EXPECT_EQ(sp_session_playlistcontainer(nullptr), nullptr);
    EXPECT_EQ(sp_link_create_from_string(nullptr), nullptr);
    EXPECT_EQ(sp_link_create_from_track(nullptr, 0), nullptr);
    EXPECT_EQ(sp_link_as_track(nullptr), nullptr);
    EXPECT_EQ(sp_link_as_string(nullptr, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(sp_track_error(nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_track_album(nullptr), nullptr);
    EXPECT_STREQ(sp_track_name(nullptr), "");
    EXPECT_EQ(sp_track_release(nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_album_cover(nullptr, SP_IMAGE_SIZE_NORMAL), nullptr);
    EXPECT_EQ(sp_artist_portrait(nullptr, SP_IMAGE_SIZE_NORMAL), nullptr);
    EXPECT_EQ(sp_user_relation_type(nullptr, nullptr), SP_RELATION_TYPE_UNKNOWN);
    EXPECT_EQ(sp_search_track(nullptr, 0), nullptr);
    EXPECT_EQ(sp_playlist_num_tracks(nullptr), 0);
    std::size_t size = 1;
    EXPECT_EQ(sp_image_data(nullptr, &size), nullptr);
    EXPECT_EQ(size, 0U);
}

TEST(Interface, EveryErrorHasAMessageOfItsOwn) {
    std::set<std::string> messages;
    for (int number = SP_ERROR_OK; number <= SP_ERROR_OFFLINE_LICENSE_ERROR; ++number) {
        messages.insert(sp_error_message(static_cast<sp_error>(number)));
    }
    // All are different, and 4, which is no error, is told as an unknown one.
    EXPECT_EQ(messages.size(), static_cast<std::size_t>(SP_ERROR_OFFLINE_LICENSE_ERROR) + 1);
    EXPECT_STREQ(sp_error_message(static_cast<sp_error>(4)), "Unknown error");
}

}  // namespace

}  // namespace sonolet::test
