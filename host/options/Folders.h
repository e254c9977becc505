#ifndef SONOLET_HOST_OPTIONS_FOLDERS_H
#define SONOLET_HOST_OPTIONS_FOLDERS_H

#include <sys/stat.h>

#include <string>

// Whether there is something of this name, and whether that is a folder. A name that cannot be
// looked at is neither. Not std::filesystem's, which on 32 bits fails for dates after 2038 and for
// sizes over 2 GiB.
inline bool isThere(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

inline bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

#endif
