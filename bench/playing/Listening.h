#ifndef SONOLET_BENCH_PLAYING_LISTENING_H
#define SONOLET_BENCH_PLAYING_LISTENING_H

#include "SoundServer.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

// What the benchmarks that play have in common: a tune whose every place is known, and how well it
// was heard. One thread.
namespace listening {

using Frames = SoundServer::Frames;

constexpr std::size_t rate = 44100;
constexpr std::ptrdiff_t known = 64;          // so many frames tell where one is in a tune
constexpr std::size_t measured = 120 * rate;  // what has to be heard of a long tune
constexpr std::size_t tuneLength = measured + 6 * rate;  // some of it is lost at either end

// Noise, no two places alike and never silent, as a FLAC file too; of two samples those bits that
// `bits` has. Quiet noise is coded as music is, loud noise as it stands.
Frames
writeTune(const std::string& file, std::size_t length, unsigned seed, std::uint32_t bits = ~0U);

// The links of a folder's music by file. `bin` is where the programs are.
std::map<std::string, std::string> linksOf(const std::string& bin, const std::string& folder);

// How often what the loudspeaker got stops to follow the tune: silence, a skip or a repetition.
// Throws std::runtime_error when less than `measured` of it was heard.
int breaksIn(const Frames& heard, const Frames& tune);

}  // namespace listening

#endif
