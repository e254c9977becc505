#include "FakeLog.h"

#include "Faults.h"

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
    lines.clear();
    threshold = 0;
    keepsLines = true;
}

int FakeLog::count(int level, const std::string& text) const {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
        return line.level == level && line.text == text;
    }));
}

KlogContext* KlogContext::GetLogContext(const char* module, const char* file, int line) {
    const std::lock_guard<std::mutex> lock(mutex());
    FakeLog::get().contexts.push_back(std::string(module) + ' ' + file + ':' +
                                      std::to_string(line));
    return new KlogContext;  // the library's, never freed
}

int KlogContext::threshold() const {
    return FakeLog::get().threshold;
}

void KlogPrintf(KlogContext*, int level, const char* file, int line, const char* format, ...) {
    const Outside outside;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(mutex());
    if (FakeLog::get().keepsLines) {
        FakeLog::get().lines.push_back({level, file, line, text});
    }
}
