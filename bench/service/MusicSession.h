#ifndef SONOLET_BENCH_SERVICE_MUSICSESSION_H
#define SONOLET_BENCH_SERVICE_MUSICSESSION_H

#include "libspotify/api.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace sonolet::bench {

// A session of the music service, whose owner sleeps until it is asked for attention and measures
// each call of the library.
//
// Threads: the one that has made it; those of the library wake it. Errors: std::runtime_error when
// there can be no session.
class MusicSession final {
public:
    using Clock = std::chrono::steady_clock;

    MusicSession() {
        callbacks.notify_main_thread = [](sp_session* caller) {
            // NULL: it is still being made.
            if (MusicSession* const self = of(caller)) {
                const std::lock_guard<std::mutex> lock(self->mutex);
                self->isNotified = true;
                self->notified.notify_one();
            }
        };
        callbacks.logged_in = [](sp_session* caller, sp_error error) {
            of(caller)->isLoggedIn = error == SP_ERROR_OK;
        };
        callbacks.log_message = [](sp_session* caller, const char* line) {
            MusicSession* const self = of(caller);
            self->hasScanned = self->hasScanned || std::string_view(line).rfind("Scanned ", 0) == 0;
        };
        sp_session_config config{};
        config.api_version = SPOTIFY_API_VERSION;
        config.application_key = "key";
        config.application_key_size = 3;
        config.user_agent = "bench";
        config.callbacks = &callbacks;
        config.userdata = this;
        if (sp_session_create(&config, &session) != SP_ERROR_OK) {
            throw std::runtime_error("no session");
        }
    }
    ~MusicSession() { sp_session_release(session); }
    MusicSession(const MusicSession&) = delete;
    MusicSession& operator=(const MusicSession&) = delete;

    sp_session* get() const { return session; }

    // Both change while events are processed.
    bool loggedIn() const { return isLoggedIn; }
    bool scanned() const { return hasScanned; }

    // Processes events until the condition holds, at which it looks fifty times a second at least.
    void until(const std::function<bool()>& condition) {
        constexpr int often = 20;  // milliseconds
        for (int timeout = 0; !condition();) {
            std::unique_lock<std::mutex> lock(mutex);
            notified.wait_for(lock, std::chrono::milliseconds(std::min(timeout, often)),
                              [this] { return isNotified; });
            isNotified = false;
            lock.unlock();
            time([&] { sp_session_process_events(session, &timeout); });
        }
    }

    // Makes the call. It counts as the longest one unless the processor was taken from it: a busy
    // machine is not the library.
    template <typename Call>
    void time(Call call) {
        const long before = timesTakenAway();
        const Clock::time_point start = Clock::now();
        call();
        const double taken = std::chrono::duration<double>(Clock::now() - start).count();
        if (timesTakenAway() == before) {
            longestCall = std::max(longestCall, taken);
        }
    }
    // The longest call since this was asked last, in seconds.
    double takeLongest() { return std::exchange(longestCall, 0); }

private:
    static MusicSession* of(sp_session* caller) {
        return static_cast<MusicSession*>(sp_session_userdata(caller));
    }
    static long timesTakenAway() {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_nivcsw;
    }

    sp_session_callbacks callbacks{};
    sp_session* session = nullptr;
    bool isLoggedIn = false;
    bool hasScanned = false;
    double longestCall = 0;

    std::mutex mutex;
    std::condition_variable notified;
    bool isNotified = false;  // protected by mutex
};

}  // namespace sonolet::bench

#endif
