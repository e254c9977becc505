#ifndef SONOLET_SERVICE_FAULTS_FAULTS_H
#define SONOLET_SERVICE_FAULTS_FAULTS_H

#include "store/Id.h"

#include "libspotify/api.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// The bad days that a page is tested for: which faults a session shows, and when.
//
//     offline@5s-12s,token@20s,login=bad-password,slow=300ms,stream-error@30s
//
// A fault is a name, for some a value after "=", and a time after "@". Times are numbers with "ms",
// "s", "m" or "h" and count from the session's creation; a span without an end lasts, and a fault
// that may last and has no time lasts from the start. In a value "%" and two digits are a byte, for
// "," and "@".
//
// Threads: constant after construction, but for due(), which belongs to the session's owner.
class Faults final {
public:
    using Clock = std::chrono::steady_clock;
    enum class Kind { offline, token, login, slow, streamError, unavailable, message };

    // SPEC and speed of the clock, in thousandths: what SONOLET_FAULT and SONOLET_SPEED say. Throws
    // std::invalid_argument that says what is wrong and where.
    static Faults fromEnvironment();
    explicit Faults(std::string_view spec,
                    std::int64_t clockSpeed = 1000,
                    Clock::time_point begin = Clock::now());

    bool isOffline() const { return active(Kind::offline) != nullptr; }
    // What every login is answered with. Nothing: logins are answered as they are on other days.
    std::optional<sp_error> login() const;
    // How much later an answer comes, in the time of the machine.
    Clock::duration delay() const;
    // Whether a fault names this track now.
    bool isUnavailable(const Id& track) const;

    // What has begun, or has ended, since it was asked last. In the order of the times.
    struct Turn {
        Kind kind{};
        bool begins;
        std::string text;  // of a message
    };
    std::vector<Turn> due();
    // Until the next turn; nothing: there is none.
    std::optional<Clock::duration> untilNext() const;

private:
    using Time = std::chrono::microseconds;  // as the page counts

    struct Fault {
        Kind kind{};
        Time from{};
        Time to = Time::max();
        std::string text;  // of a message
        sp_error error = SP_ERROR_OK;
        Time delay{};
        Id track;
    };
    struct Change {
        Time time;
        Turn turn;
    };

    static Fault read(std::string_view text, std::size_t column);
    Clock::duration onMachine(Time time) const;
    Time now() const;
    const Fault* active(Kind kind) const;

    std::int64_t speed;  // thousandths
    Clock::time_point start;
    std::vector<Fault> faults;
    std::vector<Change> changes;  // in the order of their times
    std::size_t told = 0;         // the owner's
};

}  // namespace sonolet::service

#endif
