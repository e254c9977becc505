#include "Logger.h"

namespace {

// The log's own contexts, one for each of the two layers that include its header.
const Logger pluginLog SONOLET_AT_LOAD("Src/Logger", 107);
const Logger frameworkLog SONOLET_AT_LOAD("Src/jspp/../Logger", 107);

}  // namespace
