#ifndef SONOLET_APPKEY_H
#define SONOLET_APPKEY_H

#include <cstddef>

// The key with which the application shows itself to the service, given to the build with
// -DSONOLET_APPKEY=FILE; without it, a development key.
extern const unsigned char applicationKey[];
extern const std::size_t applicationKeySize;

#endif
