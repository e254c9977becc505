#include "tap/Call.h"

Watcher* Call::watchers[2] = {};
thread_local Call* Call::innermost = nullptr;
