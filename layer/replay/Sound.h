#ifndef SONOLET_LAYER_REPLAY_SOUND_H
#define SONOLET_LAYER_REPLAY_SOUND_H

#include <cstddef>
#include <cstdint>

// Sound is not in a recording. In its place the plug-in gets words of 32 bits that count from
// delivery to delivery, so that what it hands to the backend tells whether all of it is there, in
// order.
//
// Threads: one at a time; whoever makes a step of the recording (replay/Turns.h).

// A delivery of so many frames of so many bytes each, of which the plug-in took so many when it was
// recorded. Valid until the next one. Throws NotReplayable for numbers that no delivery has.
const void* soundFor(std::int64_t frames, std::int64_t taken, std::int64_t frameBytes);

// The way of one backend's stream.
class SoundCheck final {
public:
    // A new stream begins.
    void restart();
    // Whether these bytes go on from the ones before. What is no sound of a delivery, a header, is
    // left out.
    bool isInOrder(const unsigned char* data, std::size_t size);

private:
    std::uint32_t last = 0;  // 0: nothing yet
};

#endif
