#ifndef SONOLET_TESTS_BROWSER_PLACE_H
#define SONOLET_TESTS_BROWSER_PLACE_H

#include "Process.h"

#include <memory>
#include <string>

// A display, the demo library and a fresh state for the programs of one test, in the environment.
class Place final {
public:
    explicit Place(const std::string& name);

    std::string file(const std::string& name) const { return folder + "/" + name; }

private:
    const std::string folder;
    std::unique_ptr<Process> display;
};

#endif
