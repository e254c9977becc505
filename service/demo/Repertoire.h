#ifndef SONOLET_SERVICE_DEMO_REPERTOIRE_H
#define SONOLET_SERVICE_DEMO_REPERTOIRE_H

#include "demo/Synth.h"

#include <string>
#include <vector>

namespace sonolet::service {

// As in a picture: 0 is dark.
struct Colour {
    unsigned char red;
    unsigned char green;
    unsigned char blue;
};

// One tune of the demo library, with what its tags will say. Texts are literals.
struct DemoTrack {
    const char* title;
    const char* artist;
    int disc;
    int number;
    Score score;
};

// An album of the demo library: its tags, its picture's two colours, and which of the formats and
// ways to keep a cover it is there to show.
struct DemoAlbum {
    const char* title;
    const char* artist;
    int year;
    bool compilation;
    bool lossless;      // FLAC, else Ogg Vorbis
    bool coverBesides;  // cover.jpg in the folder, else in each file
    Colour sky;
    Colour ground;
    std::vector<DemoTrack> tracks;

    // Relative to the library.
    std::string folder() const { return std::string(artist) + '/' + title; }
    int discs() const { return tracks.back().disc; }
    // Relative to the album's folder.
    std::string fileName(const DemoTrack& track) const;
};

// Four albums by three artists who do not exist. The same on every machine: tests and the examples
// of the documentation know their links.
const std::vector<DemoAlbum>& repertoire();

}  // namespace sonolet::service

#endif
