// Links: what is one, what it leads to, and that it leads to the same everywhere.

#include "Id.h"
#include "TestMusic.h"
#include "TestSession.h"

#include <gtest/gtest.h>

#include <string>

namespace sonolet::test {

namespace {

std::string roundTrip(const std::string& text) {
    sp_link* link = sp_link_create_from_string(text.c_str());
    char buffer[128] = "(no link)";
    sp_link_as_string(link, buffer, sizeof(buffer));
    sp_link_release(link);
    return buffer;
}

sp_linktype typeOf(const std::string& text) {
    sp_link* link = sp_link_create_from_string(text.c_str());
    const sp_linktype type = sp_link_type(link);
    sp_link_release(link);
    return type;
}

const std::string digits = "0123456789abcdefABCDEF";

TEST(LinkTest, KnowsEveryKind) {
    EXPECT_EQ(typeOf("spotify:track:" + digits), SP_LINKTYPE_TRACK);
    EXPECT_EQ(typeOf("spotify:album:" + digits), SP_LINKTYPE_ALBUM);
    EXPECT_EQ(typeOf("spotify:artist:" + digits), SP_LINKTYPE_ARTIST);
    EXPECT_EQ(typeOf("spotify:user:ann"), SP_LINKTYPE_PROFILE);
    EXPECT_EQ(typeOf("spotify:user:ann:starred"), SP_LINKTYPE_STARRED);
    EXPECT_EQ(typeOf("spotify:user:ann:playlist:" + digits), SP_LINKTYPE_PLAYLIST);
    EXPECT_EQ(typeOf("spotify:search:blue+note"), SP_LINKTYPE_SEARCH);
    EXPECT_EQ(typeOf("spotify:image:" + std::string(40, 'a')), SP_LINKTYPE_IMAGE);
}

TEST(LinkTest, KeepsItsTextAndTheOffset) {
    for (const std::string& text :
         {"spotify:track:" + digits, "spotify:track:" + digits + "#1:07",
          "spotify:track:" + digits + "#123:59", "spotify:artist:" + digits,
          std::string("spotify:user:ann:starred")}) {
        EXPECT_EQ(roundTrip(text), text);
    }
    sp_link* link = sp_link_create_from_string(("spotify:track:" + digits).c_str());
    char small[9] = "";
    EXPECT_EQ(sp_link_as_string(link, small, sizeof(small)), 36);
    EXPECT_STREQ(small, "spotify:");
    EXPECT_EQ(sp_link_as_string(link, nullptr, 0), 36);
    EXPECT_EQ(sp_link_as_track(link), nullptr) << "without a session nothing is led to";
    sp_link_release(link);
}

TEST(LinkTest, RefusesWhatIsMalformed) {
    for (const std::string& text : {std::string(),
                                    std::string("spotify"),
                                    std::string("spotify:"),
                                    "Spotify:track:" + digits,
                                    "spotify:track" + digits,
                                    "spotify:track:" + digits + "0",
                                    "spotify:track:" + digits.substr(1),
                                    "spotify:track:" + digits.substr(1) + "-",
                                    "spotify:track:" + std::string(22, 'Z'),  // over 128 bits
                                    " spotify:track:" + digits,
                                    "spotify:track:" + digits + " ",
                                    "spotify:track:" + digits + ":",
                                    "spotify:track:" + digits + "#",
                                    "spotify:track:" + digits + "#1:7",
                                    "spotify:track:" + digits + "#1:60",
                                    "spotify:track:" + digits + "#-1:00",
                                    "spotify:track:" + digits + "#99999:00",
                                    "spotify:album:" + digits + "#1:00",
                                    std::string("spotify:user:"),
                                    std::string("spotify:user::starred"),
                                    std::string("spotify:user:ann:"),
                                    std::string("spotify:user:ann:playlist:short"),
                                    std::string("spotify:user:ann:playlist:") + digits + ":x",
                                    std::string("spotify:user:a b"),
                                    std::string("spotify:image:xyz"),
                                    std::string("spotify:nothing:") + digits}) {
        EXPECT_EQ(sp_link_create_from_string(text.c_str()), nullptr) << text;
    }
}

TEST(LinkTest, EveryIdHasOneText) {
    service::Id id;
    for (unsigned step = 0; step < 1000; ++step) {
        EXPECT_EQ(service::Id::fromText(id.text()), id);
        id = service::Id::digest({id.view()});
    }
    id.bytes.fill(0xff);
    EXPECT_EQ(service::Id::fromText(id.text()), id);
}

TEST(LinkTest, TheSameTagsGiveTheSameLinksEverywhere) {
    const TagList tags = {{"TITLE", "Größe"}, {"ARTIST", "Ann"}, {"ALBUM", "One"}};
    const TagList spelled = {{"TITLE", "GRÖSSE  "}, {"ARTIST", "ann"}, {"ALBUM", "one"}};
    std::string first;
    {
        const TestMusic music;
        music.add("a/deep/folder/song.wav", tags);
        TestSession session;
        ASSERT_TRUE(session.untilScanned());
        first = music.link("Größe");
    }
    const TestMusic music;
    music.add("other.wav", spelled, 1000);
    TestSession session;
    ASSERT_TRUE(session.untilScanned());
    EXPECT_EQ(music.link("GRÖSSE"), first);
}

TEST(LinkTest, LeadsToOneHandleForAsLongAsItLives) {
    const TestMusic music;
    music.add("song.wav", {{"TITLE", "Song"}, {"ARTIST", "Ann"}, {"ALBUM", "One"}});
    TestSession session;
    ASSERT_TRUE(session.untilScanned());
    const std::string text = music.link("Song");
    sp_link* first = sp_link_create_from_string(text.c_str());
    sp_link* second = sp_link_create_from_string((text + "#0:30").c_str());
    sp_track* track = sp_link_as_track(first);
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(sp_link_as_track(second), track);
    EXPECT_EQ(sp_link_as_album(first), nullptr);
    EXPECT_EQ(sp_link_as_artist(first), nullptr);
    sp_track_add_ref(track);
    sp_link_release(first);
    sp_link_release(second);
    EXPECT_STREQ(sp_track_name(track), "Song");

    sp_link* made = sp_link_create_from_track(track, 61999);
    char buffer[64] = "";
    sp_link_as_string(made, buffer, sizeof(buffer));
    EXPECT_EQ(buffer, text + "#1:01");
    sp_link_release(made);

    session.release();
    EXPECT_STREQ(sp_track_name(track), "Song") << "a handle may outlive its session";
    EXPECT_EQ(sp_track_release(track), SP_ERROR_OK);
}

TEST(LinkTest, AnUnknownTrackLoadsWhenTheScanFindsIt) {
    const TestMusic music;
    const TagList tags = {{"TITLE", "Late"}, {"ARTIST", "Ann"}, {"ALBUM", "One"}};
    std::string text;
    {
        music.add("late.wav", tags);
        TestSession session;
        ASSERT_TRUE(session.untilScanned());
        text = music.link("Late");
        music.remove("late.wav");
    }
    const TestMusic fresh;
    fresh.add("late.wav", tags);
    TestSession session;
    sp_link* link = sp_link_create_from_string(text.c_str());
    sp_track* track = sp_link_as_track(link);
    EXPECT_FALSE(sp_track_is_loaded(track));
    EXPECT_EQ(sp_track_error(track), SP_ERROR_IS_LOADING);
    EXPECT_EQ(sp_track_album(track), nullptr);
    ASSERT_TRUE(session.until([&] { return sp_track_is_loaded(track); }));
    EXPECT_EQ(sp_track_error(track), SP_ERROR_OK);
    EXPECT_GE(session.heard("metadata_updated"), 1U);
    EXPECT_STREQ(sp_artist_name(sp_track_artist(track, 0)), "Ann");
    sp_link_release(link);
}

}  // namespace

}  // namespace sonolet::test
