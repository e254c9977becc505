#include "browser/Browser.h"
#include "browser/Options.h"
#include "options/Findings.h"
#include "options/Limits.h"

#include <gtk/gtk.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

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
