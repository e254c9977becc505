#ifndef SONOLET_ORVO_THREAD_ANNOTATIONS_H
#define SONOLET_ORVO_THREAD_ANNOTATIONS_H

// Clang's thread safety annotations, checked with -Wthread-safety; other compilers read nothing.
// https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
//
// A type or object that is a lock, a type that holds one, a field that needs one, a function that
// is called with it held, takes it, gives it up, or must be called without.
#if defined(__clang__)
#define ORVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ORVO_THREAD_ANNOTATION(x)
#endif

#define ORVO_CAPABILITY(name) ORVO_THREAD_ANNOTATION(capability(name))
#define ORVO_SCOPED_CAPABILITY ORVO_THREAD_ANNOTATION(scoped_lockable)
#define ORVO_GUARDED_BY(mutex) ORVO_THREAD_ANNOTATION(guarded_by(mutex))
#define ORVO_REQUIRES(...) ORVO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ORVO_ACQUIRE(...) ORVO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ORVO_RELEASE(...) ORVO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ORVO_EXCLUDES(...) ORVO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

#endif
