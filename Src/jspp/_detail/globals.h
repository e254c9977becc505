#ifndef SONOLET_JSPP_DETAIL_GLOBALS_H
#define SONOLET_JSPP_DETAIL_GLOBALS_H

#include "jsplugin.h"

namespace jspp::__detail {

// The host's functions; set by jsplugin_capabilities, null before. Script thread only.
extern jsplugin_callbacks* g_orvo_callbacks;

}  // namespace jspp::__detail

#endif
