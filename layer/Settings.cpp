#include "Settings.h"

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr unsigned long usualMebibytes = 64;
constexpr unsigned long mostMebibytes = 4095;  // of 32-bit machines

std::string variable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the layer is loaded before anybody changes it
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isSet(const char* name) {
    const std::string value = variable(name);
    return !value.empty() && value != "0";
}

}  // namespace

Settings Settings::fromEnvironment() {
    Settings settings;
    settings.plugin = variable("SONOLET_LAYER_PLUGIN");
    settings.traceFile = variable("SONOLET_TRACE");
    settings.findingsFile = variable("SONOLET_FINDINGS");
    settings.isReplayable = isSet("SONOLET_TRACE_REPLAYABLE");
    settings.validates = isSet("SONOLET_VALIDATE");

    const std::string size = variable("SONOLET_TRACE_SIZE");
    char* end = nullptr;
    const unsigned long mebibytes =
        size.empty() ? usualMebibytes : std::strtoul(size.c_str(), &end, 10);
    if ((end != nullptr && *end != '\0') || mebibytes < 1 || mebibytes > mostMebibytes) {
        throw std::runtime_error("SONOLET_TRACE_SIZE takes a number of MiB from 1 to 4095, not \"" +
                                 size + '"');
    }
    settings.traceBytes = mebibytes << 20U;
    return settings;
}

std::string Settings::pluginBeside(const std::string& layer) const {
    if (!plugin.empty()) {
        // With a slash, or the loader would look for a bare name among the system's libraries.
        return plugin.find('/') == std::string::npos ? "./" + plugin : plugin;
    }
    const std::size_t slash = layer.rfind('/');
    return (slash == std::string::npos ? "." : layer.substr(0, slash)) + "/libSonolet.so.1.0";
}
