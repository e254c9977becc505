#ifndef SONOLET_HOST_MEDIA_SOUNDDEVICE_H
#define SONOLET_HOST_MEDIA_SOUNDDEVICE_H

#include <gst/gst.h>

// The machine's sound device, as GStreamer finds it. Any thread, once GStreamer has started.

// A sink for one stream (floating, ready to play), or null when no device works, which is logged
// once. It plays all that it gets and is at its end when the last sample has been heard. Throws
// std::runtime_error naming the element that is missing.
GstElement* openSoundDevice();

// How long a stream that is about to start has to keep its first sample back for all of it to be
// heard.
GstClockTime soundDeviceLead();

#endif
