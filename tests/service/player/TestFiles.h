#ifndef SONOLET_TESTS_SERVICE_PLAYER_TESTFILES_H
#define SONOLET_TESTS_SERVICE_PLAYER_TESTFILES_H

#include "../../fakes/Folder.h"
#include "../../fakes/Test.h"
#include "../../fakes/Wav.h"

#include <gst/gst.h>

namespace sonolet::test {

// Interleaved 16-bit stereo at 44,100 Hz.
using Samples = std::vector<std::int16_t>;

// A rising tone: every place in it looks different, so that an offset shows.
inline Samples sweep(std::size_t frames) {
    Samples samples;
    double phase = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        phase += 2 * M_PI * (300.0 + 3000.0 * static_cast<double>(i) / 88200.0) / 44100.0;
        samples.push_back(static_cast<std::int16_t>(std::lround(12000 * std::sin(phase))));
        samples.push_back(static_cast<std::int16_t>(std::lround(12000 * std::cos(phase))));
    }
    return samples;
}

// Every frame tells its file and its place: left is `file`, right counts frames.
inline Samples numbered(std::int16_t file, std::size_t frames) {
    Samples samples;
    for (std::size_t i = 0; i < frames; ++i) {
        samples.insert(samples.end(), {file, static_cast<std::int16_t>(i)});
    }
    return samples;
}

class TestFiles final : public Folder {
public:
    TestFiles() { gst_init(nullptr, nullptr); }

    std::string writeWav(const std::string& name,
                         const Samples& samples,
                         std::uint32_t channels = 2,
                         std::uint32_t rate = 44100) const {
        const std::string bytes(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
        return write(name, wavFile(bytes, channels, rate));
    }

    // Runs the samples through GStreamer elements ("flacenc", "vorbisenc ! oggmux").
    std::string
    encode(const std::string& name, const Samples& samples, const std::string& elements) const {
        const std::string line = "filesrc location=" + writeWav(name + ".source", samples) +
                                 " ! wavparse ! audioconvert ! audioresample ! " + elements +
                                 " ! filesink location=" + path(name);
        GstElement* pipeline = gst_parse_launch(line.c_str(), nullptr);
        GstBus* bus = gst_element_get_bus(pipeline);
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        constexpr auto types = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
        GstMessage* message = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, types);
        const bool done = message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS;
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_clear_message(&message);
        gst_object_unref(bus);
        gst_object_unref(pipeline);
        return done ? path(name) : throw std::runtime_error("cannot encode: " + line);
    }
};

}  // namespace sonolet::test

#endif
