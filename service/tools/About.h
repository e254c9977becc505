#ifndef SONOLET_SERVICE_TOOLS_ABOUT_H
#define SONOLET_SERVICE_TOOLS_ABOUT_H

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace sonolet::service {

// Answers --help, -h and --version on standard output, which every program takes as its first
// argument; false when it is none of them, and the program goes on. True: there is nothing more to
// do, and the program ends with 0. The version is that of the project, compiled in.
inline bool tellsAbout(const std::string& program, const char* usage, int argc, char** argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    if (first == "--version") {
        std::cout << program << " " SONOLET_VERSION "\n";
    } else if (first == "--help" || first == "-h") {
        std::cout << usage;
    } else {
        return false;
    }
    return true;
}

// Before a program ends: throws std::runtime_error when not all that it has said on standard output
// got there, as into a file on a full disk.
inline void finishOutput() {
    if (!std::cout.flush()) {
        throw std::runtime_error("standard output: " + std::generic_category().message(errno));
    }
}

}  // namespace sonolet::service

#endif
