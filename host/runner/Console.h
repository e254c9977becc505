#ifndef SONOLET_HOST_RUNNER_CONSOLE_H
#define SONOLET_HOST_RUNNER_CONSOLE_H

#include <JavaScriptCore/JavaScript.h>

// Gives the context a `console`: log, info, debug and table write to standard output, warn and
// error to standard error. Objects are shown readably, whatever their properties do.
//
// Threads: the context's. Errors: none; that a line did not get there, the stream tells (ferror).
namespace console {

void install(JSGlobalContextRef context);

}

#endif
