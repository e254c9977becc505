#ifndef SONOLET_HOST_MEDIA_PIPELINE_H
#define SONOLET_HOST_MEDIA_PIPELINE_H

#include "WavFile.h"
#include "WavFormat.h"

#include <gst/gst.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct AudioOptions;

// One WAV stream on its way to the sink, through GStreamer: appsrc, wavparse, audioconvert,
// audioresample, sink. The samples stay as they come unless the sink cannot take them. A device
// runs by its own clock, and the end waits for that clock; the other sinks run at real time or a
// multiple of it.
//
// Threads: one at a time; the listener is called on GStreamer's threads, and not any more once the
// destructor has returned. Nothing needs a main loop. Ownership: takes over what is pushed.
// Errors: the constructor throws std::runtime_error naming what is missing; later ones go to the
// listener.
class Pipeline final {
public:
    // Its functions must neither call the pipeline nor wait for a thread that does.
    class Listener {
    public:
        virtual void consumed(std::size_t bytes) noexcept = 0;  // left the queue for the sink
        virtual void drained() noexcept = 0;   // the sink wants more than the queue holds
        virtual void finished() noexcept = 0;  // everything up to end() has been played
        virtual void failed(bool inStream, const std::string& reason) noexcept = 0;

    protected:
        ~Listener() = default;
    };

    Pipeline(Listener& owner, const AudioOptions& options);
    ~Pipeline();

    // A copy would play the stream twice.
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Appends `size` bytes to the stream, any number, the header's first; never waits.
    void push(std::unique_ptr<unsigned char[]> data, std::size_t size);

    // Nothing follows. Once; finished() comes when all has been played, while playing.
    void end();

    // Starts paused. Pausing stops the sound at once and keeps what was not heard.
    void setPlaying(bool playing);

    // Seconds of the stream that were played; nothing while that is not known.
    std::optional<double> position() const;

    // Of the stream, bytes a second; nothing before its header has come.
    std::optional<unsigned> byteRate() const { return streamByteRate; }

    // Seconds of sound that are played in a second.
    double speed() const { return pace; }

private:
    struct BusLink;

    GstElement* add(const char* factory, const char* package);
    void addWavFilter();
    void link();
    void pushBytes(unsigned char* block, std::size_t begin, std::size_t end);
    void pushHeader();
    // Ends GStreamer's threads: nobody calls the listener afterwards.
    void stop();

    static GstPadProbeReturn onSourceBuffer(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstPadProbeReturn onSinkEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static void onRender(GstElement* sink, GstBuffer* buffer, GstPad* pad, gpointer self);
    static GstBusSyncReply onMessage(GstBus* bus, GstMessage* message, gpointer link);

    // Constant after construction.
    Listener& listener;
    double pace;
    bool onDevice = false;
    WavFile::Claim file;             // null unless the sound goes to a file
    GstElement* pipeline = nullptr;  // (owned)
    GstElement* source = nullptr;    // the pipeline's
    std::vector<GstElement*> chain;  // the pipeline's, from source to sink
    std::shared_ptr<BusLink> busLink;

    // The caller's.
    std::vector<unsigned char> header;  // held back until complete
    bool headerSent = false;
    std::optional<unsigned> streamByteRate;

    // The streaming thread's.
    WavFormat sinkFormat;
    bool fileFailed = false;
};

#endif
