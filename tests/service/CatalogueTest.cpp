// What a scan makes of a folder, the first time and after changes.

#include "TestMusic.h"
#include "TestSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace sonolet::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What a session that only scans says of it.
std::string scanned() {
    TestSession session;
    EXPECT_TRUE(session.untilScanned());
    return session.logText();
}

// The handle behind a link, for as long as this lives.
class Held final {
public:
    explicit Held(const std::string& text) : link(sp_link_create_from_string(text.c_str())) {}
    ~Held() { sp_link_release(link); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    sp_track* track() const { return sp_link_as_track(link); }

private:
    sp_link* const link;
};

TEST(Catalogue, TellsWhatTheTagsSay) {
    const TestMusic music;
    music.add("a.wav",
              {{"TITLE", "First"},
               {"ARTIST", "Ann"},
               {"ARTIST", "Bob"},
               {"ALBUMARTIST", "The Band"},
               {"ALBUM", "Blue"},
               {"TRACKNUMBER", "3/9"},
               {"DISCNUMBER", "2"},
               {"DATE", "1994-05-02"}},
              44100);
    music.add("b.wav",
              {{"TITLE", "Loose"}, {"ARTIST", "Cyd"}, {"ALBUM", "Hits"}, {"COMPILATION", "1"}});
    music.add("folder/No tags.wav", {});
    TestSession session;
    ASSERT_TRUE(session.untilScanned());

    const Held first(music.link("First"));
    sp_track* track = first.track();
    EXPECT_STREQ(sp_track_name(track), "First");
    ASSERT_EQ(sp_track_num_artists(track), 2);
    EXPECT_STREQ(sp_artist_name(sp_track_artist(track, 0)), "Ann");
    EXPECT_STREQ(sp_artist_name(sp_track_artist(track, 1)), "Bob");
    EXPECT_EQ(sp_track_artist(track, 2), nullptr);
    EXPECT_EQ(sp_track_artist(track, -1), nullptr);
    EXPECT_EQ(sp_track_index(track), 3);
    EXPECT_EQ(sp_track_disc(track), 2);
    EXPECT_EQ(sp_track_duration(track), 1000);
    EXPECT_EQ(sp_track_get_availability(session.get(), track), SP_TRACK_AVAILABILITY_AVAILABLE);
    EXPECT_FALSE(sp_track_is_local(session.get(), track));
    sp_album* album = sp_track_album(track);
    EXPECT_STREQ(sp_album_name(album), "Blue");
    EXPECT_STREQ(sp_artist_name(sp_album_artist(album)), "The Band");
    EXPECT_EQ(sp_album_year(album), 1994);
    EXPECT_EQ(sp_album_type(album), SP_ALBUMTYPE_ALBUM) << "nine tracks, says the tag";
    EXPECT_TRUE(sp_album_is_available(album));
    EXPECT_EQ(sp_album_cover(album, SP_IMAGE_SIZE_NORMAL), nullptr);

    const Held loose(music.link("Loose"));
    sp_album* hits = sp_track_album(loose.track());
    EXPECT_EQ(sp_album_type(hits), SP_ALBUMTYPE_COMPILATION);
    EXPECT_STREQ(sp_artist_name(sp_album_artist(hits)), "Various Artists");

    const Held untagged(music.link("No tags"));
    EXPECT_STREQ(sp_artist_name(sp_track_artist(untagged.track(), 0)), "Unknown artist");
}

TEST(Catalogue, ReadsEveryFormat) {
    const TestMusic music;
    const std::pair<const char*, const char*> formats[] = {
        {"a.flac", "flacenc"},          {"b.ogg", "vorbisenc ! oggmux"},
        {"c.opus", "opusenc ! oggmux"}, {"d.ogg", "opusenc ! oggmux"},
        {"e.mp3", "lamemp3enc"},        {"f.m4a", "avenc_aac ! mp4mux"}};
    std::vector<std::string> expected;
    for (const auto& [name, elements] : formats) {
        // A tag library that tags by the ending does not see the format behind it.
        const bool hidden = std::string(name) == "d.ogg";
        music.encode(hidden ? "d.opus" : name, elements,
                     {{"TITLE", name}, {"ARTIST", "Ann"}, {"ALBUM", "Formats"}});
        if (hidden) {
            std::filesystem::rename(music.path("d.opus"), music.path(name));
        }
        expected.push_back(std::string(name) + " by Ann on Formats");
    }
    music.encode("g.aac", "avenc_aac ! aacparse ! audio/mpeg,stream-format=adts", {});
    expected.emplace_back("g by Unknown artist on Unknown album");
    TestSession session;
    ASSERT_TRUE(session.untilScanned());
    EXPECT_EQ(music.titles(), expected) << session.logText();
    for (const auto& [name, elements] : formats) {
        // Lossy formats are padded to whole frames.
        const Held held(music.link(name));
        EXPECT_NEAR(sp_track_duration(held.track()), 500, 100) << name;
    }
    EXPECT_NEAR(sp_track_duration(Held(music.link("g")).track()), 500, 100);
}

TEST(Catalogue, FollowsChanges) {
    const TestMusic music;
    music.add("keep.wav", {{"TITLE", "Keep"}});
    music.add("change.wav", {{"TITLE", "Before"}});
    music.add("folder/go.wav", {{"TITLE", "Go"}});
    EXPECT_THAT(scanned(), HasSubstr(": 3 tracks, 3 new, 0 changed, 0 removed, 0 skipped"));
    const std::string keep = music.link("Keep");
    const std::string go = music.link("Go");
    EXPECT_THAT(scanned(), HasSubstr(": 3 tracks, 0 new, 0 changed, 0 removed, 0 skipped"));

    std::filesystem::rename(music.path("folder/go.wav"), music.path("saved"));
    music.add("change.wav", {{"TITLE", "After"}}, 500);
    music.add("new/new.wav", {{"TITLE", "New"}});
    {
        TestSession session;
        ASSERT_TRUE(session.untilScanned());
        EXPECT_THAT(session.logText(),
                    HasSubstr(": 3 tracks, 1 new, 1 changed, 1 removed, 0 skipped"));
        EXPECT_EQ(music.link("Keep"), keep);
        const Held gone(go);
        EXPECT_STREQ(sp_track_name(gone.track()), "Go") << "what is gone keeps its name";
        EXPECT_EQ(sp_track_get_availability(session.get(), gone.track()),
                  SP_TRACK_AVAILABILITY_UNAVAILABLE);
    }
    std::filesystem::rename(music.path("saved"), music.path("folder/go.wav"));
    EXPECT_THAT(scanned(), HasSubstr(": 4 tracks, 1 new, 0 changed, 0 removed, 0 skipped"));
    EXPECT_EQ(music.link("Go"), go);

    // A file that only moves is the same track.
    std::filesystem::rename(music.path("folder/go.wav"), music.path("moved.wav"));
    scanned();
    EXPECT_EQ(music.link("Go"), go);
}

TEST(Catalogue, TellsFilesWithTheSameTagsApart) {
    const TestMusic music;
    const TagList tags = {{"TITLE", "Twin"}, {"ARTIST", "Ann"}, {"ALBUM", "One"}};
    music.add("a.wav", tags);
    scanned();
    const std::string only = music.link("Twin");
    music.add("b.wav", tags, 1000);
    scanned();
    EXPECT_EQ(music.titles().size(), 2U) << "both can be played";
    music.remove("a.wav");
    scanned();
    EXPECT_EQ(music.titles().size(), 1U);
    EXPECT_EQ(music.link("Twin"), only) << "the one that is left has the link of its tags";
}

TEST(Catalogue, SkipsWhatCannotBeReadWithOneLine) {
    const TestMusic music;
    music.add("good.wav", {{"TITLE", "Good"}});
    music.write("empty.flac", "");
    music.write("text.mp3", std::string(5000, 'x'));
    music.write("noise.m4a", std::string("\0\0\0\x20"
                                         "ftypM4A ",
                                         12) +
                                 std::string(300, '\xff'));
    music.write("short.wav", "RIFF\xff\xff\xff\xffWAVE");
    music.write("half.ogg", "OggS");
    music.write("notes.txt", "no music");
    const std::string log = scanned();
    for (const char* name : {"empty.flac", "text.mp3", "noise.m4a", "short.wav", "half.ogg"}) {
        const std::size_t line = log.find("Skipped " + music.path(name) + ": ");
        ASSERT_NE(line, std::string::npos) << name << '\n' << log;
        EXPECT_EQ(log.find("Skipped " + music.path(name), line + 1), std::string::npos) << name;
    }
    EXPECT_THAT(log, Not(HasSubstr("notes.txt")));
    EXPECT_THAT(log, HasSubstr(": 1 tracks, 1 new, 0 changed, 0 removed, 5 skipped"));
    const std::string again = scanned();
    EXPECT_THAT(again, Not(HasSubstr("Skipped"))) << "nothing new to tell of the same files";
    EXPECT_THAT(again, HasSubstr("5 skipped"));

    music.add("text.mp3", {{"TITLE", "x"}});  // a WAV by content is still no MP3
    music.encode("empty.flac", "flacenc", {{"TITLE", "Mended"}});
    scanned();
    EXPECT_THAT(music.titles(), ElementsAre("Good by Unknown artist on Unknown album",
                                            "Mended by Unknown artist on Unknown album"));

    music.write("good.wav", "broken now");
    scanned();
    EXPECT_THAT(music.titles(), ElementsAre("Mended by Unknown artist on Unknown album"));
}

TEST(Catalogue, SurvivesLoopsAndAMissingFolder) {
    const TestMusic music;
    music.add("a/song.wav", {{"TITLE", "Song"}});
    std::filesystem::create_directory_symlink(music.path("a"), music.path("a/loop"));
    std::filesystem::create_directory_symlink("..", music.path("a/up"));
    std::filesystem::create_directory_symlink("nowhere", music.path("dangling"));
    scanned();
    EXPECT_EQ(music.titles().size(), 1U);
    std::filesystem::rename(music.path("a"), music.path(".hidden"));
    scanned();
    EXPECT_THAT(music.titles(), IsEmpty());
    music.remove("");
    EXPECT_THAT(scanned(), HasSubstr("Cannot read the folder "));
}

TEST(Catalogue, FindsCoversInFilesAndBesideThem) {
    const TestMusic music;
    music.add("a/1.wav", {{"TITLE", "One"}, {"ARTIST", "Ann"}, {"ALBUM", "A"}, {"DATE", "2001"}});
    music.add("b/1.wav", {{"TITLE", "Two"}, {"ARTIST", "Ann"}, {"ALBUM", "B"}, {"DATE", "1999"}});
    music.write("a/cover.jpg", "picture a");
    music.write("b/Folder.JPG", "picture b");
    const auto bytes = [](const byte* id) {
        return id == nullptr ? std::string() : std::string(id, id + 20);
    };
    std::string before;
    {
        TestSession session;
        ASSERT_TRUE(session.untilScanned());
        const Held one(music.link("One"));
        const Held two(music.link("Two"));
        sp_album* album = sp_track_album(one.track());
        before = bytes(sp_album_cover(album, SP_IMAGE_SIZE_NORMAL));
        const std::string small = bytes(sp_album_cover(album, SP_IMAGE_SIZE_SMALL));
        ASSERT_EQ(before.size(), 20U);
        EXPECT_EQ(before.substr(0, 19), small.substr(0, 19));
        EXPECT_NE(before, small) << "a size has an id of its own";
        EXPECT_EQ(sp_album_cover(album, static_cast<sp_image_size>(3)), nullptr);
        EXPECT_EQ(bytes(sp_artist_portrait(sp_track_artist(one.track(), 0), SP_IMAGE_SIZE_LARGE)),
                  bytes(sp_album_cover(sp_track_album(two.track()), SP_IMAGE_SIZE_LARGE)))
            << "the cover of the first album";
    }
    music.write("a/cover.jpg", "another picture");
    TestSession session;
    ASSERT_TRUE(session.untilScanned());
    const Held one(music.link("One"));
    const std::string after =
        bytes(sp_album_cover(sp_track_album(one.track()), SP_IMAGE_SIZE_NORMAL));
    EXPECT_EQ(after.size(), 20U);
    EXPECT_NE(after, before);
}

TEST(Catalogue, IsMadeAgainWhenItIsDamaged) {
    const TestMusic music;
    music.add("song.wav", {{"TITLE", "Song"}});
    scanned();
    const std::string link = music.link("Song");
    std::ofstream(music.catalogueFile(), std::ios::binary) << std::string(8192, 'x');
    EXPECT_THAT(scanned(), HasSubstr("it is made again"));
    EXPECT_EQ(music.link("Song"), link);
}

}  // namespace

}  // namespace sonolet::test
