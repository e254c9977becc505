#ifndef SONOLET_SERVICE_DEMO_REPERTOIRE_H
#define SONOLET_SERVICE_DEMO_REPERTOIRE_H

#include "demo/Synth.h"

#include <string>
#include <vector>

namespace sonolet::service {

struct Colour {
    unsigned char red;
    unsigned char green;
    unsigned char blue;
};

struct DemoTrack {
    const char* title;
    const char* artist;
    int disc;
    int number;
    Score score;
};

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

    std::string folder() const { return std::string(artist) + '/' + title; }
    int discs() const { return tracks.back().disc; }
    // Relative to the album's folder.
    std::string fileName(const DemoTrack& track) const;
};

// Four albums by three artists who do not exist.
const std::vector<DemoAlbum>& repertoire();

}  // namespace sonolet::service

#endif
