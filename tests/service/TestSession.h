#ifndef SONOLET_TESTS_SERVICE_TESTSESSION_H
#define SONOLET_TESTS_SERVICE_TESTSESSION_H

#include "libspotify/api.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace sonolet::test {

// A session of the library and a record of what it says. Its owner sleeps until the library asks
// for attention, as a program without a clock would.
class TestSession final {
public:
    TestSession();
    ~TestSession();

    TestSession(const TestSession&) = delete;
    TestSession& operator=(const TestSession&) = delete;

    // A configuration that the library accepts, with this object as its user data.
    sp_session_config configuration();

    sp_session* get() const { return session; }
    void release();

    // Handles events until the condition holds. False after a time that is longer than anything
    // here takes.
    bool until(const std::function<bool()>& condition);
    bool untilScanned();
    bool untilHeard(const std::string& event, std::size_t times = 1);

    // Logs in and waits for the answer.
    sp_error login(const char* name, const char* password, bool remember = false);

    std::size_t heard(const std::string& event) const;
    std::string logText() const;

    // The events in their order: "logged_in", "logged_out", ...
    std::vector<std::string> events;
    std::vector<std::string> logLines;
    sp_error lastError = SP_ERROR_OK;
    std::string blob;
    // Runs inside every logged_in.
    std::function<void()> onLoggedIn;

    std::vector<std::int16_t> delivered() const;
    bool ended() const;

private:
    static TestSession& from(sp_session* session);
    void note(const char* event) { events.emplace_back(event); }
    void wake();

    sp_session_callbacks callbacks{};
    sp_session* session = nullptr;

    // State below is protected by mutex.
    mutable std::mutex mutex;
    std::condition_variable called;
    bool notified = false;
    bool trackEnded = false;
    std::vector<std::int16_t> samples;
};

}  // namespace sonolet::test

#endif
