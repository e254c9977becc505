#include "playing/Listening.h"

#include "Command.h"
#include "demo/Encoder.h"

#include <algorithm>
#include <iostream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace listening {

Frames writeTune(const std::string& file, std::size_t length, unsigned seed, std::uint32_t bits) {
    Frames tune(length);
    std::mt19937 random(seed);
    std::generate(tune.begin(), tune.end(), [&] { return (random() & bits) | 1; });
    sonolet::service::encode(tune.data(), tune.size() * sizeof(tune[0]),
                             "audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2",
                             "audioconvert ! flacenc", file);
    return tune;
}

std::map<std::string, std::string> linksOf(const std::string& bin, const std::string& folder) {
    // Of the listing, the first word and the last.
    std::map<std::string, std::string> links;
    std::istringstream listed(::run({bin + "/sonolet-index"}, {{"SONOLET_MUSIC", folder}}).output);
    for (std::string line; std::getline(listed, line);) {
        links[line.substr(line.rfind('\t') + 1)] = line.substr(0, line.find('\t'));
    }
    return links;
}

int breaksIn(const Frames& heard, const Frames& tune) {
    const auto isSound = [](std::uint32_t frame) { return frame != 0; };
    auto at = std::find_if(heard.begin(), heard.end(), isSound);
    const auto end = std::find_if(heard.rbegin(), heard.rend(), isSound).base();
    int breaks = -1;  // the beginning is none
    std::size_t followed = 0;
    while (at != end) {
        const auto some = std::min(at + known, end);
        const auto from = std::search(tune.begin(), tune.end(), at, some);
        auto next = some;
        if (from != tune.end()) {
            next = std::mismatch(at, end, from, tune.end()).first;
            followed += static_cast<std::size_t>(next - at);
            ++breaks;
        }
        if (next != end) {
            std::cerr << "a break after " << (next - heard.begin()) * 1000 / rate << " ms\n";
        }
        at = std::find_if(next, end, isSound);
    }
    if (followed < measured) {
        throw std::runtime_error("heard " + std::to_string(followed / rate) + " s of the tune");
    }
    return breaks;
}

}  // namespace listening
