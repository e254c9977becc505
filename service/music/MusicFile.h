#ifndef SONOLET_SERVICE_MUSIC_MUSIC_FILE_H
#define SONOLET_SERVICE_MUSIC_MUSIC_FILE_H

#include "music/Sound.h"
#include "store/Files.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace sonolet::service {

// An open file in the folder of music: the one door to its bytes.
//
// Anybody may change that folder at any moment, so the file is opened once and without waiting, and
// what was opened must be a regular file. It stays that file, whatever takes its name meanwhile.
//
// Threads: constant after construction, for any. Units: bytes.
class MusicFile final : public Sound {
public:
    enum class Links { follow, refuse };

    // Throws UnreadableFile.
    explicit MusicFile(std::string path, Links links = Links::follow);

    const std::string& path() const override { return location; }
    // What it was when it was opened.
    const struct stat& status() const { return opened; }
    std::int64_t size() const override { return opened.st_size; }

    std::size_t read(std::int64_t offset, void* to, std::size_t count) const override;

    // All of it. Throws UnreadableFile, also when it has more than `largest` bytes.
    std::string contents(std::int64_t largest) const;

private:
    const std::string location;
    const FileDescriptor file;
    struct stat opened {};
};

}  // namespace sonolet::service

#endif
