#ifndef SONOLET_LAYER_RECORD_TRACEFILE_H
#define SONOLET_LAYER_RECORD_TRACEFILE_H

#include "Settings.h"

#include <cstddef>
#include <string>

// The file of a trace, or two: when FILE has half of the bytes that are allowed, it becomes
// FILE.old, in the place of an earlier one, and a new FILE begins. So the latest part of a trace is
// always there; processes that are given the same FILE each have their own, with their number
// behind the name. Each of the two is a JSON array by itself, whose last bracket may be missing.
//
// Threads: one. Errors: the constructor throws std::runtime_error; what cannot be written later is
// told once on standard error, and nothing more is written.
class TraceFile final {
public:
    explicit TraceFile(const Settings& settings);
    ~TraceFile();

    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    // Whole lines. They are with the system when this returns.
    void write(const std::string& lines);

    // The next write may begin a new file: true when the one before it has become too large.
    bool turn();

    void close();

private:
    void open();

    std::string path;
    const std::size_t mostBytes;  // of one file
    int descriptor = -1;
    std::size_t written = 0;
};

#endif
