#ifndef SONOLET_PLATFORM_KELLOG_H
#define SONOLET_PLATFORM_KELLOG_H

// The device's logging library, libKelLogOld.so.
//
// Threads: any thread, at any time between load and process exit. Errors: none are reported; a line
// that cannot be written is lost.

// Where a line comes from, and how important it must be to be written.
class __attribute__((visibility("default"))) KlogContext {
public:
    // The context of a place in the source. Owned by the library, never freed; may be null.
    static KlogContext* GetLogContext(const char* module, const char* file, int line);

    // Lines whose level lies below this are not wanted. The plug-in writes two: 2, what happens
    // every day, and 5, what went wrong.
    int threshold() const;
};

// Writes one line; the library adds the line end. `context` may be null.
extern "C" __attribute__((visibility("default"), format(printf, 5, 6))) void
KlogPrintf(KlogContext* context, int level, const char* file, int line, const char* format, ...);

#endif
