#include "runner/Overtime.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTBEGIN(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void
JSContextGroupSetExecutionTimeLimit(JSContextGroupRef group,
                                    double seconds,
                                    bool (*mustStop)(JSContextRef context, void* data),
                                    void* data);
// NOLINTEND(readability-identifier-naming)

namespace {

// Of processor time: until the engine stops the script, and from then to the end of the process.
constexpr time_t patience = 1;
constexpr time_t lastPatience = 2;
// How often the engine asks whether to stop the script, and whether to stop what comes after it.
constexpr double interval = 0.1;
constexpr double laterInterval = 0.001;

constexpr int alarmSignal = SIGVTALRM;

enum class Told : int { no, yes, isOver };

// What the signal's handler uses.
std::atomic<Told> told{Told::no};
timer_t whenToBegin;
timer_t processorTime;
std::string lastLine;

void makeTimer(clockid_t clock, timer_t* itself) {
    struct sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = alarmSignal;
    event.sigev_value.sival_ptr = itself;
    if (timer_create(clock, &event, itself) != 0) {
        throw std::runtime_error("the system has no timer left");
    }
}

void expired(int, siginfo_t* info, void*) {
    if (info->si_value.sival_ptr == &whenToBegin) {
        Overtime::begin();
    } else if (told.exchange(Told::isOver) == Told::isOver) {
        [[maybe_unused]] const ssize_t written =
            ::write(STDERR_FILENO, lastLine.data(), lastLine.size());
        _exit(1);
    }
}

}  // namespace

Overtime::Overtime(const std::string& page)
    : stopping("sonolet-host: " + page + ": a script went on a second too long and was stopped\n") {
    told = Told::no;
    lastLine = "sonolet-host: " + page + ": the page does not come to an end; it is not unloaded\n";
    makeTimer(CLOCK_MONOTONIC, &whenToBegin);
    makeTimer(CLOCK_THREAD_CPUTIME_ID, &processorTime);
    struct sigaction action = {};
    action.sa_sigaction = expired;
    action.sa_flags = SA_RESTART | SA_SIGINFO;
    sigaction(alarmSignal, &action, nullptr);
}

Overtime::~Overtime() {
    timer_delete(whenToBegin);
    timer_delete(processorTime);
    std::signal(alarmSignal, SIG_IGN);
}

void Overtime::watch(JSContextGroupRef engine) {
    if (JSContextGroupSetExecutionTimeLimit != nullptr) {
        JSContextGroupSetExecutionTimeLimit(engine, stopped ? laterInterval : interval,
                                            &Overtime::mustStop, this);
    }
}

void Overtime::begin() noexcept {
    Told no = Told::no;
    if (told.compare_exchange_strong(no, Told::yes)) {
        const struct itimerspec times = {{lastPatience, 0}, {patience, 0}};
        timer_settime(processorTime, 0, &times, nullptr);
    }
}

void Overtime::beginAfter(double seconds) {
    // Zero would be never, and thirty years are as good as that.
    const double bounded = std::min(std::max(seconds, 1e-6), 1e9);
    const auto whole = static_cast<time_t>(bounded);
    const auto nanoseconds = static_cast<long>((bounded - static_cast<double>(whole)) * 1e9);
    const struct itimerspec time = {{0, 0}, {whole, nanoseconds}};
    timer_settime(whenToBegin, 0, &time, nullptr);
}

bool Overtime::mustStop(JSContextRef context, void* data) {
    auto* const self = static_cast<Overtime*>(data);
    if (told == Told::isOver && !std::exchange(self->stopped, true)) {
        std::fputs(self->stopping.c_str(), stderr);
    }
    self->watch(JSContextGetGroup(context));  // the engine asks once
    return self->stopped;
}
