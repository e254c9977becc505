#ifndef SONOLET_HOST_RUNNER_OPTIONS_H
#define SONOLET_HOST_RUNNER_OPTIONS_H

#include "options/DeviceOptions.h"

#include <optional>
#include <string>

// What the command line asks for.
struct Options : DeviceOptions {
    bool help = false;
    bool version = false;
    std::string page;
    std::optional<double> seconds;  // page time after which the page is closed
    bool exposeGc = false;
    bool stressGc = false;

    // Throws std::invalid_argument with the line that the user is to see.
    static Options parse(int argc, char* const argv[]);
    // What --help prints: a line for each option, those of the device among them.
    static std::string helpText();

    // Seconds of page time in a second: the clock of timers is that of the sound.
    double speed() const noexcept { return audio.speed; }
};

#endif
