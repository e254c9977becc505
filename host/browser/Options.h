#ifndef SONOLET_HOST_BROWSER_OPTIONS_H
#define SONOLET_HOST_BROWSER_OPTIONS_H

#include "options/DeviceOptions.h"

#include <string>

// What the browser's command line asks for. A plain value, read once when the program starts and
// constant from there on; what of it concerns web processes goes to them as
// protocol::DeviceSettings.
struct Options : DeviceOptions {
    bool help = false;
    bool version = false;
    std::string uri;   // of the page
    int width = 1280;  // of the view, pixels of the page
    int height = 720;
    std::string screenshot;   // a PNG file; empty: none
    double after = 0;         // seconds that the screenshot waits once the page is ready
    bool automation = false;  // a WebDriver opens the views, and their pages

    // Throws std::invalid_argument with the line that the user is to see. A file's name becomes its
    // address; a folder, that of its index.html.
    static Options parse(int argc, char* const argv[]);
    // What --help prints: a line for each option, those of the device among them.
    static std::string helpText();
};

#endif
