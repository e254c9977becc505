#include "FakeLog.h"

#include "kellog.h"

#include <stdarg.h>
#include <stdio.h>

#include <algorithm>
#include <mutex>

namespace {

std::mutex& mutex() {
    static auto* instance = new std::mutex;
    return *instance;
}

}  // namespace

FakeLog& FakeLog::get() {
    static auto* instance = new FakeLog;
    return *instance;
}

void FakeLog::reset() {
    const std::lock_guard<std::mutex> lock(mutex());
    lines.clear();
    threshold = 0;
    printsLines = true;
}

int FakeLog::count(int level, const std::string& text) const {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
        return line.level == level && line.text == text;
    }));
}

bool FakeLog::knows(const std::string& module, const std::string& file, int line) const {
    return std::any_of(contexts.begin(), contexts.end(), [&](const Place& place) {
        return place.module == module && place.file == file && place.line == line;
    });
}

KlogContext* KlogContext::GetLogContext(const char* module, const char* file, int line) {
    const std::lock_guard<std::mutex> lock(mutex());
    FakeLog::get().contexts.push_back({module, file, line});
    return new KlogContext;  // the library's, never freed
}

int KlogContext::threshold() const {
    return FakeLog::get().threshold;
}

void KlogPrintf(KlogContext*, int level, const char* file, int line, const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(mutex());
    if (FakeLog::get().printsLines) {
        FakeLog::get().lines.push_back({level, file, line, text});
    }
}
