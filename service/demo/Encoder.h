#ifndef SONOLET_SERVICE_DEMO_ENCODER_H
#define SONOLET_SERVICE_DEMO_ENCODER_H

#include <cstddef>
#include <string>

namespace sonolet::service {

// Runs `size` bytes of the form `caps` through GStreamer elements, in the notation of gst-launch,
// into a file, and returns once it is written. Throws std::runtime_error, which names a missing
// element and its package, or the cause.
void encode(const void* data,
            std::size_t size,
            const std::string& caps,
            const std::string& elements,
            const std::string& path);

}  // namespace sonolet::service

#endif
