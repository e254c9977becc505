// A scan that is killed at any moment leaves a catalogue that the next one completes.

#include "TestMusic.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>

namespace sonolet::test {

namespace {

using Clock = std::chrono::steady_clock;

// Runs a scan in a process of its own and kills it when it is not over in time. True: it was.
bool scanFor(std::chrono::microseconds time) {
    std::string program = SONOLET_INDEX;
    std::array<char*, 2> arguments = {program.data(), nullptr};
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
    const int ended = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    pollfd waited{ended, POLLIN, 0};
    const timespec limit{time.count() / 1000000, time.count() % 1000000 * 1000};
    const bool finished = ppoll(&waited, 1, &limit, nullptr) == 1;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ended);
    return finished;
}

TEST(ScanInterruption, AKilledScanIsCompletedByTheNext) {
    const TestMusic music;
    for (int number = 0; number < 240; ++number) {
        const std::string name = std::to_string(number);
        music.add("folder" + std::to_string(number % 20) + "/" + name + ".wav",
                  {{"TITLE", "Song " + std::to_string(number % 230)},
                   {"ARTIST", "Artist " + std::to_string(number % 7)},
                   {"ALBUM", "Album " + std::to_string(number % 31)}},
                  50);
    }
    const Clock::time_point start = Clock::now();
    const Ran clean = runProgram(SONOLET_INDEX " 2>&1 | grep -v '^Scan'");
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    ASSERT_EQ(clean.status, 0);
    std::filesystem::remove_all(music.stateFolder());

    std::minstd_rand random(2);  // NOLINT(bugprone-random-generator-seed): the same every time
    std::uniform_int_distribution<std::int64_t> moment(0, whole.count());
    int killed = 0;
    for (int attempt = 0; attempt < 9; ++attempt) {
        killed += scanFor(std::chrono::microseconds(moment(random))) ? 0 : 1;
        if (attempt % 3 == 2) {
            // Half a change on top of half a scan.
            music.add("folder3/3.wav", {{"TITLE", "Changed " + std::to_string(attempt)}}, 60);
        }
    }
    EXPECT_GT(killed, 3) << "too few were interrupted to tell";
    const std::string command = SONOLET_INDEX " 2>&1 | grep -v '^Scan'";
    const Ran completed = runProgram(command);
    std::filesystem::remove_all(music.stateFolder());
    const Ran again = runProgram(command);
    ASSERT_EQ(completed.status, 0);
    EXPECT_EQ(completed.output, again.output);
    EXPECT_NE(completed.output, clean.output) << "the change was seen";
}

}  // namespace

}  // namespace sonolet::test
