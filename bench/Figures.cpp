#include "Figures.h"

#include <time.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace figures {

namespace {

double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double timed(ClockFunction clock, const std::function<void()>& batch) {
    const double start = clock();
    batch();
    return clock() - start;
}

}  // namespace

Figure atMost(std::string what,
              double value,
              std::string unit,
              std::string peer,
              double peerValue,
              double bound) {
    return {std::move(what),      value, std::move(unit), std::move(peer), peerValue,
            Figure::Goal::AtMost, bound};
}

Figure atLeast(std::string what,
               double value,
               std::string unit,
               std::string peer,
               double peerValue,
               double bound) {
    Figure figure =
        atMost(std::move(what), value, std::move(unit), std::move(peer), peerValue, bound);
    figure.goal = Figure::Goal::AtLeast;
    return figure;
}

Figure within(std::string what, double value, std::string unit, double limit) {
    return atMost(std::move(what), value, std::move(unit), "limit", limit, 1);
}

Figure plain(std::string what, double value, std::string unit) {
    Figure figure;
    figure.what = std::move(what);
    figure.value = value;
    figure.unit = std::move(unit);
    return figure;
}

void report(const Figure& figure) {
    static const char* const goals[] = {"-", "<=", ">="};
    std::printf("%s\t%.9g\t%s\t%s\t%.9g\t%s\t%.9g\n", figure.what.c_str(), figure.value,
                figure.unit.c_str(), figure.peer.c_str(), figure.peerValue,
                goals[static_cast<int>(figure.goal)], figure.bound);
    std::fflush(stdout);
}

Figure parse(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, '\t');) {
        fields.push_back(field);
    }
    if (fields.size() != 7) {
        throw std::runtime_error("no figure: " + line);
    }
    Figure figure = plain(fields[0], std::stod(fields[1]), fields[2]);
    figure.peer = fields[3];
    figure.peerValue = std::stod(fields[4]);
    figure.goal = fields[5] == "<="   ? Figure::Goal::AtMost
                  : fields[5] == ">=" ? Figure::Goal::AtLeast
                                      : Figure::Goal::None;
    figure.bound = std::stod(fields[6]);
    return figure;
}

double threadSeconds() {
    return secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

double processSeconds() {
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

double wallSeconds() {
    return secondsOf(CLOCK_MONOTONIC);
}

double median(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    const std::size_t middle = samples.size() / 2;
    return samples.size() % 2 == 1 ? samples[middle] : (samples[middle - 1] + samples[middle]) / 2;
}

Compared compare(int rounds,
                 double count,
                 ClockFunction clock,
                 const std::function<void()>& subject,
                 const std::function<void()>& peer) {
    subject();
    peer();
    std::vector<double> ofSubject;
    std::vector<double> ofPeer;
    for (int i = 0; i < rounds; ++i) {
        ofSubject.push_back(timed(clock, subject));
        ofPeer.push_back(timed(clock, peer));
    }
    return {median(ofSubject) * 1e9 / count, median(ofPeer) * 1e9 / count};
}

double
measure(int rounds, double count, ClockFunction clock, const std::function<void()>& subject) {
    subject();
    std::vector<double> samples;
    samples.reserve(static_cast<std::size_t>(rounds));
    for (int i = 0; i < rounds; ++i) {
        samples.push_back(timed(clock, subject));
    }
    return median(samples) * 1e9 / count;
}

struct SecondThread::State {
    std::mutex mutex;
    std::condition_variable ended;
    bool end = false;
    std::thread thread;
};

SecondThread::SecondThread() : state(new State) {
    state->thread = std::thread([this] {
        std::unique_lock<std::mutex> lock(state->mutex);
        state->ended.wait(lock, [this] { return state->end; });
    });
}

SecondThread::~SecondThread() {
    {
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->end = true;
    }
    state->ended.notify_one();
    state->thread.join();
    delete state;
}

}  // namespace figures
