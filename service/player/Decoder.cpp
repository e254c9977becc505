#include "player/Decoder.h"

#include "player/FileSource.h"
#include "player/Handover.h"
#include "player/Needs.h"

#include <gst/app/gstappsink.h>
#include <gst/audio/audio.h>
#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::size_t bytesPerFrame = sizeof(std::int16_t) * Decoder::channels;
constexpr std::int64_t nsPerMs = 1000000;

// How many decoded buffers lie ready; each is a decoder's frame, 20 to 100 ms.
constexpr guint buffersAhead = 16;

struct Release {
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GError* error) const { g_error_free(error); }
};

template <typename T>
using Handle = std::unique_ptr<T, Release>;

void initialiseOnce() {
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

}  // namespace

// The GStreamer side: a FileSource ! decodebin ! audioconvert ! audioresample ! appsink. Its
// callbacks come from streaming threads and only leave notes here.
class Decoder::Pipeline final {
public:
    Pipeline(const std::shared_ptr<const Sound>& file, std::function<void()> ready);
    ~Pipeline();

    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    bool seek(std::int64_t target);
    std::int64_t duration() const;
    bool isStarted() const { return started; }
    bool isAtEnd() const { return sink != nullptr && gst_app_sink_is_eos(sink); }
    std::string failure() const;

    // The next decoded buffer, or null when none lies ready.
    GstSample* pull() { return sink == nullptr ? nullptr : gst_app_sink_try_pull_sample(sink, 0); }

    // What read() is copying from. The reading thread's alone.
    Handle<GstSample> sample;
    std::size_t consumed = 0;  // bytes

private:
    void build(const std::shared_ptr<const Sound>& encoded);
    void note(std::string why);
    std::string explain(const GError& cause) const;
    void moved() {
        const Handover visit(this);
        started = true;
        wakeReader();
    }

    static int selectElement(GstElement* decodebin,
                             GstPad* pad,
                             GstCaps* caps,
                             GstElementFactory* factory,
                             gpointer self);
    static void padAdded(GstElement* decodebin, GstPad* pad, gpointer self);
    static void noMorePads(GstElement* decodebin, gpointer self);
    static GstBusSyncReply message(GstBus* bus, GstMessage* message, gpointer self);

    const std::function<void()> wakeReader;
    Handle<GstElement> bin;
    GstAppSink* sink = nullptr;       // (borrowed from bin)
    GstElement* converter = nullptr;  // (borrowed from bin)

    std::atomic<bool> started{false};

    mutable std::mutex mutex;
    // State below is protected by mutex.
    std::string error;
    std::string need;
};

Decoder::Pipeline::Pipeline(const std::shared_ptr<const Sound>& file, std::function<void()> ready)
    : wakeReader(std::move(ready)), bin(gst_pipeline_new(nullptr)) {
    build(file);
}

Decoder::Pipeline::~Pipeline() {
    // Joins the streaming threads; from here on no callback comes.
    gst_element_set_state(bin.get(), GST_STATE_NULL);
    const Handover fromTheirThreads(this);
}

void Decoder::Pipeline::build(const std::shared_ptr<const Sound>& encoded) {
    GstElement* source = makeFileSource(encoded);
    gst_bin_add(GST_BIN(bin.get()), source);
    const auto add = [this](const char* factory) {
        GstElement* element = gst_element_factory_make(factory, nullptr);
        if (element == nullptr) {
            note(std::string("element ") + factory + " is missing (gstreamer1.0-plugins-base)");
        } else {
            gst_bin_add(GST_BIN(bin.get()), element);
        }
        return element;
    };
    GstElement* decodebin = add("decodebin");
    GstElement* resampler = add("audioresample");
    GstElement* appsink = add("appsink");
    converter = add("audioconvert");
    sink = GST_APP_SINK_CAST(appsink);
    if (!failure().empty()) {
        return;
    }

    const Handle<GstCaps> sound(gst_caps_new_empty_simple("audio/x-raw"));
    const Handle<GstCaps> form(
        gst_caps_from_string("audio/x-raw, format=" GST_AUDIO_NE(S16) ", layout=interleaved"));
    gst_caps_set_simple(form.get(), "rate", G_TYPE_INT, Decoder::sampleRate, nullptr);
    gst_caps_set_simple(form.get(), "channels", G_TYPE_INT, Decoder::channels, nullptr);
    // Pictures and films beside the sound are left alone instead of decoded.
    g_object_set(decodebin, "caps", sound.get(), "expose-all-streams", FALSE, nullptr);
    gst_util_set_object_arg(G_OBJECT(converter), "dithering", "none");
    gst_util_set_object_arg(G_OBJECT(converter), "noise-shaping", "none");
    g_object_set(resampler, "quality", 8, nullptr);
    g_object_set(appsink, "caps", form.get(), "max-buffers", buffersAhead, nullptr);
    // As fast as it is read, and not a buffer kept beyond that.
    g_object_set(appsink, "sync", FALSE, "enable-last-sample", FALSE, nullptr);

    gst_element_link(source, decodebin);
    gst_element_link_many(converter, resampler, appsink, nullptr);
    g_signal_connect(decodebin, "autoplug-select", G_CALLBACK(selectElement), this);
    g_signal_connect(decodebin, "pad-added", G_CALLBACK(padAdded), this);
    g_signal_connect(decodebin, "no-more-pads", G_CALLBACK(noMorePads), this);

    GstAppSinkCallbacks callbacks{};
    callbacks.eos = [](GstAppSink*, gpointer self) { static_cast<Pipeline*>(self)->moved(); };
    callbacks.new_preroll = [](GstAppSink*, gpointer self) {
        static_cast<Pipeline*>(self)->moved();
        return GST_FLOW_OK;
    };
    callbacks.new_sample = callbacks.new_preroll;
    gst_app_sink_set_callbacks(sink, &callbacks, this, nullptr);

    const Handle<GstBus> bus(gst_element_get_bus(bin.get()));
    gst_bus_set_sync_handler(bus.get(), message, this, nullptr);

    // A refusal has come as an error message before this returns.
    { const Handover toTheirThreads(this); }
    gst_element_set_state(bin.get(), GST_STATE_PLAYING);
}

// A file that names others, as a stream's list of addresses does, is not followed to them.
int Decoder::Pipeline::selectElement(
    GstElement*, GstPad*, GstCaps*, GstElementFactory* factory, gpointer) {
    // decodebin's numbers for its two answers; no header has them.
    constexpr int tryIt = 0;
    constexpr int skip = 2;
    const char* kind = gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
    for (const char* outside : {"Adaptive", "Network", "Source"}) {
        if (kind == nullptr || std::strstr(kind, outside) != nullptr) {
            return skip;
        }
    }
    return tryIt;
}

bool Decoder::Pipeline::seek(std::int64_t target) {
    sample.reset();
    return gst_element_seek_simple(
        bin.get(), GST_FORMAT_TIME,
        static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), target);
}

std::int64_t Decoder::Pipeline::duration() const {
    gint64 length = -1;
    return gst_element_query_duration(bin.get(), GST_FORMAT_TIME, &length) ? length : -1;
}

std::string Decoder::Pipeline::failure() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return error;
}

// The first cause counts; what follows from it is noise.
void Decoder::Pipeline::note(std::string why) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (error.empty()) {
            error = std::move(why);
        }
    }
    wakeReader();
}

std::string Decoder::Pipeline::explain(const GError& cause) const {
    const bool missing =
        (cause.domain == GST_CORE_ERROR && cause.code == GST_CORE_ERROR_MISSING_PLUGIN) ||
        (cause.domain == GST_STREAM_ERROR && cause.code == GST_STREAM_ERROR_CODEC_NOT_FOUND);
    const std::lock_guard<std::mutex> lock(mutex);
    return missing && !need.empty() ? need : cause.message;
}

// The first sound of the file is its sound.
void Decoder::Pipeline::padAdded(GstElement*, GstPad* pad, gpointer self) {
    const Handover visit(self);
    const Handle<GstPad> input(
        gst_element_get_static_pad(static_cast<Pipeline*>(self)->converter, "sink"));
    if (!gst_pad_is_linked(input.get())) {
        gst_pad_link(pad, input.get());
    }
}

void Decoder::Pipeline::noMorePads(GstElement*, gpointer self) {
    const Handover visit(self);
    auto* pipeline = static_cast<Pipeline*>(self);
    const Handle<GstPad> input(gst_element_get_static_pad(pipeline->converter, "sink"));
    if (!gst_pad_is_linked(input.get())) {
        pipeline->note("no sound in it");
    }
}

// Every message is dropped here: nobody reads the bus, and what lay on it would only pile up.
GstBusSyncReply Decoder::Pipeline::message(GstBus*, GstMessage* message, gpointer self) {
    const Handover visit(self);
    auto* pipeline = static_cast<Pipeline*>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* raw = nullptr;
        gst_message_parse_error(message, &raw, nullptr);
        const Handle<GError> cause(raw);
        pipeline->note(pipeline->explain(*cause));
    } else if (gst_is_missing_plugin_message(message)) {
        const GstStructure* structure = gst_message_get_structure(message);
        GstCaps* raw = nullptr;
        if (gst_structure_get(structure, "detail", GST_TYPE_CAPS, &raw, nullptr) &&
            raw != nullptr) {
            const Handle<GstCaps> caps(raw);
            const std::lock_guard<std::mutex> lock(pipeline->mutex);
            pipeline->need = describeNeed(caps.get());
        }
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

Decoder::Decoder(std::shared_ptr<const Sound> decodedSound, std::function<void()> readyToRead)
    : file(std::move(decodedSound)), ready(std::move(readyToRead)) {
    initialiseOnce();
    pipeline = std::make_unique<Pipeline>(file, ready);
}

Decoder::~Decoder() = default;

Decoder::Outcome Decoder::fail(std::string why) {
    reason = path() + ": " + std::move(why);
    return {Status::Failed, 0};
}

void Decoder::seek(int offsetMs) {
    seekTarget = std::max(offsetMs, 0) * nsPerMs;
    dropBefore = -1;
    behindEnd = false;
    pipeline->sample.reset();
}

// False while the file is not open far enough to be sought in.
bool Decoder::performSeek() {
    if (!pipeline->isStarted()) {
        return false;
    }
    const std::int64_t target = std::exchange(seekTarget, -1);
    const std::int64_t duration = pipeline->duration();
    behindEnd = duration >= 0 && target >= duration;
    if (behindEnd) {
        return true;
    }
    dropBefore = target;
    // At the start a fresh decoder is exact where one that keeps state across a seek is not. A file
    // that cannot be sought in is decoded from its start up to the place.
    if (target == 0 || !pipeline->seek(target)) {
        pipeline.reset();
        pipeline = std::make_unique<Pipeline>(file, ready);
    }
    return true;
}

// The next decoded buffer that holds a frame behind the seek's target becomes the current one.
bool Decoder::takeSample() {
    for (;;) {
        pipeline->sample.reset(pipeline->pull());
        if (pipeline->sample == nullptr) {
            return false;
        }
        GstBuffer* buffer = gst_sample_get_buffer(pipeline->sample.get());
        const std::size_t size = gst_buffer_get_size(buffer);
        pipeline->consumed = 0;
        if (dropBefore >= 0 && GST_BUFFER_PTS_IS_VALID(buffer)) {
            const GstSegment* segment = gst_sample_get_segment(pipeline->sample.get());
            const std::uint64_t begin =
                gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
            const auto target = static_cast<std::uint64_t>(dropBefore);
            if (begin != GST_CLOCK_TIME_NONE && begin < target) {
                const std::size_t frames =
                    gst_util_uint64_scale_round(target - begin, sampleRate, GST_SECOND);
                pipeline->consumed = std::min(size, frames * bytesPerFrame);
            }
        }
        if (pipeline->consumed < size) {
            dropBefore = -1;
            return true;
        }
    }
}

Decoder::Outcome Decoder::read(std::int16_t* out, std::size_t count) {
    if (pipeline->sample == nullptr) {
        if (seekTarget >= 0 && pipeline->failure().empty() && !performSeek()) {
            return {Status::NotYet, 0};
        }
        if (behindEnd) {
            return {Status::End, 0};
        }
        // In this order: an error is noted before the end that it causes, and both follow the last
        // buffer.
        const bool atEnd = pipeline->isAtEnd();
        const std::string why = pipeline->failure();
        if (!takeSample()) {
            if (!why.empty()) {
                return fail(why);
            }
            return {atEnd ? Status::End : Status::NotYet, 0};
        }
    }
    GstBuffer* buffer = gst_sample_get_buffer(pipeline->sample.get());
    const std::size_t size = gst_buffer_get_size(buffer);
    const std::size_t wanted =
        std::min(count * bytesPerFrame, size - pipeline->consumed) / bytesPerFrame * bytesPerFrame;
    const std::size_t copied = gst_buffer_extract(buffer, pipeline->consumed, out, wanted);
    pipeline->consumed += copied;
    if (pipeline->consumed >= size) {
        pipeline->sample.reset();
    }
    return {Status::Data, copied / bytesPerFrame};
}

}  // namespace sonolet::service
