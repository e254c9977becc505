#include "demo/Encoder.h"

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <memory>
#include <stdexcept>

namespace sonolet::service {

namespace {

struct Release {
    void operator()(gpointer object) const { gst_object_unref(object); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GError* error) const { g_error_free(error); }
};

template <typename T>
using Handle = std::unique_ptr<T, Release>;

// Stops the elements however the work ends.
struct Stop {
    void operator()(GstElement* pipeline) const {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};

}  // namespace

void encode(const void* data,
            std::size_t size,
            const std::string& caps,
            const std::string& elements,
            const std::string& path) {
    gst_init(nullptr, nullptr);
    const std::string line = "appsrc name=in format=time ! " + elements + " ! filesink name=out";
    GError* refusal = nullptr;
    GstElement* parsed =
        gst_parse_launch_full(line.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &refusal);
    const Handle<GError> error(refusal);
    if (parsed == nullptr) {
        throw std::runtime_error("cannot encode by \"" + elements + "\": " + error->message +
                                 " (the encoders are in gstreamer1.0-plugins-base and "
                                 "gstreamer1.0-plugins-good)");
    }
    const std::unique_ptr<GstElement, Stop> pipeline(parsed);
    const Handle<GstElement> in(gst_bin_get_by_name(GST_BIN(parsed), "in"));
    const Handle<GstElement> out(gst_bin_get_by_name(GST_BIN(parsed), "out"));
    const Handle<GstCaps> form(gst_caps_from_string(caps.c_str()));
    g_object_set(in.get(), "caps", form.get(), nullptr);
    g_object_set(out.get(), "location", path.c_str(), nullptr);

    gst_element_set_state(parsed, GST_STATE_PLAYING);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_fill(buffer, 0, data, size);
    GST_BUFFER_PTS(buffer) = 0;
    gst_app_src_push_buffer(GST_APP_SRC(in.get()), buffer);
    gst_app_src_end_of_stream(GST_APP_SRC(in.get()));

    const Handle<GstBus> bus(gst_element_get_bus(parsed));
    const Handle<GstMessage> message(gst_bus_timed_pop_filtered(
        bus.get(), GST_CLOCK_TIME_NONE,
        static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
        GError* raw = nullptr;
        gst_message_parse_error(message.get(), &raw, nullptr);
        const Handle<GError> cause(raw);
        throw std::runtime_error(path + ": " + cause->message);
    }
}

}  // namespace sonolet::service
