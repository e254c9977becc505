#ifndef SONOLET_SERVICE_PLAYER_FILE_SOURCE_H
#define SONOLET_SERVICE_PLAYER_FILE_SOURCE_H

#include "music/Sound.h"

#include <gst/gst.h>

#include <memory>

namespace sonolet::service {

// A GStreamer source of the file's bytes, with a floating reference. It shares the file until it
// goes, and names the file when it is asked, for what an ending tells. It is read on GStreamer's
// threads; a file that can be read no more is an error message on the bus. GStreamer is
// initialised.
GstElement* makeFileSource(std::shared_ptr<const Sound> file);

}  // namespace sonolet::service

#endif
