#ifndef SONOLET_SERVICE_ADTS_DURATION_H
#define SONOLET_SERVICE_ADTS_DURATION_H

#include <string>

namespace sonolet::service {

// The length of a raw AAC stream (ADTS frames, perhaps behind an ID3v2 tag) in milliseconds,
// counted frame by frame up to the first damage; 0 when there is no such stream.
int adtsDurationMs(const std::string& path);

}  // namespace sonolet::service

#endif
