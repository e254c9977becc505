#ifndef SONOLET_TESTS_LAYER_WATCHED_H
#define SONOLET_TESTS_LAYER_WATCHED_H

#include "Command.h"

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

inline const std::string programs = BIN_DIR;

// A folder with a fresh state, and pages that are run there with the demo library and the layer in
// between.
class Watched {
public:
    explicit Watched(const std::string& name)
        : folder(std::string(WORK_DIR) + "/" + name), trace(folder + "/trace.json") {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        const Outcome index =
            run({"/bin/sh", "-c",
                 R"sh("$0/sonolet-index" | awk -F'\t' '{ printf "\"%s\": \"%s\", ", $4, $1 }')sh",
                 BIN_DIR},
                environment());
        head = "const LINKS = {" + index.output + "};\n" + contentsOf(PAGES_DIR "/harness.js");
    }

    std::map<std::string, std::string> environment() const {
        return {{"SONOLET_MUSIC", MUSIC_DIR}, {"SONOLET_STATE", folder + "/state"}};
    }

    // The command that runs the page; the harness comes before it.
    std::vector<std::string> command(const std::string& script,
                                     const std::vector<std::string>& options = {}) const {
        writeTo(folder + "/page.js", head + script);
        std::vector<std::string> words{programs + "/sonolet-host",
                                       folder + "/page.js",
                                       "--audio",
                                       "null",
                                       "--speed",
                                       "20",
                                       "--expose-gc",
                                       "--for",
                                       "4000"};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    Outcome page(const std::string& script,
                 const std::vector<std::string>& options,
                 std::map<std::string, std::string> variables = {}) const {
        variables.merge(environment());
        return run(command(script, options), variables);
    }

    const std::string folder;
    const std::string trace;

private:
    std::string head;
};

// The lines of a trace. Every one but the last has to be whole; a test fails on what is none.
inline std::vector<nlohmann::json> eventsOf(const std::string& file) {
    std::vector<nlohmann::json> events;
    std::istringstream lines(contentsOf(file));
    for (std::string line; std::getline(lines, line);) {
        if (line.size() > 2 && line != "{}]") {
            events.push_back(nlohmann::json::parse(line.substr(0, line.rfind(','))));
        }
    }
    return events;
}

#endif
