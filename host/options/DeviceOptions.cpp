#include "options/DeviceOptions.h"

#include "log/LogThreshold.h"
#include "options/Folders.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

int level(const std::string& text) {
    const std::pair<const char*, int> names[] = {
        {"trace", KLOG_TRACE}, {"error", KLOG_ERROR}, {"none", KLOG_NONE}};
    for (const auto& [name, number] : names) {
        if (text == name) {
            return number;
        }
    }
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || number < 0 || number > KLOG_NONE) {
        throw std::invalid_argument(
            "--log takes trace, error, none or a number from 0 to 100, not \"" + text + '"');
    }
    return static_cast<int>(number);
}

void setSink(AudioOptions& audio, const std::string& text) {
    if (text == "auto") {
        audio.sink = AudioOptions::Sink::Auto;
    } else if (text == "null") {
        audio.sink = AudioOptions::Sink::Null;
    } else if (text.rfind("wav:", 0) == 0 && text.size() > 4) {
        audio.sink = AudioOptions::Sink::Wav;
        audio.wavPath = text.substr(4);
    } else {
        throw std::invalid_argument("--audio takes auto, wav:FILE or null, not \"" + text + '"');
    }
}

bool isOfDevice(const std::string& flag) {
    return std::find(std::begin(DeviceOptions::flags), std::end(DeviceOptions::flags), flag) !=
           std::end(DeviceOptions::flags);
}

// The service alone knows what faults there are: its program is asked. Without it, which may be so
// beside a service of another make, the text goes on as it is. `origin` is where the text stands.
void checkFault(const std::string& origin, const std::string& fault) {
    const std::string program =
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "sonolet-fault").string();
    const char* const command[] = {program.c_str(), "--", fault.c_str(), nullptr};
    g_autofree char* answer = nullptr;
    int status = 0;
    if (g_spawn_sync(nullptr, const_cast<char**>(command), nullptr, G_SPAWN_STDOUT_TO_DEV_NULL,
                     nullptr, nullptr, nullptr, &answer, &status, nullptr) == FALSE ||
        g_spawn_check_wait_status(status, nullptr) != FALSE) {
        return;
    }
    std::string why = g_strchomp(answer);
    const std::string name = "sonolet-fault: ";
    throw std::invalid_argument(origin + ": " +
                                why.erase(0, why.rfind(name, 0) == 0 ? name.size() : 0));
}

}  // namespace

bool DeviceOptions::set(const std::string& option, const std::string& value) {
    if (option == "--music") {
        if (!isFolder(value)) {
            throw std::invalid_argument("--music: no folder \"" + value + '"');
        }
        music = value;
    } else if (option == "--fault") {
        if (value.empty()) {
            throw std::invalid_argument("--fault takes what is to happen, as offline@5s-12s");
        }
        checkFault("--fault", value);
        fault = value;
    } else if (option == "--audio") {
        setSink(audio, value);
    } else if (option == "--speed") {
        audio.speed = positiveNumber({option, value});
    } else if (option == "--plugin") {
        plugin = value;
    } else if (option == "--trace") {
        if (value.empty()) {
            throw std::invalid_argument("--trace takes a file");
        }
        trace = std::filesystem::absolute(value).string();
    } else if (option == "--replayable") {
        isReplayable = true;
    } else if (option == "--validate") {
        validates = true;
    } else if (option == "--log") {
        logLevel = level(value);
    } else {
        return false;
    }
    return true;
}

std::string DeviceOptions::pluginLibrary() const {
    return trace.empty() && !validates ? plugin : besideProgram("libSonolet-layer.so.1.0");
}

void DeviceOptions::setEnvironment() const {
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
    if (!music.empty()) {
        setenv("SONOLET_MUSIC", music.c_str(), 1);
    }
    if (!fault.empty()) {
        setenv("SONOLET_FAULT", fault.c_str(), 1);
    } else if (const char* given = getenv("SONOLET_FAULT"); given != nullptr && *given != '\0') {
        checkFault("SONOLET_FAULT", given);
    }
    if (audio.speed != 1) {
        setenv("SONOLET_SPEED", std::to_string(audio.speed).c_str(), 1);
    }
    if (!trace.empty()) {
        setenv("SONOLET_TRACE", trace.c_str(), 1);
    } else if (isReplayable) {
        throw std::invalid_argument("--replayable is for a timeline: --trace FILE is missing");
    }
    if (isReplayable) {
        setenv("SONOLET_TRACE_REPLAYABLE", "1", 1);
    }
    if (validates) {
        setenv("SONOLET_VALIDATE", "1", 1);
    }
    if (pluginLibrary() != plugin) {
        setenv("SONOLET_LAYER_PLUGIN", plugin.c_str(), 1);
    }
    if (logLevel) {
        setenv("SONOLET_LOG", std::to_string(*logLevel).c_str(), 1);
    }
    // NOLINTEND(concurrency-mt-unsafe)
}

std::string DeviceOptions::besideProgram(const std::string& library) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return (self.parent_path().parent_path() / "lib" / library).string();
}

std::vector<Argument>
splitArguments(int argc, char* const argv[], const std::set<std::string>& flags) {
    std::vector<Argument> arguments;
    bool onlyValues = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (onlyValues || word.empty() || word[0] != '-' || word == "-") {
            arguments.push_back({"", word});
        } else if (word == "--") {
            onlyValues = true;
        } else if (flags.count(word) > 0 || isOfDevice(word)) {
            arguments.push_back({word, ""});
        } else if (const std::size_t equals = word.find('='); equals != std::string::npos) {
            const std::string option = word.substr(0, equals);
            if (flags.count(option) > 0 || isOfDevice(option)) {
                throw std::invalid_argument(option + " takes no value, not \"" +
                                            word.substr(equals + 1) + '"');
            }
            arguments.push_back({option, word.substr(equals + 1)});
        } else {
            arguments.push_back({word, i + 1 < argc ? argv[++i] : ""});
        }
    }
    return arguments;
}

double positiveNumber(const Argument& argument) {
    char* end = nullptr;
    const double number = std::strtod(argument.value.c_str(), &end);
    if (argument.value.empty() || *end != '\0' || !std::isfinite(number) || number <= 0) {
        throw std::invalid_argument(argument.option + " takes a number above 0, not \"" +
                                    argument.value + '"');
    }
    return number;
}
