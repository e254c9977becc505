// The ring and the wave header against a plain queue of bytes.

#include "AudioTrack.h"
#include "CircularBuffer.h"
#include "Input.h"

#include <deque>
#include <vector>

using TellusClientNamespace::AudioTrack;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    AudioTrack track(static_cast<int>(input.below(65536)) - 100);
    TellusClientNamespace::TrackSettingsStruct format{static_cast<int>(input.below(2)),
                                                      input.below(65536), input.below(5), 0};
    const unsigned frameSize = 2 * format.channels;
    std::deque<unsigned char> model;
    std::size_t place = 0;  // where the next byte goes
    unsigned next = 0;
    bool loaded = false;
    std::vector<unsigned char> bytes;
    while (!input.empty()) {
        switch (input.byte() % 5) {
        case 0:
            if (!track.isInitialized()) {
                track.initialize(&format);
                require(track.isInitialized(), "not initialised");
                if (format.sampleType == 0) {
                    const char header[49] = "RIFF\44\0\0\0WAVEfmt \20\0\0\0\1\0";
                    model.assign(header, header + 22);
                    const auto number = [&](unsigned value, int count) {
                        for (int i = 0; i < count; ++i, value >>= 8) {
                            model.push_back(static_cast<unsigned char>(value));
                        }
                    };
                    number(format.channels, 2);
                    number(format.sampleRate, 4);
                    number(format.sampleRate * 4, 4);
                    number(4, 2);
                    number(16, 2);
                    number(0x61746164, 4);  // "data"
                    number(0xffffffff, 4);
                    number(0, 4);
                    place = 48;
                }
            }
            break;
        case 1:
        case 2: {
            const unsigned frames = input.below(65536) * (input.byte() % 4 + 1);
            bytes.resize(std::size_t{frames} * frameSize);
            for (unsigned char& one : bytes) {
                one = static_cast<unsigned char>(next++ * 7);
            }
            const unsigned taken = track.write(bytes.data(), frames);
            const bool fits = place != 0 && !loaded && bytes.size() < CircularBuffer::capacity &&
                              model.size() + bytes.size() < CircularBuffer::capacity;
            require(taken == (fits ? bytes.size() : 0), "took something else");
            if (fits && place + bytes.size() == CircularBuffer::capacity) {
                break;  // known to be dropped
            }
            if (fits) {
                model.insert(model.end(), bytes.begin(), bytes.end());
                place = (place + bytes.size()) % CircularBuffer::capacity;
            }
            break;
        }
        case 3: {
            const unsigned length = input.below(65536) * (input.byte() % 8 + 1);
            bytes.assign(length, 0);
            require(track.canRead(0, length) == (model.size() > length), "can read otherwise");
            const unsigned got = track.read(bytes.data(), input.byte(), length);
            require(got == (model.size() > length ? length : 0), "gave something else");
            for (unsigned i = 0; i < got; ++i) {
                require(bytes[i] == model.front(), "a byte is lost, repeated or wrong");
                model.pop_front();
            }
            break;
        }
        default:
            if (input.byte() % 16 == 0) {
                track.setLoaded();
                loaded = true;
            }
        }
    }
    return 0;
}
