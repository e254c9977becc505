// The library's face: what it exports, and that nothing a caller gives it brings it down.

#include "TestMusic.h"

#include "libspotify/api.h"

namespace sonolet::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Interface, ExportsExactlyTheFunctionsOfTheHeader) {
    const Ran exported = run("nm -D --defined-only " SPOTIFY_LIBRARY " | cut -d' ' -f2- | sort");
    EXPECT_THAT(exported.output, HasSubstr("T sp_session_create\n"));
    const char* declared =
        "grep -oE '\\bsp_\\w+\\(' " SPOTIFY_HEADER " | sed 's/(//; s/^/T /' | sort -u";
    EXPECT_EQ(exported.output, run(declared).output);
    EXPECT_THAT(run("readelf -d -V " SPOTIFY_LIBRARY).output,
                testing::AllOf(HasSubstr("soname: [libspotify.so.12]"),
                               Not(HasSubstr("Version definition"))));
}

TEST(Interface, NullHandlesAnswerInsteadOfCrashing) {
    char buffer[8] = "";
    EXPECT_EQ(sp_session_process_events(nullptr, nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_session_remembered_user(nullptr, buffer, sizeof(buffer)), -1);
    EXPECT_EQ(sp_session_player_load(nullptr, nullptr), SP_ERROR_INVALID_INDATA);
    EXPECT_EQ(sp_link_create_from_string(nullptr), nullptr);
    EXPECT_EQ(sp_link_as_string(nullptr, buffer, sizeof(buffer)), -1);
    EXPECT_STREQ(sp_track_name(nullptr), "");
    EXPECT_EQ(sp_album_cover(nullptr, SP_IMAGE_SIZE_NORMAL), nullptr);
    EXPECT_EQ(sp_artist_portrait(nullptr, SP_IMAGE_SIZE_NORMAL), nullptr);
    EXPECT_EQ(sp_user_relation_type(nullptr, nullptr), SP_RELATION_TYPE_UNKNOWN);
    std::size_t size = 1;
    EXPECT_EQ(sp_image_data(nullptr, &size), nullptr);
    EXPECT_EQ(size, 0U);
}

}  // namespace
}  // namespace sonolet::test
