#ifndef SONOLET_SERVICE_DEMO_SYNTH_H
#define SONOLET_SERVICE_DEMO_SYNTH_H

#include <array>
#include <cstdint>
#include <vector>

namespace sonolet::service {

// The scale of a tune.
enum class Mode { Major, Minor, Dorian };
// What plays the melody; the accompaniment is the same for all.
enum class Lead { Kalimba, Flute, Guitar };

// A tune in a few words; the rest is composed by rule from the seed.
struct Score {
    int tonic;  // MIDI note of the key, around middle C (60)
    Mode mode;
    std::array<int, 4> chords;  // scale degrees from 0, one a bar, over and over
    int beatsPerBar;
    int bars;
    double tempo;  // beats a minute
    Lead lead;
    bool percussion;
    unsigned seed;
};

// Plays a score: interleaved 16-bit stereo at 44,100 Hz. One score, one sound: on every machine and
// at every time the same samples. Some ten megabytes a minute, all in memory. Any thread.
std::vector<std::int16_t> play(const Score& score);

}  // namespace sonolet::service

#endif
