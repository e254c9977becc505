#ifndef SONOLET_LAYER_RECORD_SCRIBE_H
#define SONOLET_LAYER_RECORD_SCRIBE_H

#include "record/Event.h"
#include "record/Names.h"
#include "record/Story.h"
#include "record/TraceFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

// Makes lines of the trace of records: the JSON trace event format, a line an event.
//
// What an idle browser does over and over (a poll in which the library has nothing to do, a
// collection that finds what the last one found) is told by one line, however often it happens.
// Threads: one.
class Scribe final {
public:
    explicit Scribe(TraceFile& traceFile);

    // Whole records, one behind the other, in order.
    void write(const char* records, std::size_t size);
    // So many calls are not in the trace.
    void tellLost(std::size_t calls);
    // What has been written so far goes to the file.
    void endOfBatch(std::uint64_t now);
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

    void event(const char*& from);
    void beginFile();
    void tellThread(std::uint32_t thread, std::string_view role);
    void tellThreadName(std::uint32_t thread, const std::string& name);
    void line(const Event& event, const std::string& name);
    void story(const Event& event);
    void counters(std::uint64_t now);

    bool isQuiet(const Event& event) const;
    void holdBack(const Event& event);
    void endQuiet(const Event& event);
    void tellHeld();
    void tellIdle();

    void begin(const char* phase, std::uint32_t thread, std::uint64_t time);
    void arguments(const Event& event, const std::string& name);
    void values(const char* name, const std::vector<Value>& all);

    TraceFile& file;
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

    Story::Levels told;
    std::size_t toldObjects = 0;
    std::uint64_t levelsAt = 0;
    std::uint64_t memoryAt = 0;
    std::uint64_t toldMemory = 0;
};

#endif
