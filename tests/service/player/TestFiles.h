#ifndef SONOLET_TESTS_SERVICE_PLAYER_TESTFILES_H
#define SONOLET_TESTS_SERVICE_PLAYER_TESTFILES_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace sonolet::test {

// Interleaved 16-bit stereo at 44,100 Hz.
using Samples = std::vector<std::int16_t>;

// A rising tone: every place in it looks different, so that an offset shows.
Samples sweep(std::size_t frames);

// Every frame tells its file and its place: left is `file`, right counts frames.
Samples numbered(std::int16_t file, std::size_t frames);

// A folder of sound files that goes away with it.
class TestFiles final {
public:
    TestFiles();
    ~TestFiles();

    TestFiles(const TestFiles&) = delete;
    TestFiles& operator=(const TestFiles&) = delete;

    std::string path(const std::string& name) const { return folder / name; }
    std::string write(const std::string& name, const std::string& bytes) const;
    std::string writeWav(const std::string& name,
                         const Samples& samples,
                         int channels = 2,
                         int rate = 44100) const;

    // Runs the samples through GStreamer elements ("flacenc", "vorbisenc ! oggmux").
    std::string
    encode(const std::string& name, const Samples& samples, const std::string& elements) const;

    // Keeps the first `share` of a file.
    void truncate(const std::string& name, double share) const;

private:
    const std::filesystem::path folder;
};

}  // namespace sonolet::test

#endif
