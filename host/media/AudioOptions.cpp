#include "AudioOptions.h"

#include "WavFile.h"

#include <cmath>
#include <stdexcept>

namespace {

AudioOptions& current() {
    static AudioOptions options;
    return options;
}

}  // namespace

void setAudioOptions(const AudioOptions& options) {
    if (!std::isfinite(options.speed) || options.speed <= 0) {
        throw std::runtime_error("audio speed must be a number above 0, not " +
                                 std::to_string(options.speed));
    }
    if (options.sink == AudioOptions::Sink::Wav && options.wavPath.empty()) {
        throw std::runtime_error("audio goes to a WAV file, but none is named");
    }
    WavFile::createFirst(options.sink == AudioOptions::Sink::Wav ? options.wavPath : std::string());
    current() = options;
}

const AudioOptions& audioOptions() {
    return current();
}
