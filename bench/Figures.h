#ifndef SONOLET_BENCH_FIGURES_H
#define SONOLET_BENCH_FIGURES_H

#include <functional>
#include <string>
#include <vector>

// What the benchmarks measure, and how it reaches the table.
namespace figures {

// A figure beside what it is compared with: a peer measured in the same run, or a limit. The ratio
// is the figure by the peer or the limit.
struct Figure {
    enum class Goal { None, AtMost, AtLeast };

    std::string what;
    double value = 0;
    std::string unit;
    std::string peer;  // "limit" for a limit
    double peerValue = 0;
    Goal goal = Goal::None;
    double bound = 0;  // of the ratio

    // 0 beside a limit of 0.
    double ratio() const { return peerValue > 0 ? value / peerValue : 0; }
    bool holds() const {
        return goal == Goal::None ||
               (goal == Goal::AtMost ? value <= bound * peerValue : value >= bound * peerValue);
    }
};

// At most `bound` times the peer's.
Figure atMost(std::string what,
              double value,
              std::string unit,
              std::string peer,
              double peerValue,
              double bound);
// At least `bound` times the peer's.
Figure atLeast(std::string what,
               double value,
               std::string unit,
               std::string peer,
               double peerValue,
               double bound);
// No more than the limit.
Figure within(std::string what, double value, std::string unit, double limit);
// Without a goal.
Figure plain(std::string what, double value, std::string unit);

// A line on standard output, for sonolet-bench to read, and back. A line that is none throws
// std::runtime_error.
void report(const Figure& figure);
Figure parse(const std::string& line);

// Seconds of processor time of this thread, of all threads, and of the clock on the wall.
double threadSeconds();
double processSeconds();
double wallSeconds();
using ClockFunction = double (*)();

double median(std::vector<double> samples);

// Times two batches in turn, `rounds` times each after one of each to warm up, so that what else
// the machine does touches both alike. Medians, in nanoseconds for each of `count` operations.
struct Compared {
    double subject;
    double peer;
};
Compared compare(int rounds,
                 double count,
                 ClockFunction clock,
                 const std::function<void()>& subject,
                 const std::function<void()>& peer);

// The same for one batch alone.
double measure(int rounds, double count, ClockFunction clock, const std::function<void()>& subject);

// Keeps the compiler from leaving out what makes `value`.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

// A thread that sleeps as long as this object lives: with a second thread in the process the C
// library counts and locks as it does in a browser.
class SecondThread final {
public:
    SecondThread();
    ~SecondThread();
    SecondThread(const SecondThread&) = delete;
    SecondThread& operator=(const SecondThread&) = delete;

private:
    struct State;
    State* const state;
};

}  // namespace figures

#endif
