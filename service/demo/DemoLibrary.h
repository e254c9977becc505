#ifndef SONOLET_SERVICE_DEMO_DEMO_LIBRARY_H
#define SONOLET_SERVICE_DEMO_DEMO_LIBRARY_H

#include <string>

namespace sonolet::service {

// Makes the folder of the demo library and answers true; answers false when it stands already. It
// appears whole: an interrupted run leaves the folder as it was, and a folder that holds an older
// or incomplete demo library is brought up to date file by file. Throws std::runtime_error, also
// for a folder with anything else in it.
bool makeDemoLibrary(const std::string& folder);

}  // namespace sonolet::service

#endif
