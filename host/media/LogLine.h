#ifndef SONOLET_HOST_MEDIA_LOGLINE_H
#define SONOLET_HOST_MEDIA_LOGLINE_H

#include <string>

// Writes "audio: TEXT" as one line to standard error, whole, whatever other threads write. Any
// thread; what cannot be written is lost.
void logLine(const std::string& text) noexcept;

#endif
