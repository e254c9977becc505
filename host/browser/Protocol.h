#ifndef SONOLET_HOST_BROWSER_PROTOCOL_H
#define SONOLET_HOST_BROWSER_PROTOCOL_H

#include "media/AudioOptions.h"

#include <glib.h>

#include <string>

// What the browser and its web processes say to each other: WebKit's user messages, which arrive in
// the order in which they were sent, on the main thread of each, and are lost when a side dies.
namespace protocol {

// The web process to the browser, each with a string.
constexpr const char* failed = "failed";      // it cannot work; why
constexpr const char* uncaught = "uncaught";  // a page had an exception; empty: WebKit tells it

// The browser to each web process, as it starts. Music and log level are in the environment.
struct DeviceSettings {
    std::string plugin;
    AudioOptions audio;
};

inline const GVariantType* const settingsType = G_VARIANT_TYPE("(sisd)");

// The settings as what WebKit hands to a web process, and back: fields in a fixed order, for two
// programs of one build. The first is a floating reference; the second copies what it reads.
// REQUIRES: `packed` came from pack().
inline GVariant* pack(const DeviceSettings& settings) {
    return g_variant_new("(sisd)", settings.plugin.c_str(), static_cast<int>(settings.audio.sink),
                         settings.audio.wavPath.c_str(), settings.audio.speed);
}

inline DeviceSettings unpack(GVariant* packed) {
    const char* plugin = nullptr;
    const char* wavPath = nullptr;
    int sink = 0;
    DeviceSettings settings;
    g_variant_get(packed, "(&si&sd)", &plugin, &sink, &wavPath, &settings.audio.speed);
    settings.plugin = plugin;
    settings.audio.sink = static_cast<AudioOptions::Sink>(sink);
    settings.audio.wavPath = wavPath;
    return settings;
}

}  // namespace protocol

#endif
