#ifndef SONOLET_SERVICE_IMAGES_JPEG_H
#define SONOLET_SERVICE_IMAGES_JPEG_H

#include "music/MusicFile.h"

#include <string>

namespace sonolet::service {

// A JPEG or PNG picture as a JPEG whose longer side has at most `longerSide` pixels: smaller where
// that is needed, never larger, upright, on white where it is transparent.
//
// Throws std::runtime_error for what is no such picture, is damaged, or has more pixels than any
// cover; the last is told from the picture's header, before anything is unpacked. Throws too, soon,
// once `stop` is set.
std::string scaledJpeg(const std::string& picture, int longerSide, const StopFlag& stop);

}  // namespace sonolet::service

#endif
