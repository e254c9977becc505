#ifndef SONOLET_TESTS_HOST_PROBE_PROBE_H
#define SONOLET_TESTS_HOST_PROBE_PROBE_H

// What a test sees and sets of the probe plug-in, beside what its script object `Probe` offers.
struct ProbeState {
    int created = 0;  // objects and functions that the host made for the plug-in
    int destructed = 0;
    int inits = 0;
    int unloads = 0;
    int destroys = 0;
    int polls = 0;
    int globalReads = 0;
    bool allowsAccess = true;
    const char* protocolAsked = "";  // by the last allow_access
    bool clean = true;               // no object was destructed twice
};

#pragma GCC visibility push(default)
extern "C" ProbeState* probeState();
#pragma GCC visibility pop

#endif
