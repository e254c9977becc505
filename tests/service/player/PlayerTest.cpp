#include "player/Player.h"

#include "TestFiles.h"

namespace sonolet::service {
namespace {

using namespace sonolet::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int takeAll = 1 << 20;

// What a player's owner took and was told.
struct Seen {
    Samples sound;
    std::vector<int> offers;
    std::vector<std::string> errors;
    std::vector<std::string> lines;
    int ends = 0;
};

struct PlayerTest : testing::Test {
    PlayerEvents events() {
        PlayerEvents all;
        all.deliver = [this](const AudioFormat& format, const void* frames, int count) {
            EXPECT_EQ(format.sampleRate * format.channels, 88200);
            const auto* samples = static_cast<const std::int16_t*>(frames);
            int accepted = 0;
            note([&] {
                seen.offers.push_back(count);
                accepted = appetite(seen.offers.size());
                seen.sound.insert(seen.sound.end(), samples,
                                  samples + 2L * std::clamp(accepted, 0, count));
            });
            return accepted;
        };
        all.endOfTrack = [this] { note([this] { ++seen.ends; }); };
        all.streamingError = [this](sp_error, const std::string& why) {
            note([&] { seen.errors.push_back(why); });
        };
        all.log = [this](const std::string& line) { note([&] { seen.lines.push_back(line); }); };
        return all;
    }

    template <typename Change>
    void note(Change change) {
        const std::lock_guard<std::mutex> lock(mutex);
        change();
        wake.notify_all();
    }
    // With an offer's number: how many frames are taken of it, at most all there are.
    void accept(std::function<int(std::size_t)> rule) {
        note([&] { appetite = std::move(rule); });
    }
    bool await(const std::function<bool()>& condition) {
        std::unique_lock<std::mutex> lock(mutex);
        return wake.wait_for(lock, std::chrono::minutes(10), condition);
    }
    bool awaitOffers(std::size_t offers) {
        return await([&] { return seen.ends > 0 || seen.offers.size() >= offers; });
    }
    Seen now() {
        const std::lock_guard<std::mutex> lock(mutex);
        return seen;
    }
    Seen forget() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(seen, {});
    }
    // What was not forgotten, up to the end of the track.
    Seen playToEnd() {
        EXPECT_EQ(player.play(true), SP_ERROR_OK);
        EXPECT_TRUE(await([&] { return seen.ends > 0; }));
        return forget();
    }

    std::mutex mutex;
    std::condition_variable wake;
    // State below is protected by mutex.
    std::function<int(std::size_t)> appetite = [](std::size_t) { return takeAll; };
    Seen seen;

    TestFiles files;
    // Ten blocks and a bit.
    const Samples one = numbered(1, 10 * 2048 + 100);
    const std::string first = files.encode("one.flac", one, "flacenc");
    const Samples two = numbered(2, 30000);
    const std::string second = files.writeWav("two.wav", two);
    Player player{events()};

    // The first file from a millisecond on.
    Samples oneFrom(long ms) const { return {one.begin() + ms * 441 / 5, one.end()}; }
};

TEST_F(PlayerTest, DeliversBlocksThenOneEndAndNothingUntilASeekOrALoad) {
    ASSERT_EQ(player.load(first), SP_ERROR_OK);
    const Seen played = playToEnd();
    EXPECT_TRUE(played.sound == one);
    EXPECT_EQ(played.offers.size(), 11U);
    EXPECT_EQ(player.play(true), SP_ERROR_OK);
    EXPECT_EQ(player.play(false), SP_ERROR_OK);
    EXPECT_EQ(now().ends, 0) << "once is enough";
    EXPECT_EQ(player.seek(100), SP_ERROR_OK);
    EXPECT_TRUE(playToEnd().sound == oneFrom(100));
    EXPECT_EQ(player.seek(1000000), SP_ERROR_OK);
    EXPECT_THAT(playToEnd().offers, IsEmpty());
    player.load(files.writeWav("whole.wav", numbered(3, 4096)));
    EXPECT_THAT(playToEnd().offers, ElementsAre(2048, 2048)) << "no empty block behind them";
}

TEST_F(PlayerTest, OffersAgainWhatWasRefusedAndGoesOnFromWhatWasTaken) {
    accept([](std::size_t offer) {
        const int kinds[] = {0, 0, 1, 700, 2047, takeAll, -1};
        return kinds[offer * 3 % 7];
    });
    player.load(first);
    EXPECT_TRUE(playToEnd().sound == one);
}

TEST_F(PlayerTest, ASeekDropsTheBlockThatWaits) {
    accept([](std::size_t) { return 0; });
    player.load(first);
    player.play(true);
    ASSERT_TRUE(awaitOffers(2));
    ASSERT_EQ(player.seek(200), SP_ERROR_OK);
    forget();
    accept([](std::size_t) { return takeAll; });
    EXPECT_TRUE(playToEnd().sound == oneFrom(200));
    // Paused, before anything was decoded: the last of several seeks counts.
    player.load(first);
    player.seek(300);
    player.seek(100);
    EXPECT_TRUE(playToEnd().sound == oneFrom(100));
}

TEST_F(PlayerTest, PauseHoldsAndLosesNothing) {
    accept([](std::size_t offer) { return offer % 2 == 0 ? takeAll : 0; });
    player.load(first);
    for (std::size_t offers = 1; now().ends == 0; offers += 2) {
        player.play(true);
        ASSERT_TRUE(awaitOffers(offers));
        player.play(false);
        const std::size_t paused = now().offers.size();
        ASSERT_EQ(player.prefetch(second), SP_ERROR_OK);
        ASSERT_EQ(player.play(false), SP_ERROR_OK);
        EXPECT_EQ(now().offers.size(), paused);
    }
    EXPECT_TRUE(now().sound == one);
}

TEST_F(PlayerTest, RefusesWhatCannotBeReadAndHasNothingLoadedThen) {
    EXPECT_EQ(player.play(false), SP_ERROR_OK);
    EXPECT_EQ(player.unload(), SP_ERROR_OK);
    ASSERT_EQ(player.load(first), SP_ERROR_OK);
    EXPECT_NE(player.seek(-1), SP_ERROR_OK);
    const std::string nowhere = files.path("nowhere.wav");
    EXPECT_NE(player.prefetch(nowhere), SP_ERROR_OK);
    EXPECT_NE(player.load(nowhere), SP_ERROR_OK);
    EXPECT_NE(player.load(files.path("")), SP_ERROR_OK) << "a folder";
    EXPECT_NE(player.play(true), SP_ERROR_OK);
    EXPECT_NE(player.seek(0), SP_ERROR_OK);
    ASSERT_TRUE(await([&] { return seen.lines.size() == 3; }));
    EXPECT_THAT(now().lines[1], HasSubstr(nowhere + ": No such file"));
    EXPECT_THAT(now().offers, IsEmpty());
}

TEST_F(PlayerTest, GivesWhatABrokenFileHoldsAndOneErrorAndTheNextOnePlays) {
    const std::string broken = files.write("broken.mp3", "Not a sound in here.\n");
    ASSERT_EQ(player.load(broken), SP_ERROR_OK);
    ASSERT_TRUE(await([&] { return !seen.errors.empty(); }));
    player.play(true);
    player.load(second);
    const Seen played = playToEnd();
    EXPECT_THAT(played.errors, ElementsAre(HasSubstr(broken)));
    EXPECT_TRUE(played.sound == two);

    std::filesystem::resize_file(first, std::filesystem::file_size(first) * 6 / 10);
    player.load(first);
    player.play(true);
    ASSERT_TRUE(await([&] { return seen.ends > 0 || !seen.errors.empty(); }));
    player.unload();
    const Seen cut = now();
    EXPECT_EQ(cut.ends + static_cast<int>(cut.errors.size()), 1);
    ASSERT_LT(cut.sound.size(), one.size());
    EXPECT_GT(cut.sound.size(), one.size() / 3);
    EXPECT_TRUE(std::equal(cut.sound.begin(), cut.sound.end(), one.begin()));
}

TEST_F(PlayerTest, APrefetchedFileStartsAtItsStart) {
    player.load(second);
    ASSERT_EQ(player.prefetch(first), SP_ERROR_OK);
    ASSERT_EQ(player.prefetch(first), SP_ERROR_OK);
    EXPECT_TRUE(playToEnd().sound == two);
    // The second time it is opened anew.
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(player.load(first), SP_ERROR_OK);
        EXPECT_TRUE(playToEnd().sound == one);
    }
}

// The owner frees what a delivery writes to once load or unload has returned.
TEST_F(PlayerTest, NothingOfTheEarlierTrackIsInFlightAfterLoadAndUnload) {
    std::atomic<int> allowed{0};
    std::atomic<int> strays{0};
    std::atomic<int> deliveries{0};
    PlayerEvents contended;
    contended.deliver = [&](const AudioFormat&, const void* frames, int count) {
        const int file = *static_cast<const std::int16_t*>(frames);
        std::this_thread::yield();
        strays += file == allowed ? 0 : 1;
        return ++deliveries % 3 == 0 ? 0 : count;
    };
    Player contending(contended);
    for (int round = 0; round < 300; ++round) {
        const int file = 1 + round % 2;
        ASSERT_EQ(contending.load(file == 1 ? first : second), SP_ERROR_OK);
        allowed = file;
        contending.play(true);
        const int wanted = deliveries + round % 3;
        for (int turn = 0; turn < round * 7 % 50 || deliveries < wanted; ++turn) {
            if (turn % 8 == 7 && turn < 50) {
                contending.seek(round * 31 % 100);
            }
            std::this_thread::yield();
        }
        if (round % 4 > 1) {
            ASSERT_EQ(contending.unload(), SP_ERROR_OK);
            allowed = 0;
        }
    }
    EXPECT_EQ(strays, 0);
}

TEST_F(PlayerTest, GoesAwayAtAnyMoment) {
    for (std::size_t moment = 0; moment < 24; ++moment) {
        forget();
        accept([moment](std::size_t) { return moment % 2 == 0 ? takeAll : 0; });
        Player going(events());
        going.prefetch(second);
        if (moment > 0) {
            going.load(first);
            going.play(true);
            ASSERT_TRUE(awaitOffers(std::min<std::size_t>(moment / 2, 11)));
        }
    }
    EXPECT_THAT(now().errors, IsEmpty());
}

}  // namespace
}  // namespace sonolet::service
