#ifndef SONOLET_LAYER_RECORD_RECORDER_H
#define SONOLET_LAYER_RECORD_RECORDER_H

#include "Settings.h"
#include "calls/Record.h"
#include "record/Baton.h"
#include "record/TraceFile.h"
#include "tap/Call.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

// Writes calls down: each thread copies its calls into one buffer, in the order in which they
// happen, and a thread of the recorder's own makes lines of them every 50 ms.
//
// Threads: any. A buffer that is full makes its callers wait for the writing thread, a second at
// most; what does not fit then is left out, and a mark in the trace says how many calls that were.
// In a recording that is to be replayed calls are whole, and one thread at a time is in the
// plug-in. Units: times are nanoseconds since the recorder was made (CLOCK_MONOTONIC); the buffer
// has 1 MiB, or 16 for such a recording. Ownership: values are copied while their call lasts, no
// pointer of a caller is kept. Signals: the writing thread blocks all of them, so the browser's
// handlers run on the browser's threads. Errors: after construction nothing is thrown; a file that
// cannot be written any more is told once on standard error and the calls go on.
class Recorder final : public Watcher {
public:
    // Throws std::runtime_error when the file cannot be written.
    explicit Recorder(const Settings& settings);
    // Finishes when nobody has.
    ~Recorder() override;

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Notes the time, and writes down the beginnings of the calls around this one: only now it is
    // known that they call somebody.
    void began(Call& call) noexcept override;
    // REQUIRES: began() of the same call, on the same thread.
    void ended(Call& call, const Value* results, unsigned count) noexcept override;

    // A word of the layer's own, at this moment of this thread.
    void mark(const std::string& text) noexcept;

    // Writes what there is and closes the file. What comes later is lost. Waits for the writing
    // thread, whose last lines are with the system when this returns; a second time it does
    // nothing.
    void finish();

private:
    // Whole records, one behind the other; `size` is what is used of them.
    struct Buffer {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
    };

    std::uint64_t now() const noexcept;
    // Its beginning, behind those of the calls around it.
    void writeDown(Call& call) noexcept;
    // Copies one record into the buffer, or counts it as lost.
    void append(Record head, const Value* arguments, const Value* results) noexcept;
    // The writing thread, for as long as it lives.
    void run();

    const std::uint64_t start;
    const bool isReplayable;
    const std::size_t capacity;  // bytes of a buffer
    Baton baton;                 // of a recording that is to be replayed
    TraceFile file;              // the writing thread's

    // State below is protected by mutex.
    std::mutex mutex;
    std::condition_variable wake;   // for the writing thread
    std::condition_variable taken;  // for those that wait for room
    Buffer filling;
    std::size_t lost = 0;  // calls
    bool ending = false;

    std::thread writer;
};

#endif
