#ifndef SONOLET_TESTS_BROWSER_PLACE_H
#define SONOLET_TESTS_BROWSER_PLACE_H

#include "Process.h"

// A display, the demo library and a fresh state for the programs of one test, in the environment.
class Place final {
public:
    explicit Place(const std::string& name) : folder(WORK_DIR "/" + browser() + name) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
        setenv("DISPLAY", (":" + display.awaitLine("")).c_str(), 1);
        setenv("SONOLET_STATE", file("state").c_str(), 1);
        setenv("SONOLET_MUSIC", MUSIC_DIR, 1);
        unsetenv("WAYLAND_DISPLAY");
        // NOLINTEND(concurrency-mt-unsafe)
    }

    std::string file(const std::string& name) const { return folder + "/" + name; }

private:
    // Tests of two browsers may go on beside each other.
    static std::string browser() {
        const char* const name = std::getenv("SONOLET_BROWSER");  // NOLINT(concurrency-mt-unsafe)
        return name != nullptr ? std::string(name) + '-' : "";
    }

    const std::string folder;
    // Its standard error tells of displays that others have.
    Process display{
        {"/bin/sh", "-c",
         "exec Xvfb -displayfd 1 -noreset -screen 0 1920x1200x24 -nolisten tcp 2>/dev/null"}};
};

#endif
