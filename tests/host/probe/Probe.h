#ifndef SONOLET_TESTS_HOST_PROBE_PROBE_H
#define SONOLET_TESTS_HOST_PROBE_PROBE_H

// What a test can ask the probe plug-in by itself, beside what its script object `Probe` offers.
struct ProbeCounts {
    int created;  // objects and functions that the host made for the plug-in
    int destructed;
    int inits;
    int unloads;
    int destroys;
    int polls;
    int globalReads;
};

#pragma GCC visibility push(default)
extern "C" {
// Since the plug-in was loaded.
ProbeCounts probeCounts();
// What allow_access answers from here on.
void probeAllowAccess(int answer);
// The protocol that allow_access was last asked about.
const char* probeProtocol();
// Every object of the plug-in has been destructed once and none is left.
int probeIsClean();
}
#pragma GCC visibility pop

#endif
