#ifndef SONOLET_BENCH_GROUPS_H
#define SONOLET_BENCH_GROUPS_H

#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace figures {

// The main function of a program that measures groups of figures: runs those named on its command
// line, in the order of the list.
inline int runGroups(int argc,
                     char** argv,
                     const std::vector<std::pair<std::string, std::function<void()>>>& groups) {
    try {
        for (const auto& [name, run] : groups) {
            for (int i = 1; i < argc; ++i) {
                if (name == argv[i]) {
                    run();
                }
            }
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << argv[0] << ": " << error.what() << '\n';
        return 1;
    }
}

}  // namespace figures

#endif
