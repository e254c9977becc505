#ifndef SONOLET_TESTS_SERVICE_TESTSESSION_H
#define SONOLET_TESTS_SERVICE_TESTSESSION_H

#include "player/TestFiles.h"

#include "libspotify/api.h"

namespace sonolet::test {

inline std::shared_ptr<sp_link> linkOf(const std::string& text) {
    return {sp_link_create_from_string(text.c_str()), sp_link_release};
}
inline std::shared_ptr<sp_track> trackOf(const std::string& text) {
    const auto link = linkOf(text);
    sp_track* track = sp_link_as_track(link.get());
    sp_track_add_ref(track);
    return {track, sp_track_release};
}

// The session of this process and a record of what it says. Its owner sleeps until the library
// asks for attention, as a program without a clock would.
class TestSession final {
public:
    enum class State { Created, Scanned };
    explicit TestSession(State wanted = State::Created) {
        current = this;
        callbacks.logged_in = [](sp_session*, sp_error error) {
            current->lastError = error;
            current->events.emplace_back("logged_in");
            current->onLoggedIn();
        };
        callbacks.logged_out = [](sp_session*) { current->events.emplace_back("logged_out"); };
        callbacks.metadata_updated = [](sp_session*) { current->events.emplace_back("metadata"); };
        callbacks.userinfo_updated = [](sp_session*) { current->events.emplace_back("userinfo"); };
        callbacks.connection_error = [](sp_session*, sp_error error) {
            current->events.emplace_back("connection " + std::to_string(error));
        };
        callbacks.play_token_lost = [](sp_session*) { current->events.emplace_back("token lost"); };
        callbacks.streaming_error = [](sp_session*, sp_error) {
            current->events.emplace_back("stream error");
        };
        callbacks.credentials_blob_updated = [](sp_session*, const char* text) {
            current->blob = text;
        };
        callbacks.log_message = [](sp_session*, const char* line) { current->log += line; };
        callbacks.notify_main_thread = [](sp_session*) { current->wake(); };
        callbacks.music_delivery = [](sp_session*, const sp_audioformat*, const void* frames,
                                      int count) {
            const auto* first = static_cast<const std::int16_t*>(frames);
            current->delivered.insert(current->delivered.end(), first, first + 2L * count);
            return count;
        };
        callbacks.end_of_track = [](sp_session*) {
            current->ended = true;
            current->wake();
        };
        const sp_session_config config = configuration();
        EXPECT_EQ(sp_session_create(&config, &session), SP_ERROR_OK);
        EXPECT_TRUE(wanted == State::Created || untilScanned());
    }
    ~TestSession() { release(); }

    // What the library accepts, with this object as its user data.
    sp_session_config configuration() {
        sp_session_config config{};
        config.api_version = SPOTIFY_API_VERSION;
        config.application_key = "key";
        config.application_key_size = 3;
        config.user_agent = "test";
        config.callbacks = &callbacks;
        config.userdata = this;
        return config;
    }
    sp_session* get() const { return session; }
    void release() {
        if (session != nullptr) {
            EXPECT_EQ(sp_session_release(session), SP_ERROR_OK);
            session = nullptr;
        }
    }

    // Handles events until the condition holds. False when the library is gone, or so late that the
    // test's own limit has come first.
    bool until(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(10);
        for (int timeout = 0; !condition();) {
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
    // What is nowhere is known to be nowhere only when everything has been looked at.
    bool untilScanned() {
        const auto nowhere = trackOf("spotify:track:0000000000000000000000");
        return until([&] { return sp_track_error(nowhere.get()) == SP_ERROR_OTHER_PERMANENT; });
    }
    // What a search for a page of everything has found.
    std::shared_ptr<sp_search> found(const char* query, int offset = 0, int count = 20) {
        std::shared_ptr<sp_search> search(sp_search_create(session, query, offset, count, offset,
                                                           count, offset, count, offset, count,
                                                           SP_SEARCH_STANDARD, nullptr, nullptr),
                                          sp_search_release);
        EXPECT_TRUE(until([&] { return sp_search_is_loaded(search.get()); }));
        return search;
    }
    bool untilHeard(const std::string& event, std::size_t times = 1) {
        return until([&] { return heard(event) >= times; });
    }
    std::size_t heard(const std::string& event) const {
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), event));
    }

    // Logs in and waits for the answer.
    sp_error login(const char* name, const char* password, bool remember = false) {
        return answered(sp_session_login(session, name, password, remember, nullptr));
    }
    sp_error loginWith(const std::string& withBlob, const char* name) {
        return answered(sp_session_login(session, name, nullptr, false, withBlob.c_str()));
    }
    sp_error answered(sp_error asked) {
        const std::size_t answers = heard("logged_in") + 1;
        return asked == SP_ERROR_OK && untilHeard("logged_in", answers) ? lastError : asked;
    }

    std::vector<std::string> events;
    std::string log;
    std::string blob;
    sp_error lastError = SP_ERROR_OK;
    std::function<void()> onLoggedIn = [] {};
    // The player's thread writes it: to be read while nothing plays.
    Samples delivered;
    std::atomic<bool> ended{false};

private:
    void wake() {
        const std::lock_guard<std::mutex> lock(mutex);
        notified = true;
        called.notify_one();
    }

    // The library speaks before sp_session_create has answered, and has one session in a process.
    static inline TestSession* current = nullptr;

    sp_session_callbacks callbacks{};
    sp_session* session = nullptr;
    std::mutex mutex;
    std::condition_variable called;
    bool notified = false;  // protected by mutex
};

}  // namespace sonolet::test

#endif
