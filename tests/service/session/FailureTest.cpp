// The bad days: killed processes, full disks, damaged files, folders and files that go away.

#include "TestMusic.h"
#include "TestSession.h"
#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "images/ImageCache.h"

#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>

namespace sonolet::test {
namespace {

namespace fs = std::filesystem;
using namespace service;
using testing::HasSubstr;

// Writes garbage over a file from a place on; what is in it then.
std::string spoiled(const std::string& path, std::streamoff from) {
    std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(from);
    stream << std::string(fs::file_size(path) - static_cast<std::size_t>(from), '\xa5');
    EXPECT_TRUE(stream.flush()) << path;
    return contentsOf(path);
}

TEST(Killed, ScansGoOnWhereTheyStopped) {
    const TestMusic music;
    for (int number = 0; number < 600; ++number) {
        // Some have the same tags.
        music.add("a/" + std::to_string(number) + ".wav",
                  "TITLE=T" + std::to_string(number % 590) + "|ARTIST=Ann|ALBUM=Blue");
    }
    TestSession session;
    ASSERT_TRUE(session.until([&] { return !session.log.empty(); }));
    session.release();
    EXPECT_THAT(session.log, testing::Not(HasSubstr("Scanned"))) << "stopped in the middle";
    std::size_t before = 0;
    for (int round = 0; round < 3; ++round) {
        // Half a change on top of half a scan.
        music.add("a/3.wav", "TITLE=Changed " + std::to_string(round) + "|ARTIST=Ann", 60);
        const pid_t scan = fork();
        if (scan == 0) {
            execl(SONOLET_INDEX, SONOLET_INDEX, nullptr);
            _exit(127);
        }
        std::size_t now = before;
        while (now == before && waitpid(scan, nullptr, WNOHANG) == 0) {
            // Ids alone: what they stand for may change before it is asked for.
            now = Catalogue(TestMusic::catalogueFile()).tracks().size();
        }
        kill(scan, SIGKILL);
        waitpid(scan, nullptr, 0);
        EXPECT_GE(TestMusic::tracks().size(), now) << "what was seen is there still";
        before = now;
    }
    // Two at once bring it to its end.
    const Ran both = run(SONOLET_INDEX " & " SONOLET_INDEX " ; wait");
    EXPECT_THAT(both.output, testing::Not(HasSubstr("given up")));
    const auto interrupted = TestMusic::tracks();
    EXPECT_EQ(interrupted.size(), 600U);
    fs::remove_all(music.stateFolder());
    ASSERT_EQ(run(SONOLET_INDEX).status, 0);
    EXPECT_EQ(interrupted, TestMusic::tracks()) << "as if nothing had happened";
}

TEST(Killed, CacheWritersLeaveWholeImagesOrNone) {
    const TestFiles folder;
    const std::string jpeg = "\xff\xd8" + std::string(3 << 20, 'x') + "\xff\xd9";
    for (int round = 1; round <= 5; ++round) {
        int number = 0;
        killDuring(round, [&] { ImageCache(folder.path("")).put(std::to_string(number++), jpeg); });
    }
    ImageCache cache(folder.path(""));
    for (int number = 0; number < 5; ++number) {
        EXPECT_EQ(cache.find(std::to_string(number)), jpeg) << "confirmed: " << number;
    }
    for (const auto& entry : fs::directory_iterator(folder.path(""))) {
        if (entry.path().extension() == ".jpg") {
            EXPECT_EQ(entry.file_size(), jpeg.size()) << entry.path();
        }
    }
}

// From the header on, which tells at once, or only inside, where a scan meets it.
class Damaged : public testing::TestWithParam<std::streamoff> {};

TEST_P(Damaged, CataloguesAreSetAsideAndMadeAgain) {
    const TestMusic music;
    for (int number = 0; number < 40; ++number) {
        music.add(std::to_string(number) + ".wav", "TITLE=T" + std::to_string(number));
    }
    ASSERT_EQ(run(SONOLET_INDEX).status, 0);
    const auto before = TestMusic::tracks();
    const std::string file = TestMusic::catalogueFile();
    const std::string damaged = spoiled(file, GetParam());
    TestSession session(TestSession::State::Scanned);
    EXPECT_THAT(session.log, HasSubstr("it is kept as " + file + ".damaged and made again"));
    EXPECT_EQ(contentsOf(file + ".damaged"), damaged);
    EXPECT_EQ(TestMusic::tracks(), before);
}

TEST_P(Damaged, AccountsAreSetAsideAndSaid) {
    const TestMusic music;
    const std::string file = TestMusic::paths().accountsFile();
    for (const char* aside : {".damaged", ".damaged-2"}) {
        ASSERT_EQ(run("echo secret | " SONOLET_USER " add ann").status, 0);
        const std::string damaged = spoiled(file, GetParam());
        testing::internal::CaptureStderr();
        TestSession session(TestSession::State::Scanned);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("kept as " + file + aside));
        EXPECT_THAT(session.log, HasSubstr("kept as " + file + aside));
        EXPECT_EQ(contentsOf(file + aside), damaged) << "not a byte is lost";
        EXPECT_EQ(fs::status(file + aside).permissions(), fs::perms(0600));
        EXPECT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
        EXPECT_EQ(session.login("ann", "secret"), SP_ERROR_BAD_USERNAME_OR_PASSWORD);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, Damaged, testing::Values(0, 4096, 16384));

TEST(DamagedIndex, IsMadeAgainWhileAQueryWantsThem) {
    const TestMusic music;
    music.add("song.wav", "TITLE=Song");
    TestSession session(TestSession::State::Scanned);
    Database(TestMusic::catalogueFile(), Database::Durability::process)
        .execute("UPDATE track_index_data SET block = x'a5a5a5a5a5'");
    const auto found = [&] { return sp_search_num_tracks(session.found("song").get()); };
    EXPECT_EQ(found(), 0);
    ASSERT_TRUE(session.until([&] { return found() == 1; }));
    EXPECT_THAT(session.log, HasSubstr("and made again"));
}

constexpr std::size_t songFrames = 882000;  // 20 seconds

struct Playing : testing::Test {
    Playing() {
        music.add("a/song.wav", "TITLE=Song", songFrames);
        music.write("a/list.m3u8", "song.wav\n");
    }
    // A session that has loaded the song.
    void open() {
        session.emplace(TestSession::State::Scanned);
        const auto search = session->found("song");
        ASSERT_EQ(sp_search_num_tracks(search.get()), 1);
        track = {sp_search_track(search.get(), 0), sp_track_release};
        sp_track_add_ref(track.get());
        ASSERT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
        ASSERT_EQ(sp_session_player_load(session->get(), track.get()), SP_ERROR_OK);
    }
    sp_error play() { return sp_session_player_play(session->get(), true); }
    static std::vector<std::string> lists() {
        Accounts accounts(TestMusic::paths().accountsFile());
        ListStore store(accounts.connection());
        std::vector<std::string> names;
        const auto container = store.ofUser("listener", ListKind::container);
        for (const ListEntry& entry : store.entries(*container)) {
            const auto list = store.find(entry.item);
            names.push_back(list->name + " " + std::to_string(store.entries(*list).size()));
        }
        return names;
    }

    TestMusic music;
    std::optional<TestSession> session;
    std::shared_ptr<sp_track> track;
};

TEST_F(Playing, EndsWhenItsFileVanishesOrIsCut) {
    open();
    const auto over = [this] { return session->ended || session->heard("stream error") > 0; };
    ASSERT_EQ(play(), SP_ERROR_OK);
    fs::remove(music.path("a/song.wav"));
    ASSERT_TRUE(session->until(over)) << "whether it was open already or not";
    EXPECT_TRUE(!session->ended || session->delivered == sweep(songFrames));
    // Before and after the folder was looked at again.
    const auto load = [this] { return sp_session_player_load(session->get(), track.get()); };
    EXPECT_THAT(load(), testing::AnyOf(SP_ERROR_NO_STREAM_AVAILABLE, SP_ERROR_TRACK_NOT_PLAYABLE));

    music.add("a/song.wav", "TITLE=Song", songFrames);
    session->ended = false;
    session->events.clear();
    ASSERT_TRUE(session->until([&] { return load() == SP_ERROR_OK; }));
    fs::resize_file(music.path("a/song.wav"), 100000);
    ASSERT_EQ(play(), SP_ERROR_OK);
    EXPECT_TRUE(session->until(over));
}

TEST_F(Playing, SurvivesAnUnreadableFolder) {
    // Else root reads everything.
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct all[2];
    ASSERT_EQ(syscall(SYS_capget, &header, all), 0);
    all[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
    ASSERT_EQ(syscall(SYS_capset, &header, all), 0);
    open();
    const auto before = lists();
    ASSERT_THAT(before, testing::ElementsAre("list 1"));
    // The folder of the song, and then the whole disk.
    for (const char* folder : {"a", ""}) {
        session.reset();
        fs::permissions(music.path(folder), fs::perms::none);
        session.emplace(TestSession::State::Scanned);
        EXPECT_THAT(session->log, HasSubstr("Cannot read the folder " + musicFolder()));
        track = trackOf(TestMusic::link("Song"));
        const bool known = *folder == '\0';
        EXPECT_EQ(sp_track_get_availability(session->get(), track.get()), known ? 1 : 0);
        EXPECT_EQ(lists(), before);
        session.reset();
        fs::permissions(music.path(folder), fs::perms::owner_all);
        open();
        EXPECT_EQ(lists(), before);
    }
}

TEST_F(Playing, BeginsAndGoesOnOnAFullDiskAndLosesNothingConfirmed) {
    fs::create_directories(music.stateFolder());
    if (geteuid() != 0 && unshare(CLONE_NEWUSER) != 0) {
        GTEST_SKIP() << "needs root or user namespaces, to mount a small disk";
    }
    if (unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", music.stateFolder().c_str(), "tmpfs", 0, "size=2m") != 0) {
        GTEST_SKIP() << "mounting is not allowed here";
    }
    const std::string filler = music.stateFolder() + "/filler";
    const auto fill = [&](std::uintmax_t left) {
        std::ofstream stream(filler);
        while (stream.write(std::string(4096, 'x').data(), 4096).flush()) {
        }
        stream.close();
        fs::resize_file(filler, fs::file_size(filler) - left);
    };
    const auto playAll = [&] {
        session->ended = false;
        EXPECT_EQ(play(), SP_ERROR_OK);
        EXPECT_TRUE(session->until([&] { return session->ended.load(); }));
    };
    const auto star = [&](bool on) {
        sp_track* tracks[] = {track.get()};
        return sp_track_set_starred(session->get(), tracks, 1, on);
    };
    // Nothing is there, and then all that was kept.
    for (const bool known : {false, true}) {
        fill(0);
        open();
        EXPECT_EQ(sp_track_is_starred(session->get(), track.get()), known);
        playAll();
        EXPECT_EQ(sp_search_num_tracks(session->found("song").get()), 1);
        const std::string line = "Nothing can be kept until there is room";
        EXPECT_THAT(session->log, HasSubstr(line));
        EXPECT_EQ(session->log.find(line), session->log.rfind(line));
        EXPECT_EQ(star(!known), SP_ERROR_OTHER_TRANSIENT);
        fs::remove(filler);
        ASSERT_TRUE(session->until(
            [&] { return session->log.find("There is room again") != std::string::npos; }));
        EXPECT_EQ(star(!known), SP_ERROR_OK);
        ASSERT_TRUE(session->untilScanned());
        EXPECT_EQ(sp_search_num_tracks(session->found("song").get()), 1);
        EXPECT_EQ(run(SONOLET_INDEX).status, 0);
        session.reset();
    }

    open();
    Accounts accounts(TestMusic::paths().accountsFile());
    ListStore store(accounts.connection());
    const ListRow starred = *store.ofUser("listener", ListKind::starred);
    fill(128U << 10);
    std::size_t confirmed = 0;
    EXPECT_THROW(
        for (int i = 0; i < 10000; ++i) {
            const Id item = Id::digest({std::to_string(i)});
            store.insert(starred, 0, {{EntryKind::item, item, {}}}, "listener");
            ++confirmed;
        },
        DatabaseError);
    EXPECT_EQ(session->login("listener", "listener"), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_load(session->get(), track.get()), SP_ERROR_OK);
    playAll();
    EXPECT_THAT(session->log, HasSubstr("full"));
    EXPECT_EQ(star(true), SP_ERROR_OTHER_TRANSIENT);
    EXPECT_EQ(store.entries(starred).size(), confirmed);
    fs::remove(filler);
    EXPECT_EQ(star(true), SP_ERROR_OK);
    EXPECT_EQ(store.entries(starred).size(), confirmed + 1);
    session.reset();
    umount2(music.stateFolder().c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace sonolet::test
