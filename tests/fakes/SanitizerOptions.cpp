// What the sanitizers are told about GLib and GStreamer, which are not built with them. The
// sanitizer libraries look these functions up by name.

#define SANITIZER_HOOK extern "C" __attribute__((visibility("default"), used)) const char*

// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier): the sanitizers' names

// GLib locks by means that the thread sanitizer cannot see, so what its libraries do to memory is
// left out. The project's own accesses are all watched.
SANITIZER_HOOK __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}

// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)
