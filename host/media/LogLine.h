#ifndef SONOLET_HOST_MEDIA_LOGLINE_H
#define SONOLET_HOST_MEDIA_LOGLINE_H

#include <string>

// Writes "audio: TEXT" as one line to standard error. Any thread.
void logLine(const std::string& text) noexcept;

#endif
