#include "tap/Call.h"

std::atomic<Watcher*> Call::watchers[2] = {};
thread_local Call* Call::innermost = nullptr;
