#ifndef SONOLET_SERVICE_PLAYER_DECODER_H
#define SONOLET_SERVICE_PLAYER_DECODER_H

#include "music/Sound.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace sonolet::service {

// The sound of one file (whatever GStreamer decodes) as interleaved 16-bit samples in the machine's
// byte order, 44,100 Hz, two channels. A source that has this form already passes bit for bit;
// anything else is converted without dither, so that the same file always gives the same samples.
//
// Threads: all operations belong to one thread and none of them blocks for decoded data;
// `readyToRead` is called from threads of GStreamer. The destructor waits for such a call to
// return, so its caller holds no lock that it takes.
class Decoder final {
public:
    static constexpr int sampleRate = 44100;
    static constexpr int channels = 2;

    enum class Status {
        Data,    // frames were copied
        NotYet,  // nothing decoded yet; a call of readyToRead follows
        End,     // the file is at its end
        Failed   // failure() says why; what was sound came before
    };

    // What one read() gave.
    struct Outcome {
        Status status;
        std::size_t frames;  // copied
    };

    // Starts to decode at once. `readyToRead` is called whenever read() may have something new to
    // say. What cannot be decoded is no exception: the first read() that knows answers Failed.
    // `readyToRead` may be called before the constructor has returned.
    Decoder(std::shared_ptr<const Sound> decodedSound, std::function<void()> readyToRead);
    ~Decoder();

    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    // Copies up to `count` frames out; fewer are no sign of the end.
    [[nodiscard]] Outcome read(std::int16_t* out, std::size_t count);

    // The next read() goes on from here, also after the end, exact to the frame. Behind the end
    // there is nothing; below 0 is the start. What is ready already is dropped.
    void seek(int offsetMs);

    const std::string& path() const { return file->path(); }

    // One line with the path and the cause. Empty until read() has answered Failed.
    const std::string& failure() const { return reason; }

private:
    class Pipeline;

    Outcome fail(std::string why);
    bool takeSample();
    bool performSeek();

    const std::shared_ptr<const Sound> file;
    const std::function<void()> ready;
    std::string reason;
    std::unique_ptr<Pipeline> pipeline;

    std::int64_t seekTarget = -1;  // ns; asked for, not done
    std::int64_t dropBefore = -1;  // ns; frames before this are decoded for the seek's sake alone
    bool behindEnd = false;
};

}  // namespace sonolet::service

#endif
