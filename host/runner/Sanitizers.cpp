// What sanitized builds need to know of the script engine, which is not built with them. Empty in
// any other build.
//
// The engine finds values on the real stack only, so locals must not be moved off it; it leaves a
// few bytes behind at times; its own threads synchronise in ways that cannot be seen from outside;
// its collector, and what ends a script, stop threads by signals, which ThreadSanitizer may hold
// back for ever, and their handlers change errno. ASAN_OPTIONS and the like in the environment go
// before these.

#include <jsc/jsc.h>

// NOLINTBEGIN(readability-identifier-naming): the sanitizers' names
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" {
#pragma GCC visibility push(default)

#ifdef __SANITIZE_ADDRESS__
const char* __asan_default_options();
const char* __asan_default_options() {
    return "detect_stack_use_after_return=0";
}

const char* __lsan_default_options();
const char* __lsan_default_options() {
    return "print_suppressions=0";
}

const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:libjavascriptcoregtk\n";
}
#endif

#ifdef __SANITIZE_THREAD__
const char* __tsan_default_options();
const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1:report_signal_unsafe=0";
}

__attribute__((constructor)) static void workWithoutSignals() {
    jsc_options_set_boolean("useConcurrentGC", FALSE);
    jsc_options_set_boolean("usePollingTraps", TRUE);
}
#endif

#pragma GCC visibility pop
}
#endif
// NOLINTEND(readability-identifier-naming)
