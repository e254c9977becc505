#ifndef SONOLET_LAYER_TOOLS_SUMMARY_H
#define SONOLET_LAYER_TOOLS_SUMMARY_H

#include "tools/TraceReader.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

// What a trace comes to: calls by member, events with the time from cause to listener, queries,
// sound track by track, and what is left over.
//
// Threads: one. Units: microseconds and bytes. Memory: four bytes for each call, and each mark.
// Errors: none; a trace may begin and end anywhere and is summed up as far as it goes.
class Summary final {
public:
    // Each event once, in the order of the file.
    void add(const TraceEvent& event);

    // As tables. `rows` is the most that each has.
    std::string text(std::size_t rows) const;

private:
    // As floats: seven digits are more than is shown. Without any all answers are 0.
    struct Times {
        std::vector<float> all;  // us
        void add(double us) { all.push_back(static_cast<float>(us)); }
        double total() const;
        double median() const;
        double worst() const;
    };
    // A call that has begun: as people call it, and the function.
    struct Frame {
        std::string name;
        std::string call;
        double began = 0;
    };
    // One load up to the next.
    struct Track {
        double at = 0;
        bool isPlayed = false;
        std::int64_t deliveries = 0;
        std::int64_t delivered = 0;  // bytes
        std::int64_t refused = 0;    // deliveries that were not taken
        std::int64_t requests = 0;
        std::int64_t written = 0;  // bytes
        std::int64_t underruns = 0;
        double firstSound = 0;  // from the load; 0: none came
        double longestGap = 0;  // between two writes
        double lastWrite = 0;
        std::string end;
    };

    // One that is over, with how long it took.
    void call(const Frame& frame, double time);
    // Deliveries, requests and writes, to the track that was loaded last.
    void sound(const TraceEvent& event, const std::string& name);
    // Keeps what there is when a document unloads; the last one counts.
    void mark(const TraceEvent& event);
    // What arguments tell: objects that go, questions and answers, listeners.
    void comes(const TraceEvent& event, const std::string& name);
    // What results tell: objects that were made, references.
    void goes(const TraceEvent& event, const std::string& name);
    // The one that was loaded last; one that begins `at` this time when none was.
    Track& track(double at);

    std::string head() const;
    // Sorted by the time together; empty without rows.
    std::string timesTable(const std::string& title,
                           const std::map<std::string, Times>& rows,
                           std::size_t most) const;
    std::string soundTable() const;
    // How many of the living objects each call has made.
    std::map<std::string, std::int64_t> makers() const;
    // What was there when the last document went; then levels, marks, and what went wrong.
    std::string leftovers(std::size_t rows) const;

    // By thread.
    std::map<std::int64_t, std::vector<Frame>> stacks;
    std::map<std::int64_t, std::string> threads;
    std::string process;
    std::string date;
    double first = -1;
    double last = 0;
    double idle = 0;
    std::size_t events = 0;

    std::map<std::string, Times> members;    // of the plug-in, and listeners
    std::map<std::string, Times> functions;  // of host, library and backend
    std::map<std::string, Times> arrows;
    std::unordered_map<std::int64_t, double> arrowBegins;
    std::map<std::string, Times> queries;
    // By the number of their registration: the function, and when.
    std::unordered_map<std::string, std::pair<std::string, double>> asked;

    std::vector<Track> tracks;
    std::vector<std::pair<double, std::string>> marks;
    std::vector<std::pair<double, std::string>> faults;

    // Objects of the plug-in that are there, with what made them; references; listeners.
    std::unordered_map<std::string, std::string> objects;
    std::map<std::string, std::int64_t> handles;
    std::map<std::string, std::int64_t> kept;  // when the last document went
    std::map<std::string, std::int64_t> keptHandles;
    std::map<std::string, std::int64_t> listeners;
    std::map<std::string, std::pair<double, double>> levels;  // first and last
    std::map<std::string, double> mostLevels;
};

#endif
