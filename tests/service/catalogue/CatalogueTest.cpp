// What a scan makes of a folder, the first time, after changes and after being killed.

#include "TestMusic.h"
#include "TestSession.h"
#include "catalogue/Scanner.h"
#include "music/PlaylistFile.h"
#include "music/Tags.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

namespace sonolet::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Key;
using testing::Not;
using testing::SizeIs;

// What a session that only scans says of it.
std::string scanned() {
    return TestSession(TestSession::State::Scanned).log;
}

TEST(Catalogue, TellsWhatTheTagsSay) {
    const TestMusic music;
    music.add("a.wav",
              "TITLE=First|ARTIST=Ann|ARTIST=Bob|ALBUM=Blue|TRACKNUMBER=3/9|DATE=1994-05-02");
    music.add("b.wav", "TITLE=Loose|ARTIST=Cyd|ALBUM=Hits|COMPILATION=1");
    music.add("folder/No tags.wav", "");
    const TestSession session(TestSession::State::Scanned);
    EXPECT_THAT(TestMusic::tracks(),
                ElementsAre(Key("First by Ann on Blue"), Key("Loose by Cyd on Hits"),
                            Key("No tags by Unknown artist on Unknown album")));

    const auto first = trackOf(TestMusic::link("First"));
    sp_track* const track = first.get();
    ASSERT_EQ(sp_track_num_artists(track), 2);
    EXPECT_STREQ(sp_artist_name(sp_track_artist(track, 1)), "Bob");
    EXPECT_EQ(sp_track_index(track), 3);
    sp_album* album = sp_track_album(track);
    EXPECT_EQ(sp_album_year(album), 1994);
    EXPECT_EQ(sp_album_type(album), SP_ALBUMTYPE_ALBUM) << "nine tracks, says the tag";

    const auto loose = trackOf(TestMusic::link("Loose"));
    album = sp_track_album(loose.get());
    EXPECT_EQ(sp_album_type(album), SP_ALBUMTYPE_COMPILATION);
    EXPECT_STREQ(sp_artist_name(sp_album_artist(album)), "Various Artists");
}

TEST(Catalogue, ReadsEveryFormat) {
    const TestMusic music;
    music.encode("a.flac", "flacenc", "TITLE=a");
    music.encode("b.ogg", "vorbisenc ! oggmux", "TITLE=b");
    music.encode("c.opus", "opusenc ! oggmux", "TITLE=c");
    music.encode("d.opus", "opusenc ! oggmux", "TITLE=d");
    music.encode("e.mp3", "lamemp3enc", "TITLE=e");
    music.encode("f.m4a", "avenc_aac ! mp4mux", "TITLE=f");
    music.encode("g.aac", "avenc_aac ! aacparse ! audio/mpeg,stream-format=adts", "");
    // A tag library that goes by the ending does not see the format behind it.
    music.move("d.opus", "d.ogg");
    const TestSession session(TestSession::State::Scanned);
    for (const char* title : {"a", "b", "c", "d", "e", "f", "g"}) {
        // Lossy formats are padded to whole frames.
        const auto link = trackOf(TestMusic::link(title));
        EXPECT_NEAR(sp_track_duration(link.get()), 500, 100) << title << session.log;
    }
}

TEST(Catalogue, FollowsChanges) {
    const TestMusic music;
    music.add("keep.wav", "TITLE=Keep");
    music.add("change.wav", "TITLE=Before");
    music.add("folder/go.wav", "TITLE=Go");
    EXPECT_THAT(scanned(), HasSubstr(": 3 tracks, 3 new, 0 changed, 0 removed, 0 skipped"));
    const std::string keep = TestMusic::link("Keep");
    const std::string go = TestMusic::link("Go");
    EXPECT_THAT(scanned(), HasSubstr(": 3 tracks, 0 new, 0 changed, 0 removed, 0 skipped"));

    music.move("folder/go.wav", "saved");
    music.add("change.wav", "TITLE=After", 500);
    music.add("new/new.wav", "TITLE=New");
    {
        const TestSession session(TestSession::State::Scanned);
        EXPECT_THAT(session.log, HasSubstr(": 3 tracks, 1 new, 1 changed, 1 removed, 0 skipped"));
        EXPECT_EQ(TestMusic::link("Keep"), keep);
        const auto gone = trackOf(go);
        EXPECT_STREQ(sp_track_name(gone.get()), "Go") << "what is gone keeps its name";
        EXPECT_EQ(sp_track_get_availability(session.get(), gone.get()),
                  SP_TRACK_AVAILABILITY_UNAVAILABLE);
    }
    music.move("saved", "moved.wav");
    EXPECT_THAT(scanned(), HasSubstr(": 4 tracks, 1 new, 0 changed, 0 removed, 0 skipped"));
    EXPECT_EQ(TestMusic::link("Go"), go) << "what only moves is the same track";

    music.add("twin.wav", "TITLE=Go", 1000);
    scanned();
    EXPECT_THAT(TestMusic::tracks(), SizeIs(5)) << "one of two with the same tags has another link";
    std::filesystem::remove(music.path("moved.wav"));
    scanned();
    EXPECT_EQ(TestMusic::link("Go"), go) << "the one that is left has the link of its tags";
}

TEST(Catalogue, SkipsWhatCannotBeReadWithOneLine) {
    using namespace std::string_literals;
    const TestMusic music;
    music.add("good.wav", "TITLE=Good");
    music.write("notes.txt", "no music");
    const std::pair<std::string, std::string> broken[] = {
        {"empty.flac", ""},
        {"text.mp3", std::string(5000, 'x')},
        {"noise.m4a", "\0\0\0 ftypM4A "s + std::string(300, '\xff')},
        {"short.wav", "RIFF\xff\xff\xff\xffWAVE"},
        {"half.ogg", "OggS"}};
    for (const auto& [name, bytes] : broken) {
        music.write(name, bytes);
    }
    const std::string log = scanned();
    for (const auto& [name, bytes] : broken) {
        const std::string skipped = "Skipped " + music.path(name) + ": ";
        EXPECT_THAT(log, HasSubstr(skipped));
        EXPECT_EQ(log.find(skipped), log.rfind(skipped)) << name;
    }
    EXPECT_THAT(log, HasSubstr(": 1 tracks, 1 new, 0 changed, 0 removed, 5 skipped"));
    const std::string again = scanned();
    EXPECT_THAT(again, HasSubstr("5 skipped"));
    EXPECT_THAT(again, Not(HasSubstr("Skipped"))) << "nothing new to tell of the same files";

    music.add("text.mp3", "");  // a WAV by content is still no MP3
    music.encode("empty.flac", "flacenc", "TITLE=Mended");
    music.write("good.wav", "broken now");
    scanned();
    EXPECT_THAT(TestMusic::tracks(), ElementsAre(Key("Mended by Unknown artist on Unknown album")));
}

// How much this process has read so far, in bytes.
std::uint64_t bytesRead() {
    std::ifstream counters("/proc/self/io");
    std::string name;
    std::uint64_t count = 0;
    counters >> name >> count;
    return name == "rchar:" ? count : throw std::runtime_error("no counters");
}

std::string adtsFrames(std::size_t count, std::size_t size) {
    std::string frame("\xff\xf1\x50", 3);
    for (const std::size_t byte :
         {0x80 | size >> 11, size >> 3, size << 5 | 0x1f, std::size_t(0xfc)}) {
        frame.push_back(static_cast<char>(byte));
    }
    std::minstd_rand random;
    std::string all;
    while (count-- > 0) {
        all += frame;
        std::generate_n(std::back_inserter(all), size - frame.size(), random);
    }
    return all;
}

// A number in four bytes, the highest first or last.
std::string big(std::size_t number) {
    return {static_cast<char>(number >> 24), static_cast<char>(number >> 16),
            static_cast<char>(number >> 8), static_cast<char>(number)};
}

std::string little(std::size_t number) {
    const std::string bytes = big(number);
    return {bytes.rbegin(), bytes.rend()};
}

// An ID3v2 tag with a title of sixteen million letters, which is a hundred thousand bytes packed.
std::string bombTag() {
    using namespace std::string_literals;
    std::string bits = "110"
                       "00110000"
                       "10010001";  // a block of usual codes, a NUL and an "a"
    while (bits.size() < 800'000) {
        bits += "1100010100000";  // 258 times the letter before
    }
    std::string title = big(16 << 20) + "\x78\1"s;
    for (std::size_t at = 0; at + 8 <= bits.size(); at += 8) {
        char byte = 0;
        for (std::size_t bit = 0; bit < 8; ++bit) {
            byte = static_cast<char>(byte | (bits[at + bit] - '0') << bit);
        }
        title += byte;
    }
    const std::size_t size = title.size() + 10;
    return "ID3\3\0\0"s + static_cast<char>(size >> 21) + static_cast<char>(size >> 14 & 127) +
           static_cast<char>(size >> 7 & 127) + static_cast<char>(size & 127) + "TIT2" +
           big(title.size()) + "\0\x80"s + title;
}

TEST(Catalogue, KnowsSizesOver2GiBAndDatesAfter2038) {
    const TestMusic music;
    music.add("song.wav", "TITLE=Song");
    const auto setDate = [&](std::int64_t date) {
        const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(date), 0}};
        struct stat status {};
        return utimensat(AT_FDCWD, music.path("song.wav").c_str(), times, 0) == 0 &&
               stat(music.path("song.wav").c_str(), &status) == 0 && status.st_mtim.tv_sec == date;
    };
    constexpr std::int64_t in2040 = 2'208'988'800;
    if (!setDate(in2040 + (std::int64_t{1} << 32))) {
        GTEST_SKIP() << "a file system that ends in 2038";
    }
    EXPECT_THAT(scanned(), HasSubstr("1 new, 0 changed"));
    EXPECT_THAT(scanned(), HasSubstr("0 new, 0 changed"));
    setDate(in2040);
    EXPECT_THAT(scanned(), HasSubstr("0 new, 1 changed")) << "the same in 32 bits, another date";

    // Its sound is there, and behind it nothing for a gibibyte and more.
    music.resize("song.wav", (std::int64_t{1} << 32) + 100);
    const service::MusicFile file(music.path("song.wav"));
    EXPECT_EQ(file.size(), (std::int64_t{1} << 32) + 100);
    std::array<char, 8> last{};
    EXPECT_EQ(file.read(file.size() - 3, last.data(), last.size()), 3U);
    EXPECT_THROW(file.contents(64 << 20), service::UnreadableFile);
    if (sizeof(long) == 8) {
        EXPECT_GT(service::readTags(file, service::StopFlag(false)).durationMs, 0);
    } else {
        EXPECT_THAT(scanned(), HasSubstr("song.wav: it has more than 2 GiB"));
    }
    // What tells so itself would end there without a word.
    std::string header = wavFile("");
    header.replace(40, 4, "\0\0\0\x80", 4);
    music.write("long.wav", header);
    music.resize("long.wav", (std::int64_t{1} << 31) + 44);
    EXPECT_THAT(scanned(), HasSubstr("long.wav: it has more than 2 GiB"));
    music.write("cover.jpg", "");
    music.write("list.m3u", "");
    for (const char* const name : {"cover.jpg", "list.m3u"}) {
        music.resize(name, std::int64_t{3} << 30);
    }
    EXPECT_THAT(scanned(), HasSubstr(sizeof(long) == 8 ? ": 1 tracks" : ": 0 tracks"));
}

TEST(Catalogue, SpendsLittleOnWhatAFileDoesNotHold) {
    using namespace std::string_literals;
    const TestMusic music;
    // What only unpacks, or is counted, to more than anybody has.
    std::string frames = "ID3\3\0\0"s + "\x0a\0\0\0"s;
    while (frames.size() < 20U << 20) {
        frames += "TIT2\0\0\0\2\0\0\3a"s;
    }
    std::string boxes = "\0\0\0\x0c"
                        "ftypM4A "s;
    for (unsigned left = 200'000; left-- > 0;) {
        boxes += {'\0',
                  static_cast<char>(left >> 13),
                  static_cast<char>(left >> 5),
                  static_cast<char>((left & 31) << 3),
                  'm',
                  'o',
                  'o',
                  'v'};
    }
    const std::string soundless = "\xff\xfb\x90\0"s + std::string(413, '\0');
    music.write("boxes.m4a", boxes);
    music.write("items.mp3", soundless + soundless + "APETAGEX\xd0\7\0\0\x20\0\0\0\0\0\1\0"s +
                                 std::string(12, '\0'));
    const std::string flac = "fLaC\0\0\0\x22\x10\0\x10\0\0\0\0\0\0\0\x0a\xc4\x42\xf0\0\6\xba\xa8"s +
                             std::string(16, '\0');
    // Twenty thousand comments without a letter.
    const std::string comments = "\0\0\0\0\x20\x4e\0\0"s + std::string(80'000, '\0');
    music.write("comments.flac", flac + "\x84\1\x38\x88" + comments);
    const auto page = [](int kind, const std::vector<std::string>& packets) {
        std::string table;
        std::string bodies;
        for (const std::string& packet : packets) {
            table +=
                std::string(packet.size() / 255, '\xff') + static_cast<char>(packet.size() % 255);
            bodies += packet;
        }
        return "OggS\0"s + static_cast<char>(kind) + std::string(20, '\0') +
               static_cast<char>(table.size()) + table + bodies;
    };
    const std::string opus = "OpusHead\1\2\0\0\x80\xbb\0\0\0\0\0"s;
    const std::string manyOpus = "OpusTags" + comments.substr(0, 60'000);
    music.write("comments.opus", page(2, {opus}) + page(0, {manyOpus}));
    music.write("onepage.opus", page(2, {opus, manyOpus}));
    music.write("behind.opus", "what is before" + page(2, {opus}) + page(0, {manyOpus}));
    music.write("behind.flac", "what is before" + flac + "\x84\1\x38\x88" + comments);
    music.write("packets.ogg", page(2, {"\x7f"
                                        "FLAC\1\0\0\1"s +
                                        flac}) +
                                   page(0, {"\1\0\0\4\0\0\0\0"s}) +
                                   page(0, {"\x84\0\xea\x60"s + comments.substr(0, 60'000)}));
    for (const char* name : {"comments.flac", "comments.opus", "onepage.opus", "behind.opus",
                             "behind.flac", "packets.ogg"}) {
        try {
            service::readTags(service::MusicFile(music.path(name)), service::StopFlag(false));
            ADD_FAILURE() << name;
        } catch (const service::UnreadableFile& error) {
            EXPECT_THAT(error.what(), HasSubstr("its tags do not end")) << name;
        }
        std::filesystem::remove(music.path(name));
    }
    const auto chunk = [](const std::string& name, const std::string& body) {
        return name + little(body.size()) + body + std::string(body.size() % 2, '\0');
    };
    const auto wave = [&](const std::string& tag) {
        const std::string chunks = "WAVE" +
                                   chunk("fmt ", "\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x8\0"s) +
                                   tag + chunk("data", std::string(8000, '\0'));
        return chunk("RIFF", chunks);
    };
    std::string texts = "INFO" + chunk("INAM", "A title");
    music.write("list.wav", wave(chunk("LIST", texts)));
    while (texts.size() < 300'000) {
        texts += chunk("IART", "An artist");
    }
    music.write("lists.wav", wave(chunk("LIST", texts)));
    music.write("bomb.wav", wave(chunk("ID3 ", bombTag())));
    music.write("bomb.mp3", bombTag() + soundless + soundless);
    for (const auto& [name, title] : {std::pair{"list.wav", "A title"},
                                      {"lists.wav", ""},
                                      {"bomb.wav", ""},
                                      {"bomb.mp3", ""}}) {
        const service::Tags tags =
            service::readTags(service::MusicFile(music.path(name)), service::StopFlag(false));
        EXPECT_EQ(tags.title.substr(0, 20), title) << name;
        std::filesystem::remove(music.path(name));
    }
    std::string artists = "\0\0\0\0\xd0\7\0\0"s;
    for (int artist = 1000; artist < 3000; ++artist) {
        artists += "\x0b\0\0\0ARTIST="s + std::to_string(artist);
    }
    music.write("crowd.flac", flac + "\x84\0\x75\x38"s + artists);
    music.write("frames.mp3", frames);
    for (const auto& [name, size] : {std::pair{"zeros.mp3", 300},
                                     {"zeros.aac", 3 << 10},
                                     {"zeros.ogg", 300},
                                     {"zeros.flac", 300},
                                     {"zeros.m4a", 300}}) {
        music.write(name, "");
        music.resize(name, std::int64_t{size} << 20);
        const std::uint64_t before = bytesRead();
        const service::MusicFile file(music.path(name));
        EXPECT_THROW(service::readTags(file, service::StopFlag(false)), service::UnreadableFile);
        EXPECT_LT(bytesRead() - before, 16U << 20) << name;
        const std::uint64_t bounded = bytesRead();
        EXPECT_THROW(service::readTags(file, service::StopFlag(true)), service::UnreadableFile);
        EXPECT_LT(bytesRead() - bounded, 64U << 10) << name << ": nobody waits for it";
    }
    // What long files do hold is found all the same, and what is not counted is guessed.
    music.write("long.aac", adtsFrames(20000, 400) + "TAG" + "Long" + std::string(121, '\0'));
    music.write("many.aac", adtsFrames(1500000, 7));
    EXPECT_THAT(scanned(), HasSubstr(": 3 tracks, 3 new, 0 changed, 0 removed, 8 skipped"));
    const TestSession session(TestSession::State::Scanned);
    const auto duration = [](const char* title) {
        return sp_track_duration(trackOf(TestMusic::link(title)).get());
    };
    EXPECT_EQ(duration("Long"), 20000LL * 1024 * 1000 / 44100);
    EXPECT_NEAR(duration("many"), 1500000.0 * 1024 * 1000 / 44100, 100000);
    EXPECT_EQ(sp_track_num_artists(trackOf(TestMusic::link("crowd")).get()), 1000);
}

TEST(Catalogue, OpensNothingButRegularFilesAndNeverWaits) {
    const TestMusic music;
    music.write("a.m3u", "");
    for (const char* name : {"pipe.mp3", "pipe.m3u"}) {
        ASSERT_EQ(mkfifo(music.path(name).c_str(), 0600), 0);
        EXPECT_THROW(service::MusicFile(music.path(name)), service::UnreadableFile);
    }
    EXPECT_THROW(service::MusicFile(music.path("")), service::UnreadableFile) << "a folder";
    EXPECT_THROW(service::PlaylistFile::read(music.path("pipe.m3u")), service::MalformedPlaylist);
    // Which file it is was settled when it was opened.
    music.write("song.wav", "one");
    const service::MusicFile file(music.path("song.wav"));
    music.move("pipe.mp3", "song.wav");
    EXPECT_EQ(file.contents(3), "one");
    EXPECT_THROW(file.contents(2), service::UnreadableFile) << "more than was wanted";
}

TEST(Catalogue, SurvivesLoopsAndAMissingFolder) {
    const TestMusic music;
    music.add("a/song.wav", "TITLE=Song");
    std::filesystem::create_directory_symlink(music.path("a"), music.path("a/loop"));
    std::filesystem::create_directory_symlink("..", music.path("a/up"));
    std::filesystem::create_directory_symlink("nowhere", music.path("dangling"));
    scanned();
    EXPECT_THAT(TestMusic::tracks(), SizeIs(1));
    music.move("a", ".hidden");
    scanned();
    EXPECT_THAT(TestMusic::tracks(), SizeIs(0));
    music.move(".hidden", "a");
    scanned();
    // The disk goes while its first file is read.
    music.write("a/broken.wav", "broken");
    std::promise<bool> finished;
    std::string log;
    service::ScanEvents events;
    events.log = [&](const std::string& line) {
        log += line + '\n';
        if (line.rfind("Skipped", 0) == 0) {
            std::filesystem::rename(music.path(""), music.stateFolder() + "/gone");
        }
    };
    events.finished = [&](bool complete) { finished.set_value(complete); };
    {
        const service::Scanner scanner(service::musicFolder(), TestMusic::catalogueFile(), events);
        EXPECT_FALSE(finished.get_future().get());
    }
    EXPECT_THAT(log, HasSubstr(" has gone while it was scanned\nWhat was known of "));
    EXPECT_THAT(scanned(), HasSubstr("Cannot read the folder "));
    const Ran index = run(SONOLET_INDEX);
    EXPECT_EQ(index.status, 1);
    EXPECT_THAT(index.output, HasSubstr("stays known"));
    EXPECT_THAT(TestMusic::tracks(), SizeIs(1));
}

TEST(Catalogue, FindsCoversBesideFiles) {
    const TestMusic music;
    music.add("a/1.wav", "TITLE=One|ARTIST=Ann|ALBUM=A|DATE=2001");
    music.add("b/1.wav", "TITLE=Two|ARTIST=Ann|ALBUM=B|DATE=1999");
    music.write("a/cover.jpg", "picture a");
    music.write("b/Folder.JPG", "picture b");
    scanned();
    const auto pictures = [&](const char* title) {
        const TestSession session;
        const auto track = trackOf(TestMusic::link(title));
        const byte* cover = sp_album_cover(sp_track_album(track.get()), SP_IMAGE_SIZE_SMALL);
        const byte* portrait =
            sp_artist_portrait(sp_track_artist(track.get(), 0), SP_IMAGE_SIZE_SMALL);
        return std::pair(std::string(cover, cover + 20), std::string(portrait, portrait + 20));
    };
    const auto [cover, portrait] = pictures("One");
    EXPECT_EQ(portrait, pictures("Two").first) << "of the first album";
    music.write("a/cover.jpg", "another picture");
    scanned();
    EXPECT_NE(cover, pictures("One").first);
}

}  // namespace
}  // namespace sonolet::test
