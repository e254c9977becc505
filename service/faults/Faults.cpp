#include "faults/Faults.h"

#include "store/LinkTarget.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace sonolet::service {

namespace {

using Kind = Faults::Kind;

enum class Value { none, loginError, duration, track, text };
enum class When { maySpan, point };

struct KindRow {
    const char* name;
    Kind kind;
    Value value;
    When when;
};

constexpr std::array<KindRow, 7> kinds = {{
    {"offline", Kind::offline, Value::none, When::maySpan},
    {"token", Kind::token, Value::none, When::point},
    {"login", Kind::login, Value::loginError, When::maySpan},
    {"slow", Kind::slow, Value::duration, When::maySpan},
    {"stream-error", Kind::streamError, Value::none, When::point},
    {"unavailable", Kind::unavailable, Value::track, When::maySpan},
    {"message", Kind::message, Value::text, When::point},
}};

constexpr std::array<std::pair<const char*, sp_error>, 5> loginErrors = {{
    {"bad-password", SP_ERROR_BAD_USERNAME_OR_PASSWORD},
    {"banned", SP_ERROR_USER_BANNED},
    {"needs-premium", SP_ERROR_USER_NEEDS_PREMIUM},
    {"too-old", SP_ERROR_CLIENT_TOO_OLD},
    {"no-contact", SP_ERROR_UNABLE_TO_CONTACT_SERVER},
}};

// A part of the text, and where it is.
struct Part {
    std::string_view text;
    std::size_t column;  // from 1

    [[noreturn]] void fail(const std::string& what) const {
        throw std::invalid_argument("fault \"" + std::string(text) + "\" at character " +
                                    std::to_string(column) + ": " + what);
    }
    Part from(std::size_t place) const { return {text.substr(place), column + place}; }
    Part before(std::size_t place) const { return {text.substr(0, place), column}; }
};

template <typename Rows, typename Name>
std::string namesOf(const Rows& rows, Name name) {
    std::string names;
    for (const auto& row : rows) {
        names += (names.empty() ? "" : ", ") + std::string(name(row));
    }
    return names;
}

// What the machine's clock can hold, at whatever speed.
constexpr std::int64_t longest = 100'000'000'000'000;  // microseconds
constexpr std::int64_t fastest = 1'000'000'000;        // thousandths

// Takes a decimal number from the front of the text, in units of which `one` are 1. What is beyond
// `most` is `most`; none is there: nothing.
std::optional<std::int64_t>
takeNumber(std::string_view& text, std::int64_t one, std::int64_t most) {
    const auto isDigit = [&] { return !text.empty() && g_ascii_isdigit(text.front()); };
    if (!isDigit()) {
        return std::nullopt;
    }
    std::int64_t number = 0;
    for (; isDigit(); text.remove_prefix(1)) {
        number = std::min(number * 10 + (text.front() - '0') * one, most);
    }
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        for (std::int64_t place = one / 10; isDigit(); text.remove_prefix(1), place /= 10) {
            number = std::min(number + (text.front() - '0') * place, most);
        }
    }
    return number;
}

std::chrono::microseconds timeOf(const Part& part) {
    constexpr std::array<std::pair<std::string_view, std::int64_t>, 4> units = {
        {{"ms", 1'000}, {"s", 1'000'000}, {"m", 60'000'000}, {"h", 3'600'000'000}}};
    for (const auto& [name, microseconds] : units) {
        std::string_view rest = part.text;
        const auto number = takeNumber(rest, microseconds, longest);
        if (number && rest == name && *number < longest) {
            return std::chrono::microseconds(*number);
        }
    }
    part.fail("a time is a number with ms, s, m or h, as 1.5s");
}

std::string decoded(const Part& part) {
    std::string text;
    for (std::size_t at = 0; at < part.text.size(); ++at) {
        if (part.text[at] != '%') {
            text += part.text[at];
            continue;
        }
        const int high = at + 2 < part.text.size() ? g_ascii_xdigit_value(part.text[at + 1]) : -1;
        const int low = high < 0 ? -1 : g_ascii_xdigit_value(part.text[at + 2]);
        if (low < 0) {
            part.from(at).fail("\"%\" is followed by two hexadecimal digits (%25 is a \"%\")");
        }
        text += static_cast<char>(high << 4 | low);
        at += 2;
    }
    return text;
}

}  // namespace

Faults Faults::fromEnvironment() {
    const char* spec = g_getenv("SONOLET_FAULT");
    const char* speed = g_getenv("SONOLET_SPEED");
    std::string_view number = speed == nullptr ? "1" : speed;
    return Faults(spec == nullptr ? "" : spec, takeNumber(number, 1000, fastest).value_or(0));
}

Faults::Faults(std::string_view spec, std::int64_t clockSpeed, Clock::time_point begin)
    : speed(clockSpeed > 0 ? clockSpeed : 1000), start(begin) {
    for (std::size_t at = 0; !spec.empty() && at <= spec.size();) {
        const std::size_t end = std::min(spec.find(',', at), spec.size());
        faults.push_back(read(spec.substr(at, end - at), at + 1));
        at = end + 1;
    }
    for (const Fault& fault : faults) {
        changes.push_back({fault.from, {fault.kind, true, fault.text}});
        if (fault.to != Time::max()) {
            changes.push_back({fault.to, {fault.kind, false, {}}});
        }
    }
    std::stable_sort(changes.begin(), changes.end(), [](const Change& left, const Change& right) {
        return left.time < right.time;
    });
}

Faults::Fault Faults::read(std::string_view text, std::size_t column) {
    const Part whole{text, column};
    const std::size_t at = text.rfind('@');
    const bool timed = at != std::string_view::npos;
    const Part head = whole.before(timed ? at : text.size());
    const std::size_t equals = head.text.find('=');
    const bool valued = equals != std::string_view::npos;
    const std::string_view name = head.text.substr(0, equals);
    const auto* const row = std::find_if(kinds.begin(), kinds.end(),
                                         [&](const KindRow& kind) { return name == kind.name; });
    if (row == kinds.end()) {
        whole.fail("there are " + namesOf(kinds, [](const KindRow& kind) { return kind.name; }));
    }
    if (valued != (row->value != Value::none)) {
        whole.fail(valued ? "it takes no value"
                          : "it takes a value, as " + std::string(name) + "=...");
    }
    Fault fault;
    fault.kind = row->kind;
    const Part value = valued ? head.from(equals + 1) : head;
    if (row->value == Value::loginError) {
        const auto* const found =
            std::find_if(loginErrors.begin(), loginErrors.end(),
                         [&](const auto& error) { return value.text == error.first; });
        if (found == loginErrors.end()) {
            value.fail("a login is " +
                       namesOf(loginErrors, [](const auto& error) { return error.first; }));
        }
        fault.error = found->second;
    } else if (row->value == Value::duration) {
        fault.delay = timeOf(value);
    } else if (row->value == Value::track) {
        const std::optional<LinkTarget> link = LinkTarget::parse(value.text);
        if (!link || link->type != SP_LINKTYPE_TRACK) {
            value.fail("it is no link of a track, as spotify:track:...");
        }
        fault.track = link->id;
    } else if (row->value == Value::text) {
        fault.text = decoded(value);
    }
    if (row->when == When::point && !timed) {
        whole.fail("it takes a time, as " + std::string(name) + (valued ? "=..." : "") + "@20s");
    }
    if (timed) {
        const Part time = whole.from(at + 1);
        const std::size_t dash = time.text.find('-');
        fault.from = timeOf(time.before(dash));
        if (dash != std::string_view::npos && row->when == When::point) {
            time.fail("it happens at one time");
        }
        if (dash != std::string_view::npos) {
            fault.to = timeOf(time.from(dash + 1));
            if (fault.to <= fault.from) {
                time.fail("it ends before it begins");
            }
        }
    }
    return fault;
}

Faults::Clock::duration Faults::onMachine(Time time) const {
    return Time(std::min(time.count() * 1000 / speed, longest));
}

Faults::Time Faults::now() const {
    const std::int64_t elapsed = std::chrono::duration_cast<Time>(Clock::now() - start).count();
    return Time(elapsed / 1000 * speed + elapsed % 1000 * speed / 1000);
}

const Faults::Fault* Faults::active(Kind kind) const {
    const Time time = now();
    for (const Fault& fault : faults) {
        if (fault.kind == kind && fault.from <= time && time < fault.to) {
            return &fault;
        }
    }
    return nullptr;
}

std::optional<sp_error> Faults::login() const {
    if (isOffline()) {
        return SP_ERROR_UNABLE_TO_CONTACT_SERVER;
    }
    const Fault* fault = active(Kind::login);
    return fault == nullptr ? std::nullopt : std::optional<sp_error>(fault->error);
}

Faults::Clock::duration Faults::delay() const {
    const Fault* fault = active(Kind::slow);
    return fault == nullptr ? Clock::duration::zero() : onMachine(fault->delay);
}

bool Faults::isUnavailable(const Id& track) const {
    const Time time = now();
    return std::any_of(faults.begin(), faults.end(), [&](const Fault& fault) {
        return fault.kind == Kind::unavailable && fault.track == track && fault.from <= time &&
               time < fault.to;
    });
}

std::vector<Faults::Turn> Faults::due() {
    std::vector<Turn> turns;
    for (const Time time = now(); told < changes.size() && changes[told].time <= time; ++told) {
        turns.push_back(changes[told].turn);
    }
    return turns;
}

std::optional<Faults::Clock::duration> Faults::untilNext() const {
    if (told == changes.size()) {
        return std::nullopt;
    }
    return std::max(Clock::duration::zero(), onMachine(changes[told].time - now()));
}

}  // namespace sonolet::service
