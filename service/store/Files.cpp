#include "store/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace sonolet::service {

FileLock::FileLock(const std::string& path, Wait wait)
    : file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR)),
      held(file.get() >= 0 &&
           flock(file.get(), wait == Wait::yes ? LOCK_EX : LOCK_EX | LOCK_NB) == 0) {
    if (!held && errno != EWOULDBLOCK && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

std::optional<std::string> readFile(int file, std::uint64_t largest) {
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::uint64_t>(status.st_size) > largest) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = read(file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;  // it became shorter meanwhile
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(done);
    return bytes;
}

bool writeFile(int file, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return true;
}

}  // namespace sonolet::service
