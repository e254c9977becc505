#include "Place.h"

#include "Command.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

Place::Place(const std::string& name) : folder(WORK_DIR "/" + name) {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    // Its standard error tells of displays that others have.
    display = std::make_unique<Process>(std::vector<std::string>{
        "/bin/sh", "-c",
        "exec Xvfb -displayfd 1 -noreset -screen 0 1920x1200x24 -nolisten tcp 2>/dev/null"});
    const std::string number = display->awaitLine("");
    const std::string demo = WORK_DIR "/demo";
    if (const Outcome made = run({BIN_DIR "/sonolet-demo", demo}, {}); made.exitCode != 0) {
        throw std::runtime_error(made.errors);
    }
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
    setenv("DISPLAY", (":" + number).c_str(), 1);
    setenv("SONOLET_STATE", file("state").c_str(), 1);
    setenv("SONOLET_MUSIC", demo.c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    // NOLINTEND(concurrency-mt-unsafe)
}
