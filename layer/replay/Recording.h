#ifndef SONOLET_LAYER_REPLAY_RECORDING_H
#define SONOLET_LAYER_REPLAY_RECORDING_H

#include "tap/Functions.h"
#include "tools/TraceReader.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The reason for which a file, or what it asks for, cannot be replayed. For people.
struct NotReplayable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// No value of a recording has more: a record lay in the recorder's buffer as a whole.
constexpr std::size_t mostBytes = 16U << 20U;

// A call of a recording, or one end of it.
struct Step {
    Fn function = Fn::count;  // of an 'E' as well
    char phase = 0;           // 'X' a whole call, 'B' its beginning, 'E' its end
    std::int64_t thread = 0;
    std::size_t line = 0;  // of the file, from 1; the older file's come first
    std::string_view text;

    // Whether it leads into the plug-in.
    bool goesIn() const { return infoOf(function).caller != Party::Plugin; }
};

// A timeline that the layer wrote with SONOLET_TRACE_REPLAYABLE, FILE.old before it included.
//
// Threads: any, once it is made. Memory: the file's size, and some for each line; what a line says
// is taken apart each time it is asked for.
class Recording final {
public:
    // Throws NotReplayable: there is no such file, it is no timeline or none that says all, its
    // beginning or calls in it are missing, it has broken lines, or calls that nobody knows.
    explicit Recording(const std::string& path);
    // Of what such files have; the path is for words alone.
    Recording(const std::string& path, std::string newer, std::string older);

    // Steps have views of the texts.
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    const std::vector<Step>& steps() const { return all; }
    // As the line says it.
    static TraceEvent event(const Step& step);

    // False when its process ended without its exit handlers: calls may be open.
    bool isWhole() const { return ended; }
    double seconds() const;

private:
    void readBoth(const std::string& path, std::string newer, std::string older);
    void read(const std::string& path, const std::string& text);
    void add(const TraceEvent& event, std::string_view line);

    std::string texts[2];  // the older one first
    std::vector<Step> all;
    std::vector<std::pair<std::int64_t, std::vector<Fn>>> open;  // by thread
    std::size_t lines = 0;
    std::int64_t parts = 0;
    bool ended = false;
};

#endif
