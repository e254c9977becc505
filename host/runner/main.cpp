#include "log/LogThreshold.h"
#include "runner/Options.h"
#include "runner/Runner.h"

#ifdef SONOLET_HOST_MEDIA
#include "media/AudioOptions.h"
#endif

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

// What must stand before the plug-in is loaded.
void prepare(const Options& options) {
    if (!options.music.empty()) {
        // Before the plug-in is loaded: no thread can be reading the environment yet.
        setenv("SONOLET_MUSIC", options.music.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    }
    if (options.logLevel) {
        KlogSetThreshold(*options.logLevel);
    }
}

// Last, since it creates the file: a page that is not there leaves none behind.
void chooseSink([[maybe_unused]] const Options& options) {
#ifdef SONOLET_HOST_MEDIA
    AudioOptions audio;
    audio.sink = options.sink == Options::Sink::Wav    ? AudioOptions::Sink::Wav
                 : options.sink == Options::Sink::Null ? AudioOptions::Sink::Null
                                                       : AudioOptions::Sink::Auto;
    audio.wavPath = options.wavFile;
    audio.speed = options.speed;
    setAudioOptions(audio);
#endif
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        const Options options = Options::parse(argc, argv);
        if (options.help) {
            std::fputs(Options::helpText().c_str(), stdout);
            return 0;
        }
        prepare(options);
        Runner runner(options);
        chooseSink(options);
        return runner.run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-host: %s\n", error.what());
        return 2;
    }
}
