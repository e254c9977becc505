#ifndef SONOLET_LAYER_TOOLS_TRACEREADER_H
#define SONOLET_LAYER_TOOLS_TRACEREADER_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

// An event of a trace, as its line says it. Times are microseconds.
//
// The fields are those of the "Trace Event Format" that layer/record/Scribe.h names; what a line
// does not have is 0 or empty, and so is what has another type than it should.
struct TraceEvent {        // NOLINT(bugprone-exception-escape): moving JSON does not throw
    char phase = 0;        // 'X' a whole call, 'B' and 'E' its ends, 'i', 'C', 's', 'f', 'M'
    std::string name;      // as the timeline shows it
    std::string category;  // "host>plugin"
    std::string call;      // the function: what the name is when there is no other
    std::int64_t thread = 0;
    double time = 0;
    double duration = 0;
    std::int64_t id = 0;  // of an arrow
    nlohmann::json arguments;

    const nlohmann::json& in() const { return part("in"); }    // an array, maybe empty
    const nlohmann::json& out() const { return part("out"); }  // likewise
    // Of the nth value what it is, when it is that; else 0 or the empty text. An address is that of
    // {"kind": "address"}, whichever kind.
    static std::int64_t integer(const nlohmann::json& values, std::size_t n);
    static std::string text(const nlohmann::json& values, std::size_t n);
    static std::string address(const nlohmann::json& values, std::size_t n);

private:
    const nlohmann::json& part(const char* which) const;
};

// Reads traces that the layer has written, a line at a time. What is broken in them is left out and
// counted: a trace may end anywhere, and files get damaged on their way.
//
// Threads: one. Ownership: the stream is the caller's and outlives the reader. Errors: none thrown.
// A line may be of any length.
class TraceReader final {
public:
    explicit TraceReader(std::istream& lines) : input(lines) {}

    // The next event; false at the end of what there is. A last line without an end is kept: after
    // input.clear() the next call goes on with it, which is how a file is followed.
    bool next(TraceEvent& event);

    // One line; false when it is no event, or has values within each other that go 64 deep. With or
    // without its comma. `event` is not to be used after false.
    static bool parse(std::string_view line, TraceEvent& event);

    // Whether the last line said that nothing follows.
    bool hasEnded() const { return ended; }
    // Whether this is a trace of the layer at all: its head has been read.
    bool isTrace() const { return seenHead; }
    // Lines that were no events, of those that have an end.
    std::size_t broken() const { return brokenLines; }

private:
    std::istream& input;
    std::string rest;  // of a line whose end has not come yet
    bool ended = false;
    bool seenHead = false;
    std::size_t brokenLines = 0;
};

#endif
