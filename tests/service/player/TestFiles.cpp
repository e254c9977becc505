#include "TestFiles.h"

#include <gst/gst.h>
#include <stdlib.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace sonolet::test {

Samples sweep(std::size_t frames) {
    Samples samples(frames * 2);
    double phase = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        phase += 2 * M_PI * (300.0 + 3000.0 * static_cast<double>(i) / 88200.0) / 44100.0;
        samples[2 * i] = static_cast<std::int16_t>(std::lround(12000 * std::sin(phase)));
        samples[2 * i + 1] = static_cast<std::int16_t>(std::lround(12000 * std::cos(phase)));
    }
    return samples;
}

Samples numbered(std::int16_t file, std::size_t frames) {
    Samples samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        samples[2 * i] = file;
        samples[2 * i + 1] = static_cast<std::int16_t>(i);
    }
    return samples;
}

namespace {

std::filesystem::path makeFolder() {
    std::string name = std::filesystem::temp_directory_path() / "sonolet-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder for test files");
    }
    return name;
}

void append(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) {
        bytes.push_back(static_cast<char>(value >> (8 * i)));
    }
}

}  // namespace

TestFiles::TestFiles() : folder(makeFolder()) {
    gst_init(nullptr, nullptr);
}

TestFiles::~TestFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string TestFiles::write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string
TestFiles::writeWav(const std::string& name, const Samples& samples, int channels, int rate) const {
    const auto size = static_cast<std::uint32_t>(samples.size() * 2);
    std::string bytes = "RIFF";
    append(bytes, 36 + size, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 1, 2);
    append(bytes, static_cast<std::uint32_t>(channels), 2);
    append(bytes, static_cast<std::uint32_t>(rate), 4);
    append(bytes, static_cast<std::uint32_t>(rate * channels * 2), 4);
    append(bytes, static_cast<std::uint32_t>(channels * 2), 2);
    append(bytes, 16, 2);
    bytes += "data";
    append(bytes, size, 4);
    for (const std::int16_t sample : samples) {
        append(bytes, static_cast<std::uint16_t>(sample), 2);
    }
    return write(name, bytes);
}

std::string TestFiles::encode(const std::string& name,
                              const Samples& samples,
                              const std::string& elements) const {
    const std::string source = writeWav("source.wav", samples);
    const std::string line = "filesrc location=" + source +
                             " ! wavparse ! audioconvert ! audioresample ! " + elements +
                             " ! filesink location=" + path(name);
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(line.c_str(), &error);
    if (error != nullptr) {
        throw std::runtime_error(error->message);
    }
    GstBus* bus = gst_element_get_bus(pipeline);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstMessage* message = gst_bus_timed_pop_filtered(
        bus, 30 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool done = message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS;
    if (message != nullptr) {
        gst_message_unref(message);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(pipeline);
    if (!done) {
        throw std::runtime_error("cannot encode: " + line);
    }
    return path(name);
}

void TestFiles::truncate(const std::string& name, double share) const {
    const auto size = static_cast<double>(std::filesystem::file_size(path(name)));
    std::filesystem::resize_file(path(name), static_cast<std::uintmax_t>(size * share));
}

}  // namespace sonolet::test
