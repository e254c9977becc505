#ifndef SONOLET_HOST_ENGINE_PLUGINLIBRARY_H
#define SONOLET_HOST_ENGINE_PLUGINLIBRARY_H

#include "jsplugin.h"

#include <string>

// A loaded plug-in and what it offers.
//
// It is never unloaded: its threads and static objects may outlive every document. A path may be
// loaded again; the plug-in is then asked for its capabilities once more.
class PluginLibrary final {
public:
    // Throws std::runtime_error that names the file and the reason.
    explicit PluginLibrary(const std::string& path);

    const struct jsplugin_capabilities& capabilities() const noexcept { return *offered; }

private:
    struct jsplugin_capabilities* offered = nullptr;  // the plug-in's
};

#endif
