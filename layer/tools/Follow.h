#ifndef SONOLET_LAYER_TOOLS_FOLLOW_H
#define SONOLET_LAYER_TOOLS_FOLLOW_H

#include "tools/TraceReader.h"

#include <string>

// What of a stream is wanted; an empty text wants everything. Upper and lower case differ. A call
// is shown when it has all that is given.
struct Filter {
    std::string object;
    std::string member;
    std::string thread;

    // `threadName` is the name of the event's thread. An object is looked for among the arguments
    // and results, as they are printed.
    bool wants(const TraceEvent& event, const std::string& threadName) const;
};

// A value as people read it: "Fog Signal", 3, track 55d0, (secret); of a
// recording that can be replayed (secret 3), the same number for the same. What is no UTF-8 becomes
// U+FFFD; any JSON has some text.
std::string readable(const nlohmann::json& value);

// The call with its arguments: "sp_track_name(track 55d0)".
std::string readable(const TraceEvent& event);

// Prints the stream, a line a call, and waits for more while somebody writes the file. False when
// it is no trace. Looks every 100 ms, and returns when the trace has ended or nobody has it locked
// any more. Throws std::invalid_argument with the reason when the file cannot be opened.
bool follow(const std::string& file, const Filter& filter);

#endif
