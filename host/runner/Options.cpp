#include "runner/Options.h"

#include "log/LogThreshold.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {

std::string defaultPlugin() {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return (self.parent_path().parent_path() / "lib" / "libSonolet.so.1.0").string();
}

double positive(const std::string& option, const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(number) || number <= 0) {
        throw std::invalid_argument(option + " takes a number above 0, not \"" + text + '"');
    }
    return number;
}

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

void setAudio(Options& options, const std::string& text) {
    if (text == "auto") {
        options.sink = Options::Sink::Auto;
    } else if (text == "null") {
        options.sink = Options::Sink::Null;
    } else if (text.rfind("wav:", 0) == 0 && text.size() > 4) {
        options.sink = Options::Sink::Wav;
        options.wavFile = text.substr(4);
    } else {
        throw std::invalid_argument("--audio takes auto, wav:FILE or null, not \"" + text + '"');
    }
}

void set(Options& options, const std::string& option, const std::string& value) {
    if (option == "--music") {
        if (!std::filesystem::is_directory(value)) {
            throw std::invalid_argument("--music: no folder \"" + value + '"');
        }
        options.music = value;
    } else if (option == "--audio") {
        setAudio(options, value);
    } else if (option == "--for") {
        options.seconds = positive(option, value);
    } else if (option == "--plugin") {
        options.plugin = value;
    } else if (option == "--speed") {
        options.speed = positive(option, value);
    } else if (option == "--log") {
        options.logLevel = level(value);
    } else {
        throw std::invalid_argument("unknown option " + option + " (--help lists them)");
    }
}

}  // namespace

Options Options::parse(int argc, char* const argv[]) {
    Options options;
    bool onlyPages = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (onlyPages || argument.empty() || argument[0] != '-' || argument == "-") {
            if (!options.page.empty()) {
                throw std::invalid_argument("one page at a time: \"" + options.page +
                                            "\" and then \"" + argument + '"');
            }
            options.page = argument;
        } else if (argument == "--") {
            onlyPages = true;
        } else if (argument == "--help" || argument == "-h") {
            options.help = true;
            return options;
        } else if (argument == "--expose-gc") {
            options.exposeGc = true;
        } else if (const std::size_t equals = argument.find('='); equals != std::string::npos) {
            set(options, argument.substr(0, equals), argument.substr(equals + 1));
        } else if (i + 1 < argc) {
            set(options, argument, argv[++i]);
        } else {
            set(options, argument, "");
        }
    }
    if (options.page.empty()) {
        throw std::invalid_argument("no page given (sonolet-host [options] PAGE.js)");
    }
    if (options.plugin.empty()) {
        options.plugin = defaultPlugin();
    }
    return options;
}

std::string Options::helpText() {
    return R"(Usage: sonolet-host [options] PAGE.js

Runs a page script with the plug-in's globals, until the page calls close().

  --music DIR      folder of music for the music service (sets SONOLET_MUSIC)
  --audio SINK     auto: the sound system; wav:FILE: into a file; null: nowhere
                   (default: auto)
  --for SECONDS    close the page after that much page time
  --plugin FILE    the plug-in (default: ../lib/libSonolet.so.1.0 beside this
                   program)
  --speed N        run timers, polls and the wav and null sinks N times as fast
                   as real time (default: 1)
  --log LEVEL      write log lines from this level: trace, error, none or a
                   number (default: error)
  --expose-gc      give the page gc(), which collects garbage at once
  --help           show this text

Exit codes: 0 the page was closed; 1 an exception was not caught; 2 an option,
the page's file or the plug-in is wrong.
)";
}
