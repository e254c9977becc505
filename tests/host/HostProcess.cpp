#include "HostProcess.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace {

Outcome runIn(const std::string& script,
              const std::string& shell,
              const std::vector<std::string>& options) {
    std::string folder = (std::filesystem::temp_directory_path() / "sonolet-host-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("no folder for the page");
    }
    writeTo(folder + "/page.js", script);
    std::vector<std::string> command = {"/bin/sh",
                                        "-c",
                                        "cd \"$0\" && " + shell,
                                        folder,
                                        HOST_EXECUTABLE,
                                        "--plugin",
                                        HOST_PROBE,
                                        "--audio",
                                        "null",
                                        "page.js"};
    command.insert(command.end(), options.begin(), options.end());
    Outcome outcome = run(command, {{"PROBE_REPORT", "1"}});
    std::filesystem::remove_all(folder);
    return outcome;
}

}  // namespace

Outcome runHost(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), HOST_EXECUTABLE);
    return run(arguments, {});
}

Outcome runPage(const std::string& script, const std::vector<std::string>& options) {
    return runIn(script, "exec \"$@\"", options);
}

Outcome runPageUntilSignal(const std::string& script, int signal) {
    return runIn(script,
                 "mkfifo out && { \"$@\" >out & } && exec 3<out &&"
                 "while read -r line <&3; do kill -" +
                     std::to_string(signal) + " $! 2>/dev/null; done; wait $!",
                 {});
}
