#ifndef SONOLET_HOST_MEDIA_AUDIOOPTIONS_H
#define SONOLET_HOST_MEDIA_AUDIOOPTIONS_H

#include <string>

// Where the sound of all media backends of this process goes.
struct AudioOptions {
    enum class Sink {
        Auto,  // the machine's sound device; without one, as Null, and a log line says so
        Wav,   // a WAV file, at the pace of real time
        Null,  // nowhere, at the pace of real time
    };

    Sink sink = Sink::Auto;

    // For Wav. Streams that follow one another are appended, in the format of the first; a stream
    // that plays beside another one goes to a file of its own, "x-2.wav" next to "x.wav".
    std::string wavPath;

    // Wav and Null run this many times as fast as real time. A sound device has its own pace.
    double speed = 1.0;
};

// Sets the options and, for Wav, creates the file, empty, so that a path that cannot be written is
// found at once. Called before the first backend is requested, or while none exists.
// Throws std::runtime_error that says what is wrong.
void setAudioOptions(const AudioOptions& options);

// What was set last. Not to be called beside setAudioOptions().
const AudioOptions& audioOptions();

#endif
