#ifndef SONOLET_TESTS_PAGES_COMMAND_H
#define SONOLET_TESTS_PAGES_COMMAND_H

#include <map>
#include <string>
#include <vector>

// What a command left behind.
struct Outcome {
    int exitCode = -1;  // 128 and more: ended by that signal
    std::string output;
    std::string errors;
};

// Runs a program to its end, with these variables added to the environment.
Outcome run(const std::vector<std::string>& command,
            const std::map<std::string, std::string>& environment);

std::string contentsOf(const std::string& path);
void writeTo(const std::string& path, const std::string& contents);

#endif
