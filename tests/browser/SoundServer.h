#ifndef SONOLET_TESTS_BROWSER_SOUND_SERVER_H
#define SONOLET_TESTS_BROWSER_SOUND_SERVER_H

#include "Process.h"

// A PulseAudio of one's own, whose loudspeaker goes nowhere but is recorded. While it lives, it is
// what this process and those that it starts play to.
class SoundServer final {
public:
    // Two 16-bit samples, 44,100 times a second.
    using Frames = std::vector<std::uint32_t>;

    // Keeps its files in `folder`. REQUIRES: no other thread runs yet.
    explicit SoundServer(const std::string& folder);

    void record();
    // What was heard since, silence included.
    Frames heard();

    static Frames framesOf(const std::string& pcm);

private:
    const std::string folder;
    std::unique_ptr<Process> server;
    std::unique_ptr<Process> recorder;
};

#endif
