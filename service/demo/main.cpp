#include "demo/DemoLibrary.h"

#include <cstring>
#include <exception>
#include <iostream>

// Makes the demo library: twelve short tunes with tags and covers.
int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::cout << "usage: sonolet-demo DIR\n"
                     "Makes the demo library in DIR: twelve short tunes by three invented artists\n"
                     "on four albums, as FLAC and Ogg Vorbis. One that stands is left alone.\n";
        return 0;
    }
    if (argc != 2 || argv[1][0] == '-' || argv[1][0] == '\0') {
        std::cerr << "usage: sonolet-demo DIR\n";
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
