// Part of every program with the thread sanitizer. Tests have none of it: those with GLib inside
// say the same (tests/fakes/SanitizerOptions.cpp), the others are watched with all libraries.
//
// GLib and GStreamer lock by means that the sanitizer cannot see, so what libraries do to memory
// that are not built with it is left out. A program may say more: this is weak.

// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier): the sanitizer's name
extern "C" __attribute__((weak, visibility("default"), used)) const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)
