#include "kellog.h"

#include "log/LogThreshold.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int environmentThreshold() {
    // Read once, while the library is loaded: no thread can be changing the environment yet.
    const char* text = std::getenv("SONOLET_LOG");  // NOLINT(concurrency-mt-unsafe)
    if (text == nullptr || *text == '\0') {
        return KLOG_ERROR;
    }
    char* end = nullptr;
    const long level = std::strtol(text, &end, 10);
    return *end == '\0' ? static_cast<int>(level) : KLOG_ERROR;
}

// A function's static: a plug-in's static initialisers log before this library's own would have
// run.
std::atomic<int>& threshold() {
    static std::atomic<int> level{environmentThreshold()};
    return level;
}

std::string formatted(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    char small[512];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): KlogPrintf has begun it
    const int length = std::vsnprintf(small, sizeof small, format, args);
    std::string text;
    if (length > 0 && static_cast<std::size_t>(length) < sizeof small) {
        text.assign(small, static_cast<std::size_t>(length));
    } else if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

// One write a line, so that lines of several threads never mix.
void writeLine(const std::string& line) {
    ssize_t written = 0;
    do {
        written = ::write(STDERR_FILENO, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
}

}  // namespace

// One context serves every place: a line carries its own module, file and line.
KlogContext* KlogContext::GetLogContext(const char*, const char*, int) {
    static KlogContext context;
    return &context;
}

int KlogContext::threshold() const {
    return ::threshold().load(std::memory_order_relaxed);
}

void KlogSetThreshold(int level) {
    threshold().store(level, std::memory_order_relaxed);
}

void KlogPrintf(KlogContext*, int level, const char* file, int line, const char* format, ...) {
    if (level < threshold().load(std::memory_order_relaxed)) {
        return;
    }
    try {
        va_list args;
        va_start(args, format);
        const std::string text = formatted(format, args);
        va_end(args);
        const char* kind = level >= KLOG_ERROR ? "error" : level <= KLOG_TRACE ? "trace" : "info";
        writeLine(std::string(kind) + ' ' + (file != nullptr ? file : "?") + ':' +
                  std::to_string(line) + ": " + text + '\n');
    } catch (...) {
        // Out of memory: the line is lost, as the contract allows.
    }
}
