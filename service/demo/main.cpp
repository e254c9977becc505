#include "demo/DemoLibrary.h"
#include "tools/About.h"

#include <exception>
#include <iostream>

namespace {

constexpr char usage[] =
    "usage: sonolet-demo DIR\n"
    "       sonolet-demo --version\n"
    "\n"
    "Makes the demo library in DIR: twelve short tunes by three invented artists\n"
    "on four albums, as FLAC and Ogg Vorbis. One that stands is left alone.\n";

}  // namespace

// Makes the demo library: twelve short tunes with tags and covers.
int main(int argc, char** argv) {
    if (sonolet::service::tellsAbout("sonolet-demo", usage, argc, argv)) {
        return 0;
    }
    if (argc != 2 || argv[1][0] == '-' || argv[1][0] == '\0') {
        std::cerr << usage;
        return 2;
    }
    try {
        if (sonolet::service::makeDemoLibrary(argv[1])) {
            std::cout << "made the demo library in " << argv[1] << "\n";
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-demo: " << error.what() << "\n";
        return 1;
    }
}
