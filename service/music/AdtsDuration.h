#ifndef SONOLET_SERVICE_MUSIC_ADTS_DURATION_H
#define SONOLET_SERVICE_MUSIC_ADTS_DURATION_H

#include "music/MusicFile.h"

#include <cstdint>

namespace sonolet::service {

// Where a raw AAC stream begins: behind the ID3v2 tag, if there is one. Throws UnreadableFile.
std::int64_t adtsStart(const MusicFile& file);

// The length of a raw AAC stream (ADTS frames, perhaps behind an ID3v2 tag) in milliseconds,
// counted frame by frame up to the first damage; 0 when there is no such stream, and once `stop` is
// set. Of a stream of more than a million frames the rest is taken to be like these. Throws
// UnreadableFile.
int adtsDurationMs(const MusicFile& file, const StopFlag& stop);

}  // namespace sonolet::service

#endif
