// sonolet-cog: Cog, the browser of many devices, with the plug-in in its pages.

#include "browser/Address.h"
#include "options/DeviceOptions.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr char help[] = R"(usage: sonolet-cog [options] [PAGE.html|URL] [-- cog's own options]

Shows a web page with the plug-in's globals in Cog, as a device does; without a
page, the player.

  --music DIR        folder of music for the music service (sets SONOLET_MUSIC)
  --audio SINK       auto: the sound system; wav:FILE: into a file; null: nowhere
                     (default: auto; sets SONOLET_AUDIO)
  --plugin FILE      the plug-in (default: ../lib/libSonolet.so.1.0 beside this
                     program; sets SONOLET_PLUGIN)
  --trace FILE       write a timeline of what passes between the plug-in and
                     the rest, for a trace viewer (docs/watching.md)
  --replayable       write it so that sonolet-replay can do it again
  --validate         check what passes there against the rules of both sides
                     (docs/integration.md)
  --log LEVEL        write log lines from this level: trace, error, none or a
                     number (default: error)
  --fault SPEC       faults of the music service at given times, as
                     offline@5s-12s,token@20s (sets SONOLET_FAULT)
  --speed N          polls, faults and the wav and null sinks N times as fast as
                     real time; the page's own timers keep theirs (sets
                     SONOLET_SPEED)
  --help             show this text
  --version          print the version

What stands behind -- goes to cog as it is: -- --platform=drm, wl, headless ...

Exit codes: cog's; 2 an option, the page's file or the plug-in is wrong, or there
is no cog.
)";

struct Options : DeviceOptions {
    std::string page;
    bool help = false;
    bool version = false;
};

Options parse(int argc, char* argv[]) {
    Options options;
    for (const Argument& argument : splitArguments(argc, argv, {"--help", "-h", "--version"})) {
        if (argument.option == "--help" || argument.option == "-h") {
            options.help = true;
        } else if (argument.option == "--version") {
            options.version = true;
        } else if (argument.option.empty() && options.page.empty()) {
            options.page = argument.value;
        } else if (argument.option.empty()) {
            throw std::invalid_argument("one page at a time: \"" + options.page + "\" and then \"" +
                                        argument.value + '"');
        } else if (!options.set(argument.option, argument.value)) {
            throw std::invalid_argument("unknown option " + argument.option +
                                        " (--help lists them; cog's own go behind --)");
        }
    }
    return options;
}

void setEnvironment(const Options& options) {
    options.setEnvironment();
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs
    setenv("SONOLET_PLUGIN", fs::absolute(options.pluginLibrary()).c_str(), 1);
    const AudioOptions& audio = options.audio;
    setenv("SONOLET_AUDIO",
           audio.sink == AudioOptions::Sink::Auto ? "auto"
           : audio.sink == AudioOptions::Sink::Wav
               ? ("wav:" + fs::absolute(audio.wavPath).string()).c_str()
               : "null",
           1);
    // NOLINTEND(concurrency-mt-unsafe)
}

// Returns only when it cannot.
void run(std::vector<std::string> command) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (std::string& word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        char** const own = argv + argc;
        char** const behind = std::find(argv, own, std::string("--"));
        Options options = parse(static_cast<int>(behind - argv), argv);
        if (options.help) {
            std::fputs(help, stdout);
            return 0;
        }
        if (options.version) {
            std::puts("sonolet-cog " SONOLET_VERSION);
            return 0;
        }
        if (!fs::exists(options.plugin)) {
            throw std::invalid_argument(options.plugin + ": no such file");
        }
        setEnvironment(options);
        std::vector<std::string> command = {
            "cog", "--web-extensions-dir=" + DeviceOptions::besideProgram("wpe"),
            // As sonolet-browser has them.
            "--allow-file-access-from-file-urls=1", "--enable-write-console-messages-to-stdout=1",
            "--enable-page-cache=0"};
        if (behind != own) {
            command.insert(command.end(), behind + 1, own);
        }
        const std::string page = options.page.empty() ? installedPlayer() : options.page;
        if (!page.empty()) {
            command.push_back(addressOf(page));
        } else if (std::find(behind, own, std::string("--automation")) == own) {
            throw std::invalid_argument("no page given (sonolet-cog [options] PAGE.html)");
        }
        run(command);
        throw std::runtime_error(
            "cog cannot be started: " + std::generic_category().message(errno) +
            " (Debian's package is cog)");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-cog: %s\n", error.what());
        return 2;
    }
}
