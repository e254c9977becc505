#ifndef SONOLET_LAYER_RECORD_SCRIBE_H
#define SONOLET_LAYER_RECORD_SCRIBE_H

#include "calls/Event.h"
#include "calls/Names.h"
#include "calls/Story.h"
#include "record/TraceFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

// Makes lines of the trace of records: the JSON trace event format, a line an event.
//
// The format is public, Google's "Trace Event Format"
// (docs.google.com/document/d/1CvAClvFfyA5R-PhYUmn5OOQtYMH4h6I0nSsKchNAySU), in the form of an
// array: 'X' for a call that called nobody, 'B' and 'E' around others, 's' and 'f' for arrows, 'i'
// for marks, 'C' for levels, 'M' for names. docs/watching.md has what stands in "args". Secrets are
// hidden before a line is made.
//
// What an idle browser does over and over (a poll in which the library has nothing to do, a
// collection that finds what the last one found) is told by one line, however often it happens.
//
// Threads: one. Units: records have nanoseconds, lines microseconds with their thousandths.
// Ownership: the file is its owner's and outlives the scribe. Errors: none of its own, those of
// TraceFile::write.
class Scribe final {
public:
    // Writes the head of the file. A whole trace can be replayed: nothing is told as idle, and each
    // secret has a number and its length, so that the same is known to be the same.
    explicit Scribe(TraceFile& traceFile, bool isWholeTrace = false);

    // Whole records, one behind the other, in order. Their lines are kept until the batch ends, or
    // there are 256 KiB of them. REQUIRES: none is cut off.
    void write(const char* records, std::size_t size);
    // So many calls are not in the trace.
    void tellLost(std::size_t calls);
    // What has been written so far goes to the file. `now` is the time of the levels, in ns since
    // the recording began.
    void endOfBatch(std::uint64_t now);
    // All that is still held back, and the last bracket. Nothing may follow.
    void finish();

private:
    // What a thread is doing that may turn out to be nothing new.
    struct Quiet {
        std::uint32_t thread = 0;  // 0: nothing
        int depth = 0;
        bool isCollection = false;
        std::string held;     // its lines
        std::string content;  // what makes a collection like the last one
        std::uint64_t began = 0;
    };

    // One record; moves `from` to the next.
    void event(const char*& from);
    // The head, with the names of the threads that are known by now.
    void beginFile();
    // Lines go to the file; once it is full a new one begins.
    void flush();
    void tellThread(std::uint32_t thread, std::string_view role);
    void tellThreadName(std::uint32_t thread, const std::string& name);
    void line(const Event& event, const std::string& name);
    void story(const Event& event);
    void counters(std::uint64_t now);

    // Whether nothing has come of the poll or collection up to and with this event.
    bool isQuiet(const Event& event) const;
    // Adds to what a collection is compared by.
    void holdBack(const Event& event);
    // Counts what was held back as idle, or tells it when it is news after all.
    void endQuiet(const Event& event);
    void tellHeld();
    // One line of all that was counted as idle since the last.
    void tellIdle();

    // The front of a line, open for what its kind has behind it.
    void begin(const char* phase, std::uint32_t thread, std::uint64_t time);
    void arguments(const Event& event, const std::string& name);
    void values(const char* name, const std::vector<Value>& all);
    void secret(const Value& value);

    TraceFile& file;
    const bool isWhole;
    int parts = 0;  // files that were begun
    std::string lines;
    std::string* out = &lines;  // or what is held back
    const int process;

    Names names;
    Story follower;
    std::unordered_map<std::uint32_t, std::string> threads;
    std::uint64_t lastArrow = 0;

    Quiet quiet;
    std::string lastCollection;
    // Since the last line: how often, from when to when, on which thread.
    std::uint64_t idleTimes = 0;
    std::uint64_t idleFrom = 0;
    std::uint64_t idleTo = 0;
    std::uint32_t idleThread = 0;

    // Levels are told when they have changed, at most ten times a second; memory, looked at
    // each second, when it has changed by 256 KiB.
    Story::Levels told;
    std::size_t toldObjects = 0;
    std::size_t toldWrappers = 0;
    std::uint64_t levelsAt = 0;
    std::uint64_t memoryAt = 0;
    std::uint64_t toldMemory = 0;
};

#endif
