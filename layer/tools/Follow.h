#ifndef SONOLET_LAYER_TOOLS_FOLLOW_H
#define SONOLET_LAYER_TOOLS_FOLLOW_H

#include "tools/TraceReader.h"

#include <string>

// What of a stream is wanted; an empty text wants everything.
struct Filter {
    std::string object;
    std::string member;
    std::string thread;

    // `threadName` is the name of the event's thread.
    bool wants(const TraceEvent& event, const std::string& threadName) const;
};

// A value as people read it: "Fog Signal", 3, track 55d0, (secret).
std::string readable(const nlohmann::json& value);

// The call with its arguments: "sp_track_name(track 55d0)".
std::string readable(const TraceEvent& event);

// Prints the stream, a line a call, and waits for more while somebody writes the file. False when
// it is no trace.
bool follow(const std::string& file, const Filter& filter);

#endif
