#ifndef SONOLET_SERVICE_STORE_FILES_H
#define SONOLET_SERVICE_STORE_FILES_H

#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>

namespace sonolet::service {

static_assert(sizeof(off_t) == 8 && sizeof(time_t) == 8, "files over 2 GiB, dates after 2038");

// Owns an open file, or none, and closes it. It is not opened here, so that whoever opens says with
// which flags, and looks at errno at once.
//
// Threads: constant, for any.
class FileDescriptor final {
public:
    explicit FileDescriptor(int openFile) : number(openFile) {}
    ~FileDescriptor() {
        if (number >= 0) {
            close(number);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    // Borrowed: for as long as this lives. Negative: there is no open file.
    int get() const { return number; }

private:
    const int number;  // negative for none
};

// A lock that processes, and whoever else opens its file, have one at a time.
//
// Threads: constant, for any; the lock is the object's and not a thread's.
class FileLock final {
public:
    enum class Wait { no, yes };

    // Makes the file. Throws std::system_error when that is not possible.
    FileLock(const std::string& path, Wait wait);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // False: somebody else has it.
    bool isHeld() const { return held; }

private:
    const FileDescriptor file;
    const bool held;
};

// All of a regular file from where it stands; nothing for any other kind, one larger than `largest`
// bytes, or a failure. A file that becomes shorter meanwhile gives what was there. Blocks as long
// as the disk does.
std::optional<std::string> readFile(int file, std::uint64_t largest);

// All of the bytes, however many calls that takes. False with errno for what could not be written;
// a part of them may have been.
bool writeFile(int file, const std::string& bytes);

}  // namespace sonolet::service

#endif
