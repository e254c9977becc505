#include "browser/Browser.h"
#include "browser/Options.h"
#include "options/Findings.h"
#include "options/Limits.h"

#include <gtk/gtk.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace {

// A graphics processor that draws, not just a screen's memory.
bool hasGraphicsProcessor() {
    namespace fs = std::filesystem;
    std::error_code none;
    for (const fs::directory_entry& device : fs::directory_iterator("/dev/dri", none)) {
        if (device.path().filename().string().compare(0, 7, "renderD") == 0) {
            return true;
        }
    }
    return fs::exists("/dev/nvidiactl", none);
}

// Without one, WebKit has an emulation of it put each frame together, which takes several times
// as long as to paint what has changed. WebKit's own variable says otherwise.
void paintWithoutGraphicsProcessor() {
    if (!hasGraphicsProcessor()) {
        setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", 0);  // NOLINT(concurrency-mt-unsafe)
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        const Options options = Options::parse(argc, argv);
        if (options.help) {
            std::fputs(Options::helpText().c_str(), stdout);
            return 0;
        }
        if (options.version) {
            std::puts("sonolet-browser " SONOLET_VERSION);
            return 0;
        }
        checkLimits();
        options.setEnvironment();
        paintWithoutGraphicsProcessor();
        const auto findings = options.validates ? std::make_unique<Findings>() : nullptr;
        if (!gtk_init_check(nullptr, nullptr)) {
            throw std::runtime_error("no display: neither DISPLAY nor WAYLAND_DISPLAY leads to one "
                                     "(xvfb-run brings its own)");
        }
        return Browser(options, findings.get()).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-browser: %s\n", error.what());
        return 2;
    }
}
