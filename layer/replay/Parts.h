#ifndef SONOLET_LAYER_REPLAY_PARTS_H
#define SONOLET_LAYER_REPLAY_PARTS_H

#include "replay/Replayer.h"

#include "jsplugin.h"

#include <string>

// The recorded host, library, device: what they would call is added to the replayer's invocations,
// what they would answer is asked of it.

// The process's only replayer, while calls are under way.
Replayer& replayer();

// The browser's table. The plug-in's record is given when it is known.
jsplugin_callbacks* replayedHost();
void setPlugin(struct jsplugin_capabilities* offered);

// What is to be called in the place of a function that the plug-in imports; null for others'.
void* replayedLibrary(const std::string& symbol);
void* replayedDevice(const std::string& symbol);  // backend, log and system

// Adds what each of them calls.
void addHostCalls();
void addLibraryCalls();
void addDeviceCalls();

#endif
