#ifndef SONOLET_SERVICE_MUSIC_TAG_SIZES_H
#define SONOLET_SERVICE_MUSIC_TAG_SIZES_H

// To be included before anything of TagLib's.
#ifdef __i386__
namespace TagLib {
// TagLib 2 counts with the system's type for files, and on this processor its package is compiled
// with the old one of 32 bits, while here that has 64.
using off_t = long;
}  // namespace TagLib
#endif

#include <taglib.h>

#include <cstddef>

namespace sonolet::service {

// How TagLib counts bytes: in words, and from its version 2 on as the system does for files.
#if TAGLIB_MAJOR_VERSION >= 2
using TagOffset = TagLib::offset_t;
using TagStart = TagLib::offset_t;
using TagSize = std::size_t;
#else
using TagOffset = long;
using TagStart = unsigned long;
using TagSize = unsigned long;
#endif

}  // namespace sonolet::service

#endif
