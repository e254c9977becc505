// Links: what is one, what it leads to, and that it leads to the same everywhere.

#include "TestMusic.h"
#include "TestSession.h"

namespace sonolet::test {
namespace {

const std::string digits = "0123456789abcdefABCDEF";

// A link's text: @ stands for the digits of an id.
std::string spelled(std::string rest) {
    const std::size_t at = rest.find('@');
    return "spotify:" + (at == std::string::npos ? rest : rest.replace(at, 1, digits));
}

std::string textOf(sp_link* link) {
    char buffer[128] = "(no link)";
    sp_link_as_string(link, buffer, sizeof(buffer));
    return buffer;
}

TEST(LinkTest, KnowsEveryKindAndKeepsItsText) {
    for (const auto& [rest, type] :
         {std::pair{"track:@", SP_LINKTYPE_TRACK},
          {"track:@#1:07", SP_LINKTYPE_TRACK},
          {"track:@#123:59", SP_LINKTYPE_TRACK},
          {"album:@", SP_LINKTYPE_ALBUM},
          {"artist:@", SP_LINKTYPE_ARTIST},
          {"user:ann", SP_LINKTYPE_PROFILE},
          {"user:ann:starred", SP_LINKTYPE_STARRED},
          {"user:ann:playlist:@", SP_LINKTYPE_PLAYLIST},
          {"search:blue+note", SP_LINKTYPE_SEARCH},
          {"image:0123456789abcdef0123456789abcdef01234567", SP_LINKTYPE_IMAGE}}) {
        const auto link = linkOf(spelled(rest));
        EXPECT_EQ(sp_link_type(link.get()), type) << rest;
        EXPECT_EQ(textOf(link.get()), spelled(rest));
    }
    char small[9] = "";
    EXPECT_EQ(sp_link_as_string(linkOf(spelled("track:@")).get(), small, sizeof(small)), 36);
    EXPECT_STREQ(small, "spotify:");
}

TEST(LinkTest, RefusesWhatIsMalformed) {
    std::istringstream malformed(
        "|track:|track@|track:@0|track:0@|track:short|track:-123456789abcdefABCDEF|"
        "track:ZZZZZZZZZZZZZZZZZZZZZZ|track: @|track:@ |track:@:|track:@#|track:@#1:7|track:@#1:60|"
        "track:@#-1:00|track:@#99999:00|album:@#1:00|user:|user::starred|user:ann:|"
        "user:ann:playlist:short|user:ann:playlist:@:x|user:a b|image:xyz|nothing:@");
    for (std::string rest; std::getline(malformed, rest, '|');) {
        EXPECT_EQ(linkOf(spelled(rest)), nullptr) << rest;
    }
    EXPECT_EQ(linkOf("Spotify:track:" + digits), nullptr);
}

TEST(LinkTest, TheSameTagsGiveTheSameLinkEverywhereAndItLoadsWhenAScanFindsIt) {
    std::string text;
    {
        const TestMusic music;
        music.add("a/deep/song.wav", "TITLE=Größe|ARTIST=Ann|ALBUM=One");
        const TestSession session(TestSession::State::Scanned);
        text = TestMusic::link("Größe");
    }
    const TestMusic music;
    TestSession session(TestSession::State::Scanned);
    const auto track = trackOf(text);
    EXPECT_EQ(trackOf(text + "#0:30"), track) << "one handle";
    EXPECT_EQ(sp_link_as_album(linkOf(text).get()), nullptr);
    EXPECT_FALSE(sp_track_is_loaded(track.get()));
    EXPECT_EQ(sp_track_album(track.get()), nullptr);
    const std::size_t told = session.heard("metadata");
    music.add("other.wav", "TITLE=GRÖSSE  |ARTIST=ann|ALBUM=one", 1000);
    ASSERT_EQ(run(SONOLET_INDEX).status, 0);
    ASSERT_TRUE(session.untilHeard("metadata", told + 1));
    EXPECT_EQ(sp_track_error(track.get()), SP_ERROR_OK);

    const auto link = linkOf(text);
    EXPECT_EQ(linkOf(text), link) << "one link, for those who never release theirs";
    EXPECT_EQ(textOf(linkOf(text + "#0:30").get()), text + "#0:30");
    sp_link* made = sp_link_create_from_track(track.get(), 61999);
    EXPECT_EQ(textOf(made), text + "#1:01");
    sp_link_release(made);
    session.release();
    EXPECT_STREQ(sp_track_name(track.get()), "GRÖSSE") << "a handle may outlive its session";
}

}  // namespace
}  // namespace sonolet::test
