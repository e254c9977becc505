#ifndef SONOLET_HOST_BROWSER_OPTIONS_H
#define SONOLET_HOST_BROWSER_OPTIONS_H

#include "options/DeviceOptions.h"

#include <string>

// What the browser's command line asks for.
struct Options : DeviceOptions {
    bool help = false;
    bool version = false;
    std::string uri;  // of the page
    int width = 1280;
    int height = 720;
    std::string screenshot;  // a PNG file; empty: none
    double after = 0;        // seconds that the screenshot waits once the page is ready
    bool automation = false;

    // Throws std::invalid_argument with the line that the user is to see. A file's name becomes its
    // address; a folder, that of its index.html.
    static Options parse(int argc, char* const argv[]);
    static std::string helpText();
};

#endif
