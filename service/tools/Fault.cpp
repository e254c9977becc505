// sonolet-fault: says what is wrong with a text for SONOLET_FAULT, and where.

#include "faults/Faults.h"
#include "tools/About.h"

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using namespace sonolet::service;

constexpr char usage[] =
    "usage: sonolet-fault [--] SPEC   check a text for SONOLET_FAULT, as offline@5s-12s,token@20s\n"
    "       sonolet-fault --version\n"
    "\n"
    "Says what is wrong with it and where, and nothing when it can be read.\n";

}  // namespace

int main(int argc, char** argv) {
    if (tellsAbout("sonolet-fault", usage, argc, argv)) {
        return 0;
    }
    const int spec = argc > 1 && std::string(argv[1]) == "--" ? 2 : 1;
    if (argc != spec + 1) {
        std::cerr << usage;
        return 2;
    }
    try {
        const Faults readable(argv[spec]);
        return 0;
    } catch (const std::invalid_argument& error) {
        std::cerr << "sonolet-fault: " << error.what() << '\n';
        return 2;
    }
}
