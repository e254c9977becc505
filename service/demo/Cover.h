#ifndef SONOLET_SERVICE_DEMO_COVER_H
#define SONOLET_SERVICE_DEMO_COVER_H

#include "demo/Repertoire.h"

#include <string>
#include <vector>

namespace sonolet::service {

// The sides of a cover in pixels.
constexpr int coverSize = 320;

// An album's picture, a disc over water in the album's colours: RGB, row by row.
std::vector<unsigned char> paintCover(const DemoAlbum& album);

// The same as a JPEG file. Throws std::runtime_error with the path and the cause.
void writeCover(const DemoAlbum& album, const std::string& path);

}  // namespace sonolet::service

#endif
