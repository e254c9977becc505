#include "../fakes/Test.h"
#include "log/LogThreshold.h"

#include "kellog.h"

namespace {

TEST(LogTest, OnlyLinesFromTheThresholdAreWritten) {
    KlogContext* const before = KlogContext::GetLogContext("Module", "file", 1);
    EXPECT_EQ(before->threshold(), static_cast<int>(KLOG_ERROR));
    testing::internal::CaptureStderr();
    KlogPrintf(before, KLOG_TRACE, "Some/File", 7, "%s", "unwanted");
    KlogPrintf(nullptr, KLOG_ERROR, "Some/File", 8, "number %d", 5);
    KlogSetThreshold(KLOG_TRACE);
    EXPECT_EQ(before->threshold(), static_cast<int>(KLOG_TRACE));
    KlogPrintf(before, KLOG_TRACE, "Some/File", 9, "%s", "100% wanted");
    KlogSetThreshold(KLOG_NONE);
    KlogPrintf(before, KLOG_ERROR, "Some/File", 10, "nothing");
    KlogSetThreshold(KLOG_ERROR);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "error Some/File:8: number 5\ntrace Some/File:9: 100% wanted\n");
}

TEST(LogTest, LinesOfSeveralThreadsStayWhole) {
    testing::internal::CaptureStderr();
    const auto write = [](char letter) {
        // Longer than any buffer that a writer would keep on its stack.
        const std::string text(2000, letter);
        for (int n = 0; n < 50; ++n) {
            KlogPrintf(nullptr, KLOG_ERROR, "f", 1, "%s", text.c_str());
        }
    };
    std::thread first(write, 'a');
    std::thread second(write, 'b');
    write('c');
    first.join();
    second.join();
    std::istringstream lines(testing::internal::GetCapturedStderr());
    int count = 0;
    for (std::string text; std::getline(lines, text); ++count) {
        ASSERT_EQ(text, "error f:1: " + std::string(2000, text.back()));
    }
    EXPECT_EQ(count, 150);
}

}  // namespace
