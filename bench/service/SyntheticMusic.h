#ifndef SONOLET_BENCH_SERVICE_SYNTHETICMUSIC_H
#define SONOLET_BENCH_SERVICE_SYNTHETICMUSIC_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace sonolet::bench {

// Words of which a few are used all the time and most hardly ever, as in titles.
class Words final {
public:
    explicit Words(std::uint32_t seed);

    // Between `least` and `most` of them.
    std::string some(int least, int most);

private:
    std::mt19937 random;
    std::vector<std::string> words;
    std::discrete_distribution<std::size_t> which;
};

struct SyntheticTrack {
    std::string title;
    std::string artist;
    std::string album;
    int year = 0;
    int number = 0;
    std::string folder;
    std::string file;
};

// The same tracks on every run: albums of eight to fourteen tracks, artists of whom some have one
// album and some have many.
std::vector<SyntheticTrack> syntheticTracks(std::size_t count);

// A folder of empty files and a catalogue that knows them, as a scan would have left it.
void writeCatalogue(const std::vector<SyntheticTrack>& tracks,
                    const std::string& musicFolder,
                    const std::string& catalogueFile);

// A folder of short files with tags: FLAC, Ogg Vorbis and MP3 in turn, with a cover picture in
// every other one. Throws std::runtime_error.
void writeTaggedFiles(const std::vector<SyntheticTrack>& tracks, const std::string& musicFolder);

}  // namespace sonolet::bench

#endif
