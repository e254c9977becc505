#include "demo/Synth.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <random>

namespace sonolet::service {

namespace {

constexpr double sampleRate = 44100;
constexpr double tailSeconds = 1.6;  // the last notes ring out
constexpr double pi = 3.14159265358979323846;

std::size_t framesIn(double seconds) {
    return static_cast<std::size_t>(std::lround(seconds * sampleRate));
}

struct Partial {
    double ratio;
    double gain;
    double decay;  // seconds to a third
};

struct Timbre {
    std::vector<Partial> partials;
    double attack;   // seconds
    double release;  // seconds after the note's length
};

const Timbre& timbreOf(Lead lead) {
    static const Timbre kalimba{{{1, 1, 0.5}, {2, 0.3, 0.3}, {5.4, 0.1, 0.06}}, 0.004, 0.4};
    static const Timbre flute{{{1, 1, 6}, {2, 0.22, 6}, {3, 0.07, 6}}, 0.05, 0.12};
    static const Timbre guitar{
        {{1, 1, 0.7}, {2, 0.5, 0.5}, {3, 0.3, 0.3}, {4, 0.15, 0.2}, {5, 0.1, 0.12}}, 0.003, 0.2};
    switch (lead) {
    case Lead::Kalimba:
        return kalimba;
    case Lead::Flute:
        return flute;
    case Lead::Guitar:
        break;
    }
    return guitar;
}

const Timbre padTimbre{{{1, 0.7, 9}, {1.004, 0.5, 9}, {2, 0.15, 9}}, 0.3, 0.5};
const Timbre bassTimbre{{{1, 1, 0.8}, {2, 0.35, 0.4}, {3, 0.12, 0.2}}, 0.01, 0.1};

// Two channels that sounds are added to.
class Mix final {
public:
    explicit Mix(std::size_t frames) : left(frames), right(frames) {}

    // `pan` from 0 (left) to 1 (right); times in seconds.
    void
    note(const Timbre& timbre, int midi, double start, double length, double gain, double pan) {
        const double frequency = 440 * std::pow(2, (midi - 69) / 12.0);
        const std::size_t begin = framesIn(start);
        const std::size_t frames = framesIn(length + timbre.release);
        const double attackFrames = timbre.attack * sampleRate;
        const double releaseFrames = timbre.release * sampleRate;
        for (const Partial& partial : timbre.partials) {
            // A sine by recurrence: each value follows from the two before it.
            const double step = 2 * pi * frequency * partial.ratio / sampleRate;
            const double turn = 2 * std::cos(step);
            const double fade = std::exp(-1 / (partial.decay * sampleRate));
            double before = -std::sin(step);
            double now = 0;
            double level = gain * partial.gain;
            for (std::size_t i = 0; i < frames; ++i) {
                const double envelope = std::min({1.0, static_cast<double>(i) / attackFrames,
                                                  static_cast<double>(frames - i) / releaseFrames});
                add(begin + i, now * level * envelope, pan);
                level *= fade;
                const double next = turn * now - before;
                before = now;
                now = next;
            }
        }
    }

    // A soft drum: a tone that falls in pitch.
    void drum(double start, double gain) {
        double phase = 0;
        for (std::size_t i = 0; i < framesIn(0.25); ++i) {
            const double time = static_cast<double>(i) / sampleRate;
            phase += 2 * pi * (48 + 70 * std::exp(-time * 30)) / sampleRate;
            const double attack = std::min(1.0, time / 0.004);
            add(framesIn(start) + i, gain * attack * std::exp(-time * 16) * std::sin(phase), 0.5);
        }
    }

    // A shaker: a breath of high noise.
    void shaker(double start, double gain, std::minstd_rand& random) {
        double before = 0;
        for (std::size_t i = 0; i < framesIn(0.09); ++i) {
            const double time = static_cast<double>(i) / sampleRate;
            const double noise = static_cast<double>(random()) / std::minstd_rand::max() - 0.5;
            const double attack = std::min(1.0, time / 0.01);
            add(framesIn(start) + i, gain * attack * std::exp(-time * 45) * (noise - before), 0.65);
            before = noise;
        }
    }

    // Each channel echoes in the other one.
    void echo(double delay, double gain) {
        const std::size_t frames = framesIn(delay);
        for (std::size_t i = frames; i < left.size(); ++i) {
            left[i] += gain * right[i - frames];
            right[i] += gain * left[i - frames];
        }
    }

    void add(const Mix& other) {
        for (std::size_t i = 0; i < left.size(); ++i) {
            left[i] += other.left[i];
            right[i] += other.right[i];
        }
    }

    // Brings the loudest sample to `peak` of full scale.
    std::vector<std::int16_t> samples(double peak) const {
        double loudest = 1e-9;
        for (std::size_t i = 0; i < left.size(); ++i) {
            loudest = std::max({loudest, std::abs(left[i]), std::abs(right[i])});
        }
        const std::size_t fade = framesIn(tailSeconds);
        std::vector<std::int16_t> all;
        all.reserve(left.size() * 2);
        for (std::size_t i = 0; i < left.size(); ++i) {
            const double end =
                std::min(1.0, static_cast<double>(left.size() - i) / static_cast<double>(fade));
            const double gain = peak * 32767 / loudest * end;
            all.push_back(static_cast<std::int16_t>(std::lround(left[i] * gain)));
            all.push_back(static_cast<std::int16_t>(std::lround(right[i] * gain)));
        }
        return all;
    }

private:
    void add(std::size_t frame, double value, double pan) {
        if (frame < left.size()) {
            left[frame] += value * (1 - pan);
            right[frame] += value * pan;
        }
    }

    std::vector<double> left;
    std::vector<double> right;
};

// The MIDI note of a scale degree; 7 is the octave.
int pitch(const Score& score, int degree) {
    static constexpr std::array<std::array<int, 7>, 3> scales{
        {{0, 2, 4, 5, 7, 9, 11}, {0, 2, 3, 5, 7, 8, 10}, {0, 2, 3, 5, 7, 9, 10}}};
    const auto& scale = scales.at(static_cast<std::size_t>(score.mode));
    const int octave = degree >= 0 ? degree / 7 : (degree - 6) / 7;
    return score.tonic + 12 * octave + scale.at(static_cast<std::size_t>(degree - 7 * octave));
}

bool isChordTone(int degree, int root) {
    const int place = (degree - root + 70) % 7;
    return place == 0 || place == 2 || place == 4;
}

// A walk along the scale: chord tones on the beat, steps between, the second half of each phrase
// answering the first, home at the end.
void playMelody(Mix& mix, const Score& score) {
    const double beat = 60 / score.tempo;
    const int slots = score.beatsPerBar * 2;  // half beats
    int degree = 4;
    for (int bar = 0; bar < score.bars; ++bar) {
        const bool last = bar == score.bars - 1;
        const int root = score.chords.at(static_cast<std::size_t>(bar % 4));
        // Bars two apart share their rhythm and their turns.
        std::minstd_rand random(score.seed + static_cast<unsigned>(bar % 2) * 97 + 1);
        random.discard(5);
        for (int slot = 0; slot < slots;) {
            const double start = (bar * score.beatsPerBar + slot / 2.0) * beat;
            if (last && slot >= 2) {
                mix.note(timbreOf(score.lead), pitch(score, 7), start, 3 * beat, 0.5, 0.45);
                break;
            }
            const auto draw = static_cast<int>(random() % 8);
            const int length = draw < 3 ? 1 : draw < 7 ? 2 : 3;
            const int direction = degree > 8 ? -1 : degree < 2 ? 1 : random() % 2 == 0 ? 1 : -1;
            degree += direction * (random() % 4 == 0 ? 2 : 1);
            if (slot % 2 == 0 && !isChordTone(degree, root)) {
                degree += isChordTone(degree + direction, root) ? direction : -direction;
            }
            const bool rest = slot > 0 && random() % 7 == 0;
            if (!rest) {
                const double gain = slot == 0 ? 0.5 : slot % 2 == 0 ? 0.42 : 0.34;
                const double pan = slot % 2 == 0 ? 0.42 : 0.58;
                mix.note(timbreOf(score.lead), pitch(score, degree), start,
                         length * beat / 2 * 0.95, gain, pan);
            }
            slot += std::min(length, slots - slot);
        }
    }
}

void playChords(Mix& mix, const Score& score) {
    const double beat = 60 / score.tempo;
    const double bar = beat * score.beatsPerBar;
    for (int i = 0; i < score.bars; ++i) {
        const bool last = i == score.bars - 1;
        const int root = last ? 0 : score.chords.at(static_cast<std::size_t>(i % 4));
        // Close to the tonic, whatever the chord.
        const int low = root > 3 ? root - 7 : root;
        for (int voice = 0; voice < 3; ++voice) {
            mix.note(padTimbre, pitch(score, low + 2 * voice), i * bar, bar, 0.11,
                     0.3 + 0.2 * voice);
        }
        mix.note(bassTimbre, pitch(score, low) - 24, i * bar, beat * 1.5, 0.34, 0.5);
        if (!last && score.beatsPerBar > 2) {
            mix.note(bassTimbre, pitch(score, low + 4) - 24, i * bar + 2 * beat, beat, 0.24, 0.5);
        }
    }
}

void playPercussion(Mix& mix, const Score& score) {
    const double beat = 60 / score.tempo;
    std::minstd_rand random(score.seed);
    for (int i = 0; i < (score.bars - 1) * score.beatsPerBar; ++i) {
        const int inBar = i % score.beatsPerBar;
        if (inBar == 0 || (inBar == 2 && score.beatsPerBar == 4)) {
            mix.drum(i * beat, inBar == 0 ? 0.5 : 0.35);
        } else {
            mix.shaker(i * beat, 0.16, random);
        }
        mix.shaker((i + 0.5) * beat, 0.08, random);
    }
}

}  // namespace

std::vector<std::int16_t> play(const Score& score) {
    const double beat = 60 / score.tempo;
    const std::size_t frames = framesIn(beat * score.beatsPerBar * score.bars + tailSeconds);
    Mix melody(frames);
    playMelody(melody, score);
    melody.echo(beat * 0.75, 0.28);
    Mix all(frames);
    playChords(all, score);
    if (score.percussion) {
        playPercussion(all, score);
    }
    all.add(melody);
    return all.samples(0.8);
}

}  // namespace sonolet::service
