#ifndef SONOLET_AUDIO_TRACK_H
#define SONOLET_AUDIO_TRACK_H

#include "Buffer.h"

#include "libspotify/api.h"

#include <atomic>
#include <memory>

namespace TellusClientNamespace {

// The format of a track's sound, as it is delivered.
struct TrackSettingsStruct {
    int sampleType;       // sp_sampletype; only SP_SAMPLETYPE_INT16_NATIVE_ENDIAN is supported
    unsigned sampleRate;  // frames per second
    unsigned channels;
    int durationMs;
};

// The sound of one track: an open-ended WAV stream that is filled while the library delivers and
// emptied while the media backend asks.
//
// Threads: initialize(), write() and setLoaded() belong to the library's delivery, read() and
// canRead() to the script thread; isInitialized() and isLoaded() to any. No locks. Errors: what
// cannot be taken or given is refused whole, with 0.
class AudioTrack {
public:
    // Has no buffer yet, so nothing can be written or read.
    explicit AudioTrack(int durationMs);
    virtual ~AudioTrack();

    AudioTrack(const AudioTrack&) = delete;
    AudioTrack& operator=(const AudioTrack&) = delete;

    // Fixes the format, makes the buffer and starts the stream with its header. Its durationMs is
    // not taken. A sample type that is not supported leaves the track without a buffer.
    void initialize(TrackSettingsStruct* format);

    // Takes all frames or none. The number of bytes taken.
    unsigned write(const unsigned char* frames, const unsigned& frameCount);

    // Gives `length` bytes or none. The number of bytes given.
    unsigned read(unsigned char* out, const unsigned& offset, const unsigned& length);
    // True when more than `length` bytes lie there: the last byte of all is never given.
    bool canRead(const unsigned& offset, const unsigned& length) const;

    // The end of the track was delivered: further writes are refused.
    void setLoaded();

    bool isInitialized() const { return initialized.load(std::memory_order_acquire); }
    bool isLoaded() const { return loaded.load(std::memory_order_acquire); }

private:
    void writeWaveHeader();

    const std::unique_ptr<TrackSettingsStruct> settings;
    std::atomic<Buffer*> buffer{nullptr};  // owned; made by initialize()
    std::atomic<bool> initialized{false};
    std::atomic<bool> loaded{false};
};

}  // namespace TellusClientNamespace

#endif
