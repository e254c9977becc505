#ifndef SONOLET_LAYER_REPLAY_TURNS_H
#define SONOLET_LAYER_REPLAY_TURNS_H

#include "replay/Recording.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

// Lets the threads of a replay go on in the order of the recording: who has made its step goes on
// alone, up to its next one, as it did when it was recorded (record/Baton.h).
//
// Threads: any; a Line is its own thread's. Errors: none. Steps are told by their place in the
// recording.
class Turns final {
public:
    // One thread's steps.
    struct Line {
        std::int64_t thread = 0;
        std::vector<std::size_t> steps;
        std::size_t at = 0;
        std::condition_variable isNext;

        bool hasEnded() const { return at == steps.size(); }
        // REQUIRES: it has not ended.
        std::size_t next() const { return steps[at]; }
    };

    explicit Turns(const std::vector<Step>& all);

    Line& line(std::int64_t thread) { return *lines.at(thread); }
    // By the first step.
    std::vector<Line*> inOrder();

    // Waits until the thread's next step is the next of all and nobody is under way, and makes it.
    // REQUIRES: there is one, and the thread's step before it is over.
    std::size_t make(Line& line);
    // Its step is over: the next thread may go on.
    void pass();

    // Steps made so far; any thread.
    std::size_t made() const;
    // Waits until all steps are made and over.
    void awaitEnd();

private:
    mutable std::mutex mutex;
    std::condition_variable over;
    std::unordered_map<std::int64_t, std::unique_ptr<Line>> lines;
    const std::vector<Step>& steps;
    std::size_t next = 0;
    bool isUnderWay = false;

    void wakeNext();
};

#endif
