#include "log/LogThreshold.h"
#include "media/AudioOptions.h"
#include "options/Limits.h"
#include "options/Memory.h"
#include "runner/Options.h"
#include "runner/Runner.h"

#include <cstdio>
#include <exception>
#include <stdexcept>

int main(int argc, char* argv[]) {
    try {
        const Options options = Options::parse(argc, argv);
        if (options.help) {
            std::fputs(Options::helpText().c_str(), stdout);
            return 0;
        }
        if (options.version) {
            std::puts("sonolet-host " SONOLET_VERSION);
            return 0;
        }
        checkLimits();
        memory::shareOneHeap();
        options.setEnvironment();
        if (options.logLevel) {
            KlogSetThreshold(*options.logLevel);
        }
        Runner runner(options);
        // Last, since it creates the file: a page that is not there leaves none behind.
        setAudioOptions(options.audio);
        const int exitCode = runner.run();
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            throw std::runtime_error("standard output: not all that the page wrote got there");
        }
        return exitCode;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-host: %s\n", error.what());
        return 2;
    }
}
