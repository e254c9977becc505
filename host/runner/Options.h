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
    static std::string helpText();

    double speed() const noexcept { return audio.speed; }
};

#endif
