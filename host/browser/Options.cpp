#include "browser/Options.h"

#include "browser/Address.h"
#include "options/Folders.h"

#include <glib.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace {

namespace fs = std::filesystem;

void setSize(Options& options, const std::string& text) {
    int end = 0;
    const bool read =
        std::sscanf(text.c_str(), "%5dx%5d%n", &options.width, &options.height, &end) == 2;
    if (!read || text[static_cast<std::size_t>(end)] != '\0' || options.width < 1 ||
        options.height < 1 || options.width > 16384 || options.height > 16384) {
        throw std::invalid_argument("--size takes WIDTHxHEIGHT, each from 1 to 16384, not \"" +
                                    text + '"');
    }
}

// Fails now where the file could not be written at the end; leaves no file behind.
void checkWritable(const std::string& file) {
    const bool wasThere = isThere(file);
    std::FILE* const opened = std::fopen(file.c_str(), "ab");
    if (opened == nullptr) {
        throw std::invalid_argument("--screenshot: " + file + ": " +
                                    std::generic_category().message(errno));
    }
    std::fclose(opened);
    if (!wasThere) {
        std::error_code error;
        fs::remove(file, error);
    }
}

double notNegative(const Argument& argument) {
    return argument.value == "0" ? 0 : positiveNumber(argument);
}

}  // namespace

Options Options::parse(int argc, char* const argv[]) {
    Options options;
    std::string page;
    for (const Argument& argument :
         splitArguments(argc, argv, {"--help", "-h", "--version", "--automation"})) {
        const std::string& option = argument.option;
        if (option.empty()) {
            if (!page.empty()) {
                throw std::invalid_argument("one page at a time: \"" + page + "\" and then \"" +
                                            argument.value + '"');
            }
            page = argument.value;
        } else if (option == "--help" || option == "-h") {
            options.help = true;
            return options;
        } else if (option == "--version") {
            options.version = true;
            return options;
        } else if (option == "--automation") {
            options.automation = true;
        } else if (option == "--screenshot") {
            if (argument.value.empty()) {
                throw std::invalid_argument("--screenshot takes a PNG file");
            }
            checkWritable(argument.value);
            options.screenshot = argument.value;
        } else if (option == "--after") {
            options.after = notNegative(argument);
        } else if (option == "--size") {
            setSize(options, argument.value);
        } else if (!options.set(option, argument.value)) {
            throw std::invalid_argument("unknown option " + option + " (--help lists them)");
        }
    }
    if (page.empty() && !options.automation) {
        page = installedPlayer();
    }
    if (!page.empty()) {
        options.uri = addressOf(page);
    } else if (!options.automation) {
        throw std::invalid_argument("no page given (sonolet-browser [options] PAGE.html)");
    }
    options.plugin = fs::absolute(options.plugin).string();
    if (!options.audio.wavPath.empty()) {
        options.audio.wavPath = fs::absolute(options.audio.wavPath).string();
    }
    return options;
}

std::string Options::helpText() {
    return R"(usage: sonolet-browser [options] [PAGE.html|URL]

Shows a web page with the plug-in's globals in a window, until that is closed;
where it is installed, without a page, the player.

  --music DIR        folder of music for the music service (sets SONOLET_MUSIC)
  --audio SINK       auto: the sound system; wav:FILE: into a file; null: nowhere
                     (default: auto)
  --plugin FILE      the plug-in (default: ../lib/libSonolet.so.1.0 beside this
                     program)
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
                     real time; the page's own timers keep theirs (default: 1)
  --size WxH         size of the page in pixels (default: 1280x720)
  --screenshot FILE  write the page into a PNG file once it is ready, and end.
                     It is ready when it has loaded, and <html> does not have
                     data-ready="false"
  --after SECONDS    take the screenshot that much later
  --automation       let WebKitWebDriver control the browser
  --help             show this text
  --version          print the version

Keys: F5 or Ctrl+R reloads, Alt+Left and Alt+Right go back and forward, F12 opens
the inspector, Ctrl+W closes the window. The signal SIGUSR2 reloads too.

Exit codes: 0 the window was closed, or the screenshot written; 1 the page could
not be loaded, its process died, or it had an uncaught exception; 2 an option,
the page's file, the plug-in or the display is wrong; 3 --validate found something.
)";
}
