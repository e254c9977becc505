#ifndef SONOLET_JSPP_DETAIL_GLOBALS_H
#define SONOLET_JSPP_DETAIL_GLOBALS_H

#include "jsplugin.h"

namespace jspp::__detail {

// The host's functions; set by jsplugin_capabilities, null before; the host's table
// lives as long as the process. Script thread only, and under no lock.
extern jsplugin_callbacks* g_orvo_callbacks;

}  // namespace jspp::__detail

#endif
