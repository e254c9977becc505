#ifndef SONOLET_LAYER_TOOLS_ARGUMENTS_H
#define SONOLET_LAYER_TOOLS_ARGUMENTS_H

#include <cstdio>
#include <initializer_list>
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

// The arguments with each "--name=value" of these options as two, which is how they are read. Of
// another option it stays as it is, for whoever knows no such option to say.
inline std::vector<std::string> separated(const std::vector<std::string>& arguments,
                                          std::initializer_list<const char*> takeValues) {
    std::vector<std::string> all;
    for (const std::string& argument : arguments) {
        all.push_back(argument);
        for (const char* const option : takeValues) {
            const std::string start = std::string(option) + '=';
            if (argument.rfind(start, 0) == 0) {
                all.back() = option;
                all.push_back(argument.substr(start.size()));
            }
        }
    }
    return all;
}

#endif
