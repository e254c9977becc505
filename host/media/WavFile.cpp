#include "WavFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace {

struct Entry {
    std::unique_ptr<WavFile> file;
    bool claimed = false;
};

struct Files {
    std::mutex mutex;
    std::vector<Entry> entries;  // the first has the path that was asked for
};

// Never freed: a stream may end in a static destructor.
Files& files() {
    static Files* const instance = new Files;
    return *instance;
}

std::runtime_error failure(const std::string& path, int error) {
    return std::runtime_error("cannot write " + path + ": " +
                              std::generic_category().message(error));
}

// "dir/x-2.wav" for "dir/x.wav" and 2.
std::string numbered(const std::string& path, std::size_t number) {
    const std::size_t name = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t end = dot == std::string::npos || dot <= name ? path.size() : dot;
    return path.substr(0, end) + "-" + std::to_string(number) + path.substr(end);
}

int create(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        throw failure(path, errno);
    }
    return descriptor;
}

}  // namespace

void WavFile::Release::operator()(WavFile* file) const noexcept {
    const std::lock_guard<std::mutex> lock(files().mutex);
    for (Entry& entry : files().entries) {
        if (entry.file.get() == file) {
            entry.claimed = false;
        }
    }
}

void WavFile::createFirst(const std::string& path) {
    std::vector<Entry> entries;
    if (!path.empty()) {
        entries.push_back({std::make_unique<WavFile>(path)});
    }
    const std::lock_guard<std::mutex> lock(files().mutex);
    files().entries = std::move(entries);
}

WavFile::Claim WavFile::claim() {
    const std::lock_guard<std::mutex> lock(files().mutex);
    std::vector<Entry>& entries = files().entries;
    for (Entry& entry : entries) {
        if (!entry.claimed) {
            entry.claimed = true;
            return Claim(entry.file.get());
        }
    }
    const std::string path = numbered(entries.at(0).file->path(), entries.size() + 1);
    entries.push_back({std::make_unique<WavFile>(path), true});
    return Claim(entries.back().file.get());
}

WavFile::WavFile(const std::string& path) : filePath(path), descriptor(create(path)) {
    if (write(fileFormat.header(0).data(), WavFormat::headerSize, 0) < WavFormat::headerSize) {
        const int error = errno;
        ::close(descriptor);
        throw failure(filePath, error);
    }
}

WavFile::~WavFile() {
    ::close(descriptor);
}

std::optional<WavFormat> WavFile::format() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return dataSize == 0 ? std::nullopt : std::optional<WavFormat>(fileFormat);
}

void WavFile::append(const WavFormat& sampleFormat, const void* data, std::size_t size) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (dataSize == 0) {
        fileFormat = sampleFormat;
    } else if (!(sampleFormat == fileFormat)) {
        throw std::runtime_error("cannot write " + filePath + ": the sound changed its format");
    }
    // A full disk may take a part; the header then tells of that part.
    const std::size_t written = write(data, size, WavFormat::headerSize + dataSize);
    const int error = errno;
    dataSize += written;
    if (write(fileFormat.header(dataSize).data(), WavFormat::headerSize, 0) <
        WavFormat::headerSize) {
        throw failure(filePath, errno);
    }
    if (written < size) {
        throw failure(filePath, error);
    }
}

std::size_t WavFile::write(const void* data, std::size_t size, std::uint64_t offset) const {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    std::size_t written = 0;
    while (written < size) {
        const ssize_t count = ::pwrite(descriptor, bytes + written, size - written,
                                       static_cast<off_t>(offset + written));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    return written;
}
