#ifndef SONOLET_LAYER_TOOLS_ABOUT_H
#define SONOLET_LAYER_TOOLS_ABOUT_H

#include <cstdio>
#include <string>
#include <vector>

// Answers --help, -h and --version on standard output, wherever they stand among a program's
// arguments; false when none of them does. True: there is nothing more to do, and the program ends
// with 0. The version is that of the project, compiled in.
inline bool
tellsAbout(const char* program, const char* help, const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            std::fputs(help, stdout);
            return true;
        }
        if (argument == "--version") {
            std::printf("%s %s\n", program, SONOLET_VERSION);
            return true;
        }
    }
    return false;
}

#endif
