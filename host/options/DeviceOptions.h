#ifndef SONOLET_HOST_OPTIONS_DEVICEOPTIONS_H
#define SONOLET_HOST_OPTIONS_DEVICEOPTIONS_H

#include "media/AudioOptions.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

// What a command line says of the device, to whichever program of the host plays it.
//
// Errors: std::invalid_argument with the line that the user is to see.
struct DeviceOptions {
    std::string plugin = besideProgram("libSonolet.so.1.0");
    std::string music;  // empty: the environment decides
    std::string fault;  // the same; what the music service is to show of bad days
    AudioOptions audio;
    std::optional<int> logLevel;
    std::string trace;  // a file that says what passes between plug-in and device; empty: none
    bool isReplayable = false;  // ... and says it so that ./sonolet replay can do it again
    bool validates = false;     // checks what passes there

    // Those of the device's options that have no value.
    static constexpr const char* flags[] = {"--replayable", "--validate"};

    // Takes one option with its value; answers false when it is none of the device's.
    bool set(const std::string& option, const std::string& value);

    // What is to be loaded: the plug-in, or what stands before it to watch.
    std::string pluginLibrary() const;

    // Tells the libraries of this process that are loaded later, and its children. Refuses a fault
    // that the environment says and no option, when it cannot be read.
    // REQUIRES: no other thread runs yet.
    void setEnvironment() const;

    // The path of a library in ../lib beside this program.
    static std::string besideProgram(const std::string& library);
};

// One word of a command line, or two that belong together.
struct Argument {
    std::string option;  // with its dashes; empty: `value` is no option's
    std::string value;   // of an option: empty when it is a flag or the value is missing
};

// Takes "--name value" and "--name=value" apart; `flags` have no value. After "--" there are no
// options. Throws std::invalid_argument for a flag with a value.
std::vector<Argument>
splitArguments(int argc, char* const argv[], const std::set<std::string>& flags);

// The value of an option that takes a number above 0.
double positiveNumber(const Argument& argument);

#endif
