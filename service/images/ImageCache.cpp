#include "images/ImageCache.h"

#include "store/Files.h"
#include "store/Id.h"

#include <dirent.h>
#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

namespace sonolet::service {

namespace {

constexpr std::uint64_t megabyte = 1 << 20;
constexpr std::uint64_t largestAutomatic = 256 * megabyte;
constexpr std::uint64_t largestImage = 8 * megabyte;
constexpr std::string_view imageEnding = ".jpg";
constexpr std::time_t longestWrite = 60;  // seconds
constexpr std::string_view firstBytes = "\xff\xd8";
constexpr std::string_view lastBytes = "\xff\xd9";

struct CachedFile {
    timespec used;
    std::uint64_t size;
    std::string name;
};

bool operator<(const CachedFile& left, const CachedFile& right) {
    return std::tie(left.used.tv_sec, left.used.tv_nsec, left.name) <
           std::tie(right.used.tv_sec, right.used.tv_nsec, right.name);
}

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// A power cut may leave a file that is empty or ends early.
bool isWhole(std::string_view jpeg) {
    return jpeg.size() > firstBytes.size() + lastBytes.size() &&
           jpeg.substr(0, firstBytes.size()) == firstBytes &&
           jpeg.substr(jpeg.size() - lastBytes.size()) == lastBytes;
}

// The kernel's own stamps are too coarse to order uses by.
void markUsed(int file) {
    timespec times[2] = {};
    clock_gettime(CLOCK_REALTIME, &times[0]);
    times[1] = times[0];
    // Without it the image goes earlier than it should.
    static_cast<void>(futimens(file, times));
}

// A file that is still being written has another ending, and so has what a process that died left.
bool isBeingWritten(const CachedFile& file) {
    const bool finished = file.name.size() > imageEnding.size() &&
                          file.name.compare(file.name.size() - imageEnding.size(),
                                            imageEnding.size(), imageEnding) == 0;
    return !finished && std::time(nullptr) - file.used.tv_sec < longestWrite;
}

std::vector<CachedFile> filesIn(const std::string& path) {
    std::vector<CachedFile> files;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), &closedir);
    if (folder == nullptr) {
        return files;
    }
    // No other thread reads this stream.
    while (const dirent* entry = readdir(folder.get())) {  // NOLINT(concurrency-mt-unsafe)
        struct stat status {};
        if (fstatat(dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            CachedFile file{status.st_mtim, static_cast<std::uint64_t>(status.st_size),
                            entry->d_name};
            if (!isBeingWritten(file)) {
                files.push_back(std::move(file));
            }
        }
    }
    return files;
}

}  // namespace

void ImageCache::setLimit(std::uint64_t newMegabytes) {
    megabytes = newMegabytes;
    shrink();
}

std::optional<std::string> ImageCache::find(const std::string& id) {
    const FileDescriptor file(open(path(id).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (file.get() < 0) {
        return std::nullopt;
    }
    std::optional<std::string> jpeg = readFile(file.get(), largestImage);
    if (!jpeg || !isWhole(*jpeg)) {
        // Another process may have been faster.
        static_cast<void>(unlink(path(id).c_str()));
        return std::nullopt;
    }
    markUsed(file.get());
    return jpeg;
}

void ImageCache::put(const std::string& id, const std::string& jpeg) {
    if (g_mkdir_with_parents(folder.c_str(), S_IRWXU) != 0) {
        fail("cannot make the folder " + folder);
    }
    std::string temporary = path(id) + ".XXXXXX";
    const FileDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.get() < 0) {
        fail("cannot write in " + folder);
    }
    const bool written = writeFile(file.get(), jpeg);
    if (written) {
        markUsed(file.get());
    }
    if (!written || std::rename(temporary.c_str(), path(id).c_str()) != 0) {
        const int why = errno;
        static_cast<void>(unlink(temporary.c_str()));
        errno = why;
        fail("cannot write " + path(id));
    }
    if (jpeg.size() > spaceLeft) {
        shrink();
    } else {
        spaceLeft -= jpeg.size();
    }
}

std::string ImageCache::path(const std::string& id) const {
    return folder + '/' + hex(id).append(imageEnding);
}

std::uint64_t ImageCache::limit(std::uint64_t used) const {
    if (megabytes > 0) {
        return std::min<std::uint64_t>(megabytes, UINT64_MAX / megabyte) * megabyte;
    }
    struct statvfs disk {};
    if (statvfs(folder.c_str(), &disk) != 0) {
        return largestAutomatic;
    }
    return std::min(largestAutomatic, (disk.f_bavail * disk.f_frsize + used) / 10);
}

void ImageCache::shrink() {
    std::vector<CachedFile> files = filesIn(folder);
    std::uint64_t used = 0;
    for (const CachedFile& file : files) {
        used += file.size;
    }
    const std::uint64_t allowed = limit(used);
    if (used > allowed) {
        std::sort(files.begin(), files.end());
        // Some room is made at once, so that not every image that comes has to make its own.
        for (const CachedFile& file : files) {
            if (used <= allowed - allowed / 8) {
                break;
            }
            // What another process has taken away makes room as well.
            if (unlink((folder + '/' + file.name).c_str()) == 0 || errno == ENOENT) {
                used -= file.size;
            }
        }
    }
    spaceLeft = used < allowed ? (allowed - used) / 2 : 0;
}

}  // namespace sonolet::service
