#include "SoundDevice.h"

#include "LogLine.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <stdexcept>

namespace {

// A busy machine may come late by that much before there is a gap.
constexpr gint64 bufferTime = 1000000;  // microseconds

// A sound server that nobody plays to has given away up to two seconds of silence. What comes next
// waits until they are over, and who records the server misses what was put in place of their last
// tenths. One client that asks for short blocks keeps the server close to the present, even if it
// never plays; a stream's own buffer cannot be that short. It stays until the process ends.
constexpr char wakeClient[] =
    "audiotestsrc wave=silence ! pulsesink buffer-time=160000 latency-time=40000";
constexpr gint64 longestBlock = 2 * G_TIME_SPAN_SECOND;
constexpr GstClockTime asleepLead = 400 * GST_MSECOND;  // the blocks of all that connect by then
constexpr GstClockTime awakeLead = 50 * GST_MSECOND;    // one of the client's, and some

GstElement* client = nullptr;  // (owned) never freed
// When it came, on the monotonic clock; 0: there is none.
std::atomic<gint64> wokenAt{0};

void keepServerAwake() {
    static std::once_flag once;
    std::call_once(once, [] {
        GError* error = nullptr;
        client = gst_parse_launch(wakeClient, &error);
        g_clear_error(&error);
        // Without it, pauses between streams are longer.
        if (client != nullptr &&
            gst_element_set_state(client, GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE) {
            wokenAt = g_get_monotonic_time();
        }
    });
}

// The real sink within an automatic one.
GstElement* deviceWithin(GstElement* sink) {
    GST_OBJECT_LOCK(sink);
    GList* const children = GST_BIN_CHILDREN(sink);
    GstElement* const device = children != nullptr ? GST_ELEMENT(children->data) : nullptr;
    GST_OBJECT_UNLOCK(sink);
    return device;
}

bool isMadeBy(GstElement* device, const char* name) {
    const GstElementFactory* const factory = gst_element_get_factory(device);
    return factory != nullptr && std::strcmp(GST_OBJECT_NAME(factory), name) == 0;
}

}  // namespace

GstElement* openSoundDevice() {
    GstElement* sink = gst_element_factory_make("autoaudiosink", nullptr);
    if (sink == nullptr) {
        throw std::runtime_error(
            "element autoaudiosink is missing (package gstreamer1.0-plugins-good)");
    }
    const bool works = gst_element_set_state(sink, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
    GstElement* const device = works ? deviceWithin(sink) : nullptr;
    // "fakesink" is its answer when it finds none.
    if (device != nullptr && !isMadeBy(device, "fakesink")) {
        if (g_object_class_find_property(G_OBJECT_GET_CLASS(device), "buffer-time") != nullptr) {
            g_object_set(device, "buffer-time", bufferTime, nullptr);
        }
        if (isMadeBy(device, "pulsesink")) {
            keepServerAwake();
        }
        return sink;
    }
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_object_unref(gst_object_ref_sink(sink));
    static std::once_flag once;
    std::call_once(once, [] {
        logLine("no sound device works here, playing without sound (wav:FILE keeps the sound)");
    });
    return nullptr;
}

GstClockTime soundDeviceLead() {
    const gint64 woken = wokenAt;
    if (woken == 0) {
        return 0;
    }
    return g_get_monotonic_time() - woken < longestBlock ? asleepLead : awakeLead;
}
