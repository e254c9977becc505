#ifndef SONOLET_LAYER_SETTINGS_H
#define SONOLET_LAYER_SETTINGS_H

#include <cstddef>
#include <string>

// What the environment asks of the layer.
//
// Read once, when the browser asks the layer for its capabilities; what is changed later counts for
// nothing. docs/watching.md has the variables for users.
struct Settings {
    std::string plugin;          // SONOLET_LAYER_PLUGIN; empty: libSonolet.so.1.0 beside the layer
    std::string traceFile;       // SONOLET_TRACE; empty: nothing is recorded
    std::size_t traceBytes = 0;  // SONOLET_TRACE_SIZE in MiB: of all files of the trace together
    bool isReplayable = false;   // SONOLET_TRACE_REPLAYABLE is set, and not to 0
    bool validates = false;      // SONOLET_VALIDATE is set, and not to 0
    std::string findingsFile;    // SONOLET_FINDINGS; empty: standard error

    // Throws std::runtime_error that names the variable and what is wrong with it.
    static Settings fromEnvironment();

    // False: the plug-in's own functions are handed out, and calls cost what they did.
    bool isWatching() const { return validates || !traceFile.empty(); }

    // The plug-in's file, for a layer in this file. As dlopen takes it: with a slash, so that the
    // loader does not search its own folders. Whether it is there is for dlopen to say.
    std::string pluginBeside(const std::string& layer) const;
};

#endif
