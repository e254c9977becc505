#include "player/Player.h"

#include "TestFiles.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <functional>
#include <mutex>
#include <random>
#include <thread>

using namespace std::chrono_literals;

namespace sonolet::service {
namespace {

using sonolet::test::numbered;
using sonolet::test::Samples;
using sonolet::test::TestFiles;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int takeAll = 1 << 20;

// A player's owner: keeps what it takes and counts what it is told.
class Listener final {
public:
    struct Seen {
        Samples sound;
        std::vector<int> offers;
        std::vector<std::string> errors;
        std::vector<std::string> lines;
        int ends = 0;
        bool changedWhenRefused = false;
    };

    PlayerEvents events() {
        PlayerEvents all;
        all.deliver = [this](const AudioFormat& format, const void* frames, int count) {
            EXPECT_EQ(format.sampleRate, 44100);
            EXPECT_EQ(format.channels, 2);
            return deliver(static_cast<const std::int16_t*>(frames), count);
        };
        all.endOfTrack = [this] { note([this] { ++seen.ends; }); };
        all.streamingError = [this](sp_error error, const std::string& why) {
            EXPECT_NE(error, SP_ERROR_OK);
            note([&] { seen.errors.push_back(why); });
        };
        all.log = [this](const std::string& line) { note([&] { seen.lines.push_back(line); }); };
        return all;
    }

    // What each following offer is answered with; of the block it can take no more than there is.
    void accept(std::function<int()> rule) {
        const std::lock_guard<std::mutex> lock(mutex);
        appetite = std::move(rule);
    }
    void accept(int frames) {
        accept([frames] { return frames; });
    }

    bool await(const std::function<bool(const Seen&)>& condition) {
        std::unique_lock<std::mutex> lock(mutex);
        return wake.wait_for(lock, 30s, [&] { return condition(seen); });
    }
    bool awaitEnds(int ends) {
        return await([ends](const Seen& now) { return now.ends == ends; });
    }
    bool awaitOffers(std::size_t offers) {
        return await([offers](const Seen& now) { return now.offers.size() >= offers; });
    }

    Seen now() {
        const std::lock_guard<std::mutex> lock(mutex);
        return seen;
    }
    void forget() {
        const std::lock_guard<std::mutex> lock(mutex);
        seen = {};
        refused.clear();
    }

private:
    int deliver(const std::int16_t* frames, int count) {
        int accepted = 0;
        note([&] {
            const Samples offered(frames, frames + 2L * count);
            seen.changedWhenRefused |= !refused.empty() && refused != offered;
            seen.offers.push_back(count);
            accepted = appetite();
            const std::int16_t* const rest = frames + 2L * std::clamp(accepted, 0, count);
            seen.sound.insert(seen.sound.end(), frames, rest);
            refused.assign(rest, frames + 2L * count);
        });
        return accepted;
    }

    template <typename Change>
    void note(Change change) {
        const std::lock_guard<std::mutex> lock(mutex);
        change();
        wake.notify_all();
    }

    std::mutex mutex;
    std::condition_variable wake;
    std::function<int()> appetite = [] { return takeAll; };
    Samples refused;
    Seen seen;
};

class PlayerTest : public testing::Test {
protected:
    TestFiles files;
    Listener listener;

    // Ten blocks and a bit.
    const Samples one = numbered(1, 10 * 2048 + 100);
    const std::string first = files.encode("one.flac", one, "flacenc");
    const Samples two = numbered(2, 30000);
    const std::string second = files.writeWav("two.wav", two);
};

TEST_F(PlayerTest, DeliversBlocksThenOneEnd) {
    Player player(listener.events());
    ASSERT_EQ(player.load(first), SP_ERROR_OK);
    ASSERT_EQ(player.play(true), SP_ERROR_OK);
    ASSERT_TRUE(listener.awaitEnds(1));
    const Listener::Seen seen = listener.now();
    EXPECT_TRUE(seen.sound == one);
    EXPECT_THAT(seen.offers,
                ElementsAre(2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 100));
    EXPECT_THAT(seen.errors, IsEmpty());

    // A file of whole blocks has no short one behind them.
    const std::string whole = files.writeWav("whole.wav", numbered(3, 4096));
    listener.forget();
    player.load(whole);
    player.play(true);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_THAT(listener.now().offers, ElementsAre(2048, 2048));
}

TEST_F(PlayerTest, OffersAgainWhatWasRefusedAndGoesOnFromWhatWasTaken) {
    std::mt19937 random(7);
    listener.accept([&random] {
        const int kinds[] = {0, 0, 1, 700, 2047, takeAll, -1};
        return kinds[random() % 7];
    });
    Player player(listener.events());
    player.load(first);
    player.play(true);
    ASSERT_TRUE(listener.awaitEnds(1));
    const Listener::Seen seen = listener.now();
    EXPECT_TRUE(seen.sound == one);
    EXPECT_FALSE(seen.changedWhenRefused);
    EXPECT_GT(seen.offers.size(), 11U);
}

TEST_F(PlayerTest, AfterTheEndNothingComesUntilASeekOrALoad) {
    Player player(listener.events());
    player.load(first);
    player.play(true);
    ASSERT_TRUE(listener.awaitEnds(1));
    listener.forget();
    EXPECT_EQ(player.play(true), SP_ERROR_OK);
    EXPECT_EQ(player.play(false), SP_ERROR_OK);
    EXPECT_EQ(player.play(true), SP_ERROR_OK);
    EXPECT_EQ(player.seek(100), SP_ERROR_OK);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_TRUE(listener.now().sound == Samples(one.begin() + 8820, one.end()));

    listener.forget();
    EXPECT_EQ(player.seek(1000000), SP_ERROR_OK);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_THAT(listener.now().offers, IsEmpty());
}

TEST_F(PlayerTest, ASeekDropsTheBlockThatWaits) {
    Player player(listener.events());
    listener.accept(0);
    player.load(first);
    player.play(true);
    ASSERT_TRUE(listener.awaitOffers(2));
    ASSERT_EQ(player.seek(200), SP_ERROR_OK);
    listener.forget();
    listener.accept(takeAll);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_TRUE(listener.now().sound == Samples(one.begin() + 17640, one.end()));

    // Paused, before anything was decoded: the last of several seeks counts.
    player.load(first);
    player.seek(300);
    player.seek(100);
    listener.forget();
    player.play(true);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_TRUE(listener.now().sound == Samples(one.begin() + 8820, one.end()));
}

TEST_F(PlayerTest, PauseHoldsAndLosesNothing) {
    Player player(listener.events());
    listener.accept([count = 0]() mutable { return ++count % 2 == 0 ? takeAll : 0; });
    player.load(first);
    for (std::size_t offers = 1; listener.now().ends == 0; offers += 2) {
        player.play(true);
        ASSERT_TRUE(listener.await([&](const Listener::Seen& seen) {
            return seen.ends > 0 || seen.offers.size() >= offers;
        }));
        player.play(false);
        const std::size_t paused = listener.now().offers.size();
        ASSERT_EQ(player.prefetch(second), SP_ERROR_OK);
        ASSERT_EQ(player.play(false), SP_ERROR_OK);
        EXPECT_EQ(listener.now().offers.size(), paused);
    }
    EXPECT_TRUE(listener.now().sound == one);
    EXPECT_EQ(listener.now().ends, 1);
}

TEST_F(PlayerTest, RefusesWhatCannotBeReadAndHasNothingLoadedThen) {
    Player player(listener.events());
    EXPECT_EQ(player.play(false), SP_ERROR_OK);
    EXPECT_NE(player.play(true), SP_ERROR_OK);
    EXPECT_NE(player.seek(0), SP_ERROR_OK);
    EXPECT_EQ(player.unload(), SP_ERROR_OK);

    ASSERT_EQ(player.load(first), SP_ERROR_OK);
    EXPECT_NE(player.seek(-1), SP_ERROR_OK);
    std::filesystem::remove(second);
    EXPECT_NE(player.prefetch(second), SP_ERROR_OK);
    EXPECT_NE(player.load(second), SP_ERROR_OK);
    EXPECT_NE(player.load(std::filesystem::temp_directory_path()), SP_ERROR_OK);
    EXPECT_NE(player.play(true), SP_ERROR_OK);
    ASSERT_TRUE(listener.await([](const Listener::Seen& seen) { return seen.lines.size() == 3; }));
    EXPECT_THAT(listener.now().lines[1], HasSubstr(second + ": No such file"));
    EXPECT_THAT(listener.now().offers, IsEmpty());
}

TEST_F(PlayerTest, AnUndecodableFileEndsInOneErrorAndTheNextOnePlays) {
    const std::string broken = files.write("broken.mp3", "Not a sound in here.\n");
    Player player(listener.events());
    ASSERT_EQ(player.load(broken), SP_ERROR_OK);
    ASSERT_TRUE(listener.await([](const Listener::Seen& seen) { return !seen.errors.empty(); }));
    player.play(true);
    player.load(first);
    player.play(true);
    ASSERT_TRUE(listener.awaitEnds(1));
    const Listener::Seen seen = listener.now();
    ASSERT_EQ(seen.errors.size(), 1U);
    EXPECT_THAT(seen.errors[0], HasSubstr(broken));
    EXPECT_TRUE(seen.sound == one);
}

TEST_F(PlayerTest, ATruncatedFileGivesWhatItHoldsAndOneWord) {
    files.truncate("one.flac", 0.6);
    Player player(listener.events());
    player.load(first);
    player.play(true);
    ASSERT_TRUE(listener.await(
        [](const Listener::Seen& seen) { return seen.ends > 0 || !seen.errors.empty(); }));
    player.unload();
    const Listener::Seen seen = listener.now();
    EXPECT_EQ(seen.ends + static_cast<int>(seen.errors.size()), 1);
    ASSERT_LE(seen.sound.size(), one.size());
    EXPECT_TRUE(std::equal(seen.sound.begin(), seen.sound.end(), one.begin()));
}

TEST_F(PlayerTest, APrefetchedFileStartsAtItsStart) {
    Player player(listener.events());
    player.load(second);
    player.play(true);
    ASSERT_EQ(player.prefetch(first), SP_ERROR_OK);
    ASSERT_EQ(player.prefetch(first), SP_ERROR_OK);
    ASSERT_TRUE(listener.awaitEnds(1));
    EXPECT_TRUE(listener.now().sound == two);
    // The second time it is opened anew.
    for (int round = 0; round < 2; ++round) {
        listener.forget();
        ASSERT_EQ(player.load(first), SP_ERROR_OK);
        player.play(true);
        ASSERT_TRUE(listener.awaitEnds(1));
        EXPECT_TRUE(listener.now().sound == one);
    }
}

// The owner frees what a delivery writes to once load or unload has returned.
TEST_F(PlayerTest, NothingOfTheEarlierTrackIsInFlightAfterLoadAndUnload) {
    constexpr int none = 0;
    std::atomic<int> allowed{none};
    std::atomic<int> strays{0};
    std::atomic<int> deliveries{0};
    std::mt19937 refusals(3);
    PlayerEvents events;
    events.deliver = [&](const AudioFormat&, const void* frames, int count) {
        std::int16_t file = 0;
        std::memcpy(&file, frames, sizeof file);
        if (allowed != file) {
            ++strays;
        }
        ++deliveries;
        return refusals() % 3 == 0 ? 0 : count;
    };
    Player player(events);
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        const int file = 1 + round % 2;
        ASSERT_EQ(player.load(file == 1 ? first : second), SP_ERROR_OK);
        allowed = file;
        player.play(true);
        const int before = deliveries;
        const int wanted = static_cast<int>(random() % 3);
        const unsigned turns = random() % 50;
        for (unsigned turn = 0; turn < turns || deliveries - before < wanted; ++turn) {
            if (turn < turns && turn % 8 == 7) {
                player.seek(static_cast<int>(random() % 100));
            }
            std::this_thread::yield();
        }
        if (random() % 2 == 0) {
            ASSERT_EQ(player.unload(), SP_ERROR_OK);
            allowed = none;
        }
    }
    EXPECT_EQ(strays, 0);
    EXPECT_GT(deliveries, 0);
}

TEST_F(PlayerTest, GoesAwayAtAnyMoment) {
    for (std::size_t moment = 0; moment < 24; ++moment) {
        listener.forget();
        listener.accept([moment] { return moment % 2 == 0 ? takeAll : 0; });
        Player player(listener.events());
        player.prefetch(second);
        if (moment == 0) {
            continue;
        }
        player.load(first);
        player.play(true);
        if (moment > 1) {
            ASSERT_TRUE(listener.awaitOffers(std::min<std::size_t>(moment / 2, 11)));
        }
    }
    EXPECT_THAT(listener.now().errors, IsEmpty());
}

TEST(Player, NeedsNoListenerAtAll) {
    const TestFiles files;
    Player player({});
    EXPECT_EQ(player.load(files.writeWav("a.wav", numbered(1, 5000))), SP_ERROR_OK);
    EXPECT_EQ(player.play(true), SP_ERROR_OK);
    EXPECT_EQ(player.seek(10), SP_ERROR_OK);
    EXPECT_EQ(player.load("/nowhere"), SP_ERROR_NO_STREAM_AVAILABLE);
}

}  // namespace
}  // namespace sonolet::service
