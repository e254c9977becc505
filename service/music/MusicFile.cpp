#include "music/MusicFile.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

[[noreturn]] void fail() {
    throw UnreadableFile(std::generic_category().message(errno));
}

}  // namespace

MusicFile::MusicFile(std::string path, Links links)
    : location(std::move(path)),
      // O_NONBLOCK, for a pipe without a writer.
      file(open(location.c_str(),
                O_RDONLY | O_CLOEXEC | O_NONBLOCK | (links == Links::refuse ? O_NOFOLLOW : 0))) {
    if (file.get() < 0 && errno == ELOOP && links == Links::refuse) {
        throw UnreadableFile("it is a symbolic link");
    }
    if (file.get() < 0 || fstat(file.get(), &opened) != 0) {
        fail();
    }
    if (!S_ISREG(opened.st_mode)) {
        throw UnreadableFile("it is no regular file");
    }
}

std::size_t MusicFile::read(std::int64_t offset, void* to, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = pread(file.get(), static_cast<char*>(to) + done, count - done,
                                  offset + static_cast<std::int64_t>(done));
        if (got < 0 && errno != EINTR) {
            fail();
        }
        if (got == 0) {
            break;
        }
        done += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    return done;
}

std::string MusicFile::contents(std::int64_t largest) const {
    if (size() > largest) {
        throw UnreadableFile("it has more than " + std::to_string(largest >> 20) + " MiB");
    }
    std::string bytes(static_cast<std::size_t>(size()), '\0');
    bytes.resize(read(0, bytes.data(), bytes.size()));
    return bytes;
}

}  // namespace sonolet::service
