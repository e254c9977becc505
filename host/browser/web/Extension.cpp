// What WebKit loads into the browser's web process: the host of the plug-in there.

#include "browser/Protocol.h"
#include "browser/web/Frames.h"
#include "browser/web/WebKit.h"
#include "media/AudioOptions.h"
#include "options/DeviceOptions.h"
#include "options/Memory.h"

#include <dlfcn.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <utility>

// NOLINTBEGIN(readability-identifier-naming): WebKit's name
extern "C" __attribute__((visibility("default"))) void
webkit_web_extension_initialize_with_user_data(WebKitWebExtension* extension,
                                               const GVariant* userData);
// NOLINTEND(readability-identifier-naming)

namespace {

std::string ownFile() {
    Dl_info self = {};
    return dladdr(reinterpret_cast<void*>(&webkit_web_extension_initialize_with_user_data),
                  &self) != 0
               ? self.dli_fname
               : "";
}

// The plug-in looks for the media backend among the symbols of its process, which is WebKit's
// program; WebKit loads this library for itself alone. So it joins the symbols that all see.
void publishSymbols() {
    if (dlopen(ownFile().c_str(), RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD) == nullptr) {
        throw std::runtime_error("the media backend cannot be shown to the plug-in");
    }
}

// What this program's own browser has packed, or, in another's, what the environment says.
protocol::DeviceSettings settingsOf(const GVariant* userData) {
    auto* const packed = const_cast<GVariant*>(userData);
    if (packed != nullptr && g_variant_is_of_type(packed, protocol::settingsType)) {
        return protocol::unpack(packed);
    }
    DeviceOptions options;
    const char* const plugin = g_getenv("SONOLET_PLUGIN");
    options.plugin =
        plugin != nullptr
            ? plugin
            : std::filesystem::path(ownFile()).parent_path().parent_path() / "libSonolet.so.1.0";
    for (const auto& [variable, option] :
         {std::pair("SONOLET_AUDIO", "--audio"), {"SONOLET_SPEED", "--speed"}}) {
        if (const char* const value = g_getenv(variable)) {
            options.set(option, value);
        }
    }
    return {options.plugin, options.audio};
}

void send(WebKitWebExtension* extension, const char* name, const char* text) {
    webkit_web_extension_send_message_to_context(
        extension, webkit_user_message_new(name, g_variant_new_string(text)), nullptr, nullptr,
        nullptr);
}

// WebKit writes the message itself.
void messageSent(WebKitWebPage*, WebKitConsoleMessage* message, WebKitWebExtension* extension) {
    if (webkit_console_message_get_source(message) == WEBKIT_CONSOLE_MESSAGE_SOURCE_JAVASCRIPT &&
        webkit_console_message_get_level(message) == WEBKIT_CONSOLE_MESSAGE_LEVEL_ERROR) {
        send(extension, protocol::uncaught, "");
    }
}

void pageCreated(WebKitWebExtension* extension, WebKitWebPage* page, gpointer) {
    g_signal_connect(page, "console-message-sent", G_CALLBACK(messageSent), extension);
}

}  // namespace

void webkit_web_extension_initialize_with_user_data(WebKitWebExtension* extension,
                                                    const GVariant* userData) {
    // The terminal's Ctrl+C reaches all processes: the browser closes the page, and this one ends
    // after it.
    std::signal(SIGINT, SIG_IGN);
    memory::shareOneHeap();
    g_signal_connect(extension, "page-created", G_CALLBACK(pageCreated), nullptr);
    try {
        const protocol::DeviceSettings settings = settingsOf(userData);
        setAudioOptions(settings.audio);
        publishSymbols();
        // Never freed: the process ends while pages are open.
        static Frames* const frames = new Frames(settings.plugin, settings.audio.speed);
        (void)frames;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-web: %s\n", error.what());
        send(extension, protocol::failed, error.what());
    }
}
