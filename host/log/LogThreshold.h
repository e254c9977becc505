#ifndef SONOLET_HOST_LOG_LOGTHRESHOLD_H
#define SONOLET_HOST_LOG_LOGTHRESHOLD_H

// The host's handle on the log library: which lines are wanted.
//
// Threads: any thread, at any time; contexts made before follow the new threshold too. Until it is
// set, the environment variable SONOLET_LOG (a number) decides, and without it errors alone are
// written.

enum { KLOG_TRACE = 2, KLOG_ERROR = 5, KLOG_NONE = 100 };

// NOLINTNEXTLINE(readability-identifier-naming): named as the library's other functions are
extern "C" __attribute__((visibility("default"))) void KlogSetThreshold(int level);

#endif
