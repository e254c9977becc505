#include "runner/Options.h"

#include <stdexcept>

Options Options::parse(int argc, char* const argv[]) {
    Options options;
    for (const Argument& argument :
         splitArguments(argc, argv, {"--help", "-h", "--version", "--expose-gc", "--stress-gc"})) {
        const std::string& option = argument.option;
        if (option.empty()) {
            if (!options.page.empty()) {
                throw std::invalid_argument("one page at a time: \"" + options.page +
                                            "\" and then \"" + argument.value + '"');
            }
            options.page = argument.value;
        } else if (option == "--help" || option == "-h") {
            options.help = true;
            return options;
        } else if (option == "--version") {
            options.version = true;
            return options;
        } else if (option == "--expose-gc") {
            options.exposeGc = true;
        } else if (option == "--stress-gc") {
            options.stressGc = true;
        } else if (option == "--for") {
            options.seconds = positiveNumber(argument);
        } else if (!options.set(option, argument.value)) {
            throw std::invalid_argument("unknown option " + option + " (--help lists them)");
        }
    }
    if (options.page.empty()) {
        throw std::invalid_argument("no page given (sonolet-host [options] PAGE.js)");
    }
    return options;
}

std::string Options::helpText() {
    return R"(usage: sonolet-host [options] PAGE.js

Runs a page script with the plug-in's globals, until the page calls close().

  --music DIR      folder of music for the music service (sets SONOLET_MUSIC)
  --audio SINK     auto: the sound system; wav:FILE: into a file; null: nowhere
                   (default: auto)
  --for SECONDS    close the page after that much page time
  --plugin FILE    the plug-in (default: ../lib/libSonolet.so.1.0 beside this
                   program)
  --speed N        run timers, polls and the wav and null sinks N times as fast
                   as real time (default: 1)
  --fault SPEC     faults of the music service at given times, as
                   offline@5s-12s,token@20s (sets SONOLET_FAULT)
  --trace FILE     write a timeline of what passes between the plug-in and the
                   rest, for a trace viewer (docs/watching.md)
  --replayable     write it so that sonolet-replay can do it again
  --validate       check what passes there against the rules of both sides, and
                   end with code 3 when one was broken (docs/integration.md)
  --log LEVEL      write log lines from this level: trace, error, none or a
                   number (default: error)
  --expose-gc      give the page gc(), which collects garbage at once
  --stress-gc      collect garbage in every call of the plug-in and every call
                   that it makes: slow, and finds what it forgets to keep
  --help           show this text
  --version        print the version

Exit codes: 0 the page was closed; 1 an exception was not caught; 2 an option,
the page's file or the plug-in is wrong, or what it printed was lost; 3
--validate found something.
)";
}
