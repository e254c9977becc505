#ifndef SONOLET_HOST_ENGINE_CALLBACKTABLE_H
#define SONOLET_HOST_ENGINE_CALLBACKTABLE_H

#include "jsplugin.h"

// The host's half of the plug-in interface: one table for every plug-in, never freed. Each function
// finds its document by the object given; one that is gone, or was never the host's, is refused
// (-1) and nothing happens.
jsplugin_callbacks* callbackTable() noexcept;

#endif
