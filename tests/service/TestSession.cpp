#include "TestSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace sonolet::test {

namespace {

constexpr std::chrono::seconds patience(20);

// The library speaks before sp_session_create has answered.
TestSession* creating = nullptr;

}  // namespace

TestSession& TestSession::from(sp_session* session) {
    auto* owner = static_cast<TestSession*>(sp_session_userdata(session));
    return owner == nullptr ? *creating : *owner;
}

TestSession::TestSession() {
    callbacks.logged_in = [](sp_session* caller, sp_error error) {
        TestSession& self = from(caller);
        self.lastError = error;
        self.note("logged_in");
        if (self.onLoggedIn) {
            self.onLoggedIn();
        }
    };
    callbacks.logged_out = [](sp_session* caller) { from(caller).note("logged_out"); };
    callbacks.metadata_updated = [](sp_session* caller) { from(caller).note("metadata_updated"); };
    callbacks.userinfo_updated = [](sp_session* caller) { from(caller).note("userinfo_updated"); };
    callbacks.play_token_lost = [](sp_session* caller) { from(caller).note("play_token_lost"); };
    callbacks.streaming_error = [](sp_session* caller, sp_error error) {
        from(caller).lastError = error;
        from(caller).note("streaming_error");
    };
    callbacks.credentials_blob_updated = [](sp_session* caller, const char* text) {
        from(caller).blob = text;
        from(caller).note("credentials_blob_updated");
    };
    callbacks.log_message = [](sp_session* caller, const char* line) {
        from(caller).logLines.emplace_back(line);
    };
    callbacks.notify_main_thread = [](sp_session* caller) { from(caller).wake(); };
    callbacks.music_delivery = [](sp_session* caller, const sp_audioformat* format,
                                  const void* frames, int count) {
        TestSession& self = from(caller);
        const auto* first = static_cast<const std::int16_t*>(frames);
        const std::lock_guard<std::mutex> lock(self.mutex);
        self.samples.insert(self.samples.end(), first,
                            first + std::ptrdiff_t{count} * format->channels);
        return count;
    };
    callbacks.end_of_track = [](sp_session* caller) {
        TestSession& self = from(caller);
        {
            const std::lock_guard<std::mutex> lock(self.mutex);
            self.trackEnded = true;
        }
        self.wake();
    };
    creating = this;
    const sp_session_config config = configuration();
    EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_OK);
}

TestSession::~TestSession() {
    release();
}

sp_session_config TestSession::configuration() {
    sp_session_config config{};
    config.api_version = SPOTIFY_API_VERSION;
    config.application_key = "key";
    config.application_key_size = 3;
    config.user_agent = "test";
    config.callbacks = &callbacks;
    config.userdata = this;
    return config;
}

void TestSession::release() {
    if (session != nullptr) {
        EXPECT_EQ(sp_session_release(session), SP_ERROR_OK);
        session = nullptr;
    }
}

void TestSession::wake() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        notified = true;
    }
    called.notify_one();
}

bool TestSession::until(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    int timeout = 0;
    while (!condition()) {
        std::unique_lock<std::mutex> lock(mutex);
        called.wait_for(lock, std::chrono::milliseconds(timeout), [this] { return notified; });
        notified = false;
        lock.unlock();
        if (std::chrono::steady_clock::now() > deadline ||
            sp_session_process_events(session, &timeout) != SP_ERROR_OK) {
            return false;
        }
    }
    return true;
}

bool TestSession::untilScanned() {
    // What is nowhere is known to be nowhere only when everything has been looked at.
    sp_link* nowhere = sp_link_create_from_string("spotify:track:0000000000000000000000");
    const bool scanned = until(
        [&] { return sp_track_error(sp_link_as_track(nowhere)) == SP_ERROR_OTHER_PERMANENT; });
    sp_link_release(nowhere);
    return scanned;
}

bool TestSession::untilHeard(const std::string& event, std::size_t times) {
    return until([&] { return heard(event) >= times; });
}

sp_error TestSession::login(const char* name, const char* password, bool remember) {
    const std::size_t before = heard("logged_in");
    const sp_error error = sp_session_login(session, name, password, remember, nullptr);
    if (error != SP_ERROR_OK) {
        return error;
    }
    return untilHeard("logged_in", before + 1) ? lastError : SP_ERROR_TIMEOUT;
}

std::size_t TestSession::heard(const std::string& event) const {
    return static_cast<std::size_t>(std::count(events.begin(), events.end(), event));
}

std::string TestSession::logText() const {
    std::string text;
    for (const std::string& line : logLines) {
        text += line + '\n';
    }
    return text;
}

std::vector<std::int16_t> TestSession::delivered() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return samples;
}

bool TestSession::ended() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return trackEnded;
}

}  // namespace sonolet::test
