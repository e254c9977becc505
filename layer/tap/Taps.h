#ifndef SONOLET_LAYER_TAP_TAPS_H
#define SONOLET_LAYER_TAP_TAPS_H

#include "jsplugin.h"

#include <string>

// The three borders of a plug-in, each with its functions in the place of the real ones. What they
// do is the same everywhere: make values of the arguments, tell the watchers, call the other side,
// tell what came back.

// What the plug-in is to call in the place of `function`, which it imports by this name; null:
// nothing of theirs. Each function is known from then on, so one plug-in can be watched at a time.
// Addresses of functions, by the names of the dynamic symbol table, C++ ones mangled. REQUIRES:
// before the plug-in calls anybody, on one thread.
void* libraryTap(const std::string& symbol, void* function);
void* backendTap(const std::string& symbol, void* function);  // and the log's
// Where one of the plug-in's threads waits for another; for recordings that are to be replayed.
void* systemTap(const std::string& symbol, void* function);

// For those: keeps the address of a function that has the type of `pass`, which stands in its
// place.
template <class Function>
void* take(Function*& original, void* function, Function* pass) {
    original = reinterpret_cast<Function*>(function);
    return reinterpret_cast<void*>(pass);
}

// What host and plug-in get of each other: copies in which the functions that are there have been
// replaced. The layer owns them to the end of the process; calls are passed on to what was given,
// which must stay where it is. Null for null.
jsplugin_callbacks* hostTap(jsplugin_callbacks* ofHost);
struct jsplugin_capabilities* pluginTap(struct jsplugin_capabilities* ofPlugin);

#endif
