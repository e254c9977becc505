#ifndef SONOLET_HOST_MEDIA_WAVFILE_H
#define SONOLET_HOST_MEDIA_WAVFILE_H

#include "WavFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

// A WAV file that takes the sound of one stream after another. Its header is right after every
// append, so that the file is valid whenever the process ends.
//
// Threads: any, one stream at a time. Errors: std::runtime_error naming the file and the reason.
class WavFile final {
public:
    // Ends a stream's use of the file.
    struct Release {
        void operator()(WavFile* file) const noexcept;
    };
    using Claim = std::unique_ptr<WavFile, Release>;

    // Closes all files and creates the first of the next ones, empty; none when `path` is empty.
    // REQUIRES: no file is claimed.
    static void createFirst(const std::string& path);

    // The first file that no stream writes to; when there is none, a new one beside the first.
    // REQUIRES: createFirst() got a path.
    static Claim claim();

    explicit WavFile(const std::string& path);
    ~WavFile();

    // A copy would write the same bytes of the file.
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;

    const std::string& path() const { return filePath; }

    // Of the samples in the file; nothing while there are none.
    std::optional<WavFormat> format() const;

    // The first samples set the format; later ones have it too. What was written before a failure
    // stays in the file.
    void append(const WavFormat& sampleFormat, const void* data, std::size_t size);

private:
    // The number of bytes written; when that is less than `size`, errno tells why.
    std::size_t write(const void* data, std::size_t size, std::uint64_t offset) const;

    // Constant after construction.
    const std::string filePath;
    const int descriptor;

    // State below is protected by mutex.
    mutable std::mutex mutex;
    WavFormat fileFormat;
    std::uint64_t dataSize = 0;
};

#endif
