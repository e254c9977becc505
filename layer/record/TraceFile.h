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
// A file that is made here can be read by its owner alone, since it tells what passes between a
// page and its music service. It stays locked (flock) while it is written: by that another process
// sees that the name is taken, and a reader that more is to come.
//
// Threads: one. Units: bytes. Errors: the constructor throws std::runtime_error; what cannot be
// written later is told once on standard error, and nothing more is written.
class TraceFile final {
public:
    // Makes or empties the file. The error's text has SONOLET_TRACE, the path and the system's
    // reason.
    explicit TraceFile(const Settings& settings);
    ~TraceFile();

    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    // Whole lines. They are with the system when this returns. Nothing when the file is closed.
    void write(const std::string& lines);

    // The next write may begin a new file: true when the one before it has become too large. The
    // caller begins it with a head of its own. False, too, when there is none to write into.
    bool turn();

    // Lets go of the file and its lock. Again does nothing.
    void close();

private:
    // Leaves `descriptor` below 0, and the reason in errno, when it cannot.
    void open();

    // Of the file that is open: FILE, or FILE and the number of this process.
    std::string path;
    const std::size_t mostBytes;  // of one file
    int descriptor = -1;
    std::size_t written = 0;
};

#endif
