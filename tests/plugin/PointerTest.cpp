#include "../fakes/Test.h"
#include "jspp/lexical_cast.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"
#include "jspp/parameter_context.h"

namespace {

struct Counted : orvo::enable_shared_from_this<Counted> {
    Counted() { ++alive; }
    virtual ~Counted() {
        --alive;
        selfWhileDying = static_cast<bool>(shared_from_this());
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    static std::atomic<int> alive;
    static bool selfWhileDying;
};
std::atomic<int> Counted::alive{0};
bool Counted::selfWhileDying = false;

struct Derived final : Counted {};

}  // namespace

#ifndef __clang_analyzer__  // which takes any release for the last one
TEST(SharedPointer, DestroysWithTheLastOwnerAndLeavesWeakPointersEmpty) {
    orvo::shared_ptr<Counted> base;
    orvo::weak_ptr<Counted> weak;
    {
        const orvo::shared_ptr<Derived> derived(new Derived);
        base = derived;
        orvo::weak_ptr<Counted> first(derived, orvo::unshared);
        weak = derived;
        EXPECT_EQ(weak.lock(), derived);
        EXPECT_EQ(std::exchange(weak, std::move(first)).lock(), derived);
    }
    base = *&base;  // an assignment to itself keeps the object
    EXPECT_EQ(base->shared_from_this(), base);
    base.decreaseRef();
    EXPECT_TRUE(!base && weak.expired() && !weak.lock());
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_FALSE(Counted::selfWhileDying) << "a dying object handed out a share of itself";
    base.decreaseRef();
}

TEST(SharedPointer, CountsAreExactWhenThreadsCopyReleaseAndLock) {
    orvo::shared_ptr<Counted> owner(new Counted);
    const orvo::weak_ptr<Counted> weak(owner);
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> locked{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&weak, &locked, mine = owner]() mutable {
            for (int round = 0; round < 2000; ++round) {
                // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): what is tested
                const orvo::shared_ptr<Counted> copy(mine);
                locked += orvo::weak_ptr<Counted>(copy).lock() ? 1 : 0;
            }
            mine.decreaseRef();
            while (weak.lock()) {
                std::this_thread::yield();
            }
        });
    }
    owner.decreaseRef();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(locked, 4 * 2000);
    EXPECT_EQ(Counted::alive, 0);
}
#endif

TEST(Numbers, AreReadFromTheWholeTextAndTruncatedWithinTheRange) {
    EXPECT_EQ(jspp::lexical_cast<int>("-12"), -12);
    EXPECT_EQ(jspp::lexical_cast<unsigned>("4294967295"), 4294967295U);
    for (const char* text : {"", " 1", "1 ", "1x", "0x10", "1.5", "-", "2147483648"}) {
        EXPECT_THROW(jspp::lexical_cast<int>(text), std::exception) << '"' << text << '"';
    }
    for (const char* text : {"-1", "4294967296", "1,000"}) {
        EXPECT_THROW(jspp::lexical_cast<unsigned>(text), std::exception) << '"' << text << '"';
    }
    const int least = std::numeric_limits<int>::min();
    const int most = std::numeric_limits<int>::max();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const auto& [number, expected] : {std::pair(1500.9, 1500),
                                           {-0.5, 0},
                                           {-1.9, -1},
                                           {1e300, most},
                                           {-infinity, least},
                                           {2147483647.5, most},
                                           {-2147483648.0, least},
                                           {std::nan(""), 0}}) {
        EXPECT_EQ(jspp::to_int(number), expected) << number;
    }
}
