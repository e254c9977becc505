#include "Pipeline.h"

#include "AudioOptions.h"
#include "SoundDevice.h"

#include <gst/app/gstappsrc.h>
#include <gst/audio/audio.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>

// What the bus calls, from any thread at any time: outlives the pipeline as long as a call lasts.
struct Pipeline::BusLink {
    std::mutex mutex;
    Listener* listener;  // null once the pipeline is going
};

namespace {

constexpr const char* corePackage = "libgstreamer1.0-0";
constexpr const char* basePackage = "gstreamer1.0-plugins-base";
constexpr const char* goodPackage = "gstreamer1.0-plugins-good";

// GStreamer's locks order what one thread hands it and another one gets. A thread sanitizer sees
// nothing of them, GLib's locks being its own; this counter shows it the order.
std::atomic<unsigned> handedOver{0};

void handOver() {
    handedOver.fetch_add(1, std::memory_order_release);
}

void receive() {
    handedOver.load(std::memory_order_acquire);
}

void startGstreamer() {
    static std::once_flag once;
    std::call_once(once, [] {
        GError* error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error) == FALSE) {
            const std::string reason = error != nullptr ? error->message : "unknown reason";
            g_clear_error(&error);
            throw std::runtime_error("GStreamer does not start: " + reason);
        }
    });
}

// "S16LE" and its like.
std::string formatName(const WavFormat& format) {
    if (format.bits == 8) {
        return "U8";
    }
    return (format.isFloat ? "F" : "S") + std::to_string(format.bits) + "LE";
}

void releaseBlock(gpointer block) {
    delete[] static_cast<unsigned char*>(block);
}

}  // namespace

Pipeline::Pipeline(Listener& owner, const AudioOptions& options)
    : listener(owner), pace(options.speed), busLink(std::make_shared<BusLink>()) {
    startGstreamer();
    if (options.sink == AudioOptions::Sink::Wav) {
        file = WavFile::claim();
    }
    busLink->listener = &listener;
    pipeline = gst_pipeline_new(nullptr);
    gst_object_ref_sink(pipeline);
    try {
        source = add("appsrc", basePackage);
        g_object_set(add("wavparse", goodPackage), "ignore-length", TRUE, nullptr);
        add("audioconvert", basePackage);
        add("audioresample", basePackage);
        if (file) {
            addWavFilter();
        }
        GstElement* device = options.sink == AudioOptions::Sink::Auto ? openSoundDevice() : nullptr;
        onDevice = device != nullptr;
        if (onDevice) {
            pace = 1.0;
            gst_bin_add(GST_BIN(pipeline), device);
            chain.push_back(device);
        } else {
            g_object_set(add("fakesink", corePackage), "sync", TRUE, "enable-last-sample", FALSE,
                         "signal-handoffs", file ? TRUE : FALSE, nullptr);
        }
        link();
        handOver();
        if (gst_element_set_state(pipeline, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE) {
            throw std::runtime_error("the sound pipeline does not start");
        }
    } catch (...) {
        stop();
        throw;
    }
}

Pipeline::~Pipeline() {
    stop();
}

void Pipeline::stop() {
    {
        const std::lock_guard<std::mutex> lock(busLink->mutex);
        busLink->listener = nullptr;
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
}

void Pipeline::push(std::unique_ptr<unsigned char[]> data, std::size_t size) {
    const std::size_t missing = headerSent ? 0 : WavFormat::headerSize - header.size();
    const std::size_t begin = std::min(missing, size);
    header.insert(header.end(), data.get(), data.get() + begin);
    if (!headerSent && header.size() == WavFormat::headerSize) {
        pushHeader();
    }
    if (begin < size) {
        pushBytes(data.release(), begin, size);
    }
}

void Pipeline::end() {
    if (!headerSent && !header.empty()) {
        pushHeader();
    }
    // The answer tells of a pipeline that has failed, which the listener knows.
    gst_app_src_end_of_stream(GST_APP_SRC(source));
}

void Pipeline::setPlaying(bool playing) {
    // A failure comes as a message on the bus too.
    gst_element_set_state(pipeline, playing ? GST_STATE_PLAYING : GST_STATE_PAUSED);
}

std::optional<double> Pipeline::position() const {
    gint64 nanoseconds = 0;
    if (gst_element_query_position(pipeline, GST_FORMAT_TIME, &nanoseconds) == FALSE ||
        nanoseconds < 0) {
        return std::nullopt;
    }
    return static_cast<double>(nanoseconds) / GST_SECOND;
}

GstElement* Pipeline::add(const char* factory, const char* package) {
    GstElement* element = gst_element_factory_make(factory, factory);
    if (element == nullptr) {
        throw std::runtime_error(std::string("element ") + factory + " is missing (package " +
                                 package + ")");
    }
    gst_bin_add(GST_BIN(pipeline), element);
    chain.push_back(element);
    return element;
}

// The formats that the file can take: once it has samples, theirs.
void Pipeline::addWavFilter() {
    std::string description = "audio/x-raw,layout=interleaved,format=";
    if (const std::optional<WavFormat> format = file->format()) {
        description += formatName(*format) + ",rate=" + std::to_string(format->rate) +
                       ",channels=" + std::to_string(format->channels);
    } else {
        description += "{U8,S16LE,S24LE,S32LE,F32LE,F64LE}";
    }
    GstCaps* caps = gst_caps_from_string(description.c_str());
    g_object_set(add("capsfilter", corePackage), "caps", caps, nullptr);
    gst_caps_unref(caps);
}

void Pipeline::link() {
    for (std::size_t i = 1; i < chain.size(); ++i) {
        if (gst_element_link(chain[i - 1], chain[i]) == FALSE) {
            throw std::runtime_error("the sound pipeline's elements do not fit together");
        }
    }

    GstCaps* caps = gst_caps_new_empty_simple("audio/x-wav");
    g_object_set(source, "caps", caps, "format", GST_FORMAT_BYTES, "max-bytes", guint64{0},
                 nullptr);
    gst_caps_unref(caps);
    GstAppSrcCallbacks callbacks{};
    callbacks.need_data = [](GstAppSrc*, guint, gpointer self) {
        receive();
        static_cast<Pipeline*>(self)->listener.drained();
    };
    gst_app_src_set_callbacks(GST_APP_SRC(source), &callbacks, this, nullptr);
    GstPad* pad = gst_element_get_static_pad(source, "src");
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &Pipeline::onSourceBuffer, this, nullptr);
    gst_object_unref(pad);

    GstElement* sink = chain.back();
    pad = gst_element_get_static_pad(sink, "sink");
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, &Pipeline::onSinkEvent, this,
                      nullptr);
    gst_object_unref(pad);
    if (file) {
        g_signal_connect(sink, "handoff", G_CALLBACK(&Pipeline::onRender), this);
    }

    GstBus* bus = gst_pipeline_get_bus(GST_PIPELINE(pipeline));
    gst_bus_set_sync_handler(
        bus, &Pipeline::onMessage, new std::shared_ptr<BusLink>(busLink),
        [](gpointer link) { delete static_cast<std::shared_ptr<BusLink>*>(link); });
    gst_object_unref(bus);
}

// Takes over the block, of which the bytes from `begin` to `end` are pushed.
void Pipeline::pushBytes(unsigned char* block, std::size_t begin, std::size_t end) {
    GstBuffer* buffer = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, block, end, begin,
                                                    end - begin, block, &releaseBlock);
    handOver();
    // Takes the buffer over; refused only by a pipeline that has failed or stopped.
    gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
}

// wavparse refuses a frame size and byte rate that do not fit the channels, so those that were
// stated for stereo are put right.
void Pipeline::pushHeader() {
    if (header.size() == WavFormat::headerSize) {
        WavFormat::Header bytes;
        std::copy(header.begin(), header.end(), bytes.begin());
        if (const std::optional<WavFormat> format = WavFormat::parse(bytes)) {
            streamByteRate = format->byteRate();
            const WavFormat::Header exact = format->header(0xFFFFFFFF);
            std::copy(exact.begin(), exact.end(), header.begin());
        }
    }
    if (onDevice) {
        gst_pipeline_set_latency(GST_PIPELINE(pipeline), soundDeviceLead());
    }
    auto block = std::make_unique<unsigned char[]>(header.size());
    std::copy(header.begin(), header.end(), block.get());
    pushBytes(block.release(), 0, header.size());
    headerSent = true;
}

GstPadProbeReturn Pipeline::onSourceBuffer(GstPad*, GstPadProbeInfo* info, gpointer self) {
    receive();
    const GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    static_cast<Pipeline*>(self)->listener.consumed(
        gst_buffer_get_size(const_cast<GstBuffer*>(buffer)));
    return GST_PAD_PROBE_OK;
}

// Notes the format, and makes a segment of sound pass in less time: the samples stay as they are.
GstPadProbeReturn Pipeline::onSinkEvent(GstPad*, GstPadProbeInfo* info, gpointer self) {
    receive();
    auto* const pipeline = static_cast<Pipeline*>(self);
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT && pipeline->pace != 1.0) {
        GstSegment segment;
        gst_event_copy_segment(event, &segment);
        segment.rate = pipeline->pace;
        GstEvent* faster = gst_event_new_segment(&segment);
        gst_event_set_seqnum(faster, gst_event_get_seqnum(event));
        gst_event_unref(event);
        GST_PAD_PROBE_INFO_DATA(info) = faster;
    } else if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        GstCaps* caps = nullptr;
        gst_event_parse_caps(event, &caps);
        GstAudioInfo audio;
        if (gst_audio_info_from_caps(&audio, caps) != FALSE) {
            pipeline->sinkFormat.isFloat = GST_AUDIO_INFO_IS_FLOAT(&audio);
            pipeline->sinkFormat.channels = static_cast<unsigned>(GST_AUDIO_INFO_CHANNELS(&audio));
            pipeline->sinkFormat.rate = static_cast<unsigned>(GST_AUDIO_INFO_RATE(&audio));
            pipeline->sinkFormat.bits = static_cast<unsigned>(GST_AUDIO_INFO_WIDTH(&audio));
        }
    }
    return GST_PAD_PROBE_OK;
}

void Pipeline::onRender(GstElement*, GstBuffer* buffer, GstPad*, gpointer self) {
    receive();
    auto* const pipeline = static_cast<Pipeline*>(self);
    GstMapInfo map;
    if (pipeline->fileFailed || gst_buffer_map(buffer, &map, GST_MAP_READ) == FALSE) {
        return;
    }
    try {
        pipeline->file->append(pipeline->sinkFormat, map.data, map.size);
    } catch (const std::exception& error) {
        pipeline->fileFailed = true;
        pipeline->listener.failed(false, error.what());
    }
    gst_buffer_unmap(buffer, &map);
}

GstBusSyncReply Pipeline::onMessage(GstBus*, GstMessage* message, gpointer link) {
    receive();
    const std::shared_ptr<BusLink> alive = *static_cast<std::shared_ptr<BusLink>*>(link);
    const std::lock_guard<std::mutex> lock(alive->mutex);
    if (alive->listener != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        alive->listener->finished();
    } else if (alive->listener != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        alive->listener->failed(error->domain == GST_STREAM_ERROR,
                                std::string(GST_OBJECT_NAME(GST_MESSAGE_SRC(message))) + ": " +
                                    error->message);
        g_error_free(error);
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}
