#ifndef SONOLET_HOST_RUNNER_OPTIONS_H
#define SONOLET_HOST_RUNNER_OPTIONS_H

#include <optional>
#include <string>

// What the command line asks for.
struct Options {
    enum class Sink { Auto, Wav, Null };

    bool help = false;
    std::string page;
    std::string plugin;
    std::string music;  // empty: the environment decides
    Sink sink = Sink::Auto;
    std::string wavFile;
    std::optional<double> seconds;  // page time after which the page is closed
    double speed = 1.0;
    std::optional<int> logLevel;
    bool exposeGc = false;

    // Throws std::invalid_argument with the line that the user is to see.
    static Options parse(int argc, char* const argv[]);
    static std::string helpText();
};

#endif
