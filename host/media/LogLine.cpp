#include "LogLine.h"

#include <cstdio>

void logLine(const std::string& text) noexcept {
    std::fprintf(stderr, "audio: %s\n", text.c_str());
}
