// What SONOLET_FAULT may say. What a page sees of it is in the tests of pages.

#include "faults/Faults.h"

#include "../../fakes/Test.h"

namespace sonolet::test {
namespace {

using service::Faults;
using std::chrono::seconds;

// The faults of a session that is so old.
Faults at(int age, const char* spec, int speed = 1) {
    return Faults(spec, std::int64_t{1000} * speed, Faults::Clock::now() - seconds(age));
}

TEST(FaultSpec, SaysWhatLastsAndWhatHappensOnce) {
    constexpr char spec[] = "login=banned@1m-2m,offline@100s-110s,slow=1500ms,"
                            "message=5%25 %40 home%2c@90s,token@0.01h,offline@5m";
    EXPECT_EQ(at(30, spec).login(), std::nullopt);
    EXPECT_EQ(at(70, spec).login(), SP_ERROR_USER_BANNED);
    EXPECT_EQ(at(105, spec).login(), SP_ERROR_UNABLE_TO_CONTACT_SERVER) << "nobody answers at all";
    EXPECT_TRUE(at(7, spec, 15).isOffline());
    EXPECT_FALSE(at(111, spec).isOffline());
    EXPECT_TRUE(at(100000, spec).isOffline()) << "without an end it lasts";
    EXPECT_EQ(at(3, spec).delay(), std::chrono::milliseconds(1500));
    EXPECT_EQ(at(3, spec, 10).delay(), std::chrono::milliseconds(150));
    EXPECT_EQ(at(3, "slow=0.0105s").delay(), std::chrono::microseconds(10500)) << "to the digit";

    Faults faults = at(111, spec);
    std::string told;
    for (const Faults::Turn& turn : faults.due()) {
        told += std::to_string(static_cast<int>(turn.kind)) + (turn.begins ? "+" : "-") + turn.text;
    }
    EXPECT_EQ(told, "3+1+2+6+5% @ home,0+0-") << "in the order of their times";
    EXPECT_TRUE(faults.due().empty()) << "once";
    EXPECT_LE(*faults.untilNext(), seconds(9)) << "the end of the login";
    EXPECT_EQ(at(0, "").untilNext(), std::nullopt);
}

TEST(FaultSpec, SaysWhatIsWrongAndWhere) {
    for (const auto& [spec, complaint] : {
             std::pair{"token@5s,", "fault \"\" at character 10: there are offline, token"},
             {"token", "\"token\" at character 1: it takes a time, as token@20s"},
             {"token@5s-6s", "\"5s-6s\" at character 7: it happens at one time"},
             {"token=1@5s", "it takes no value"},
             {"slow", "it takes a value, as slow=..."},
             {"slow=300", "\"300\" at character 6: a time is a number with ms, s, m or h"},
             {"offline@-5s", "\"\" at character 9: a time is"},
             {"offline@nans", "\"nans\" at character 9: a time is"},
             {"offline@1e300h", "a time is"},
             {"offline@"
              "99999999999999999999999h",
              "a time is"},
             {"offline@12s-5s", "\"12s-5s\" at character 9: it ends before it begins"},
             {"login=rude", "\"rude\" at character 7: a login is bad-password, banned,"},
             {"unavailable=spotify:album:0000000000000000000000", "it is no link of a track"},
             {"message=100%@5s", "\"%\" at character 12: \"%\" is followed by two"},
         }) {
        try {
            static_cast<void>(Faults(spec));
            ADD_FAILURE() << spec;
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(complaint));
        }
    }
}

}  // namespace
}  // namespace sonolet::test
