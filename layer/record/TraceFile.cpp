#include "record/TraceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace {

// With the reason in errno.
void tellEnd(const std::string& path) {
    const std::string why = std::generic_category().message(errno);
    std::fprintf(stderr, "libSonolet-layer: %s: %s; the trace ends here\n", path.c_str(),
                 why.c_str());
}

}  // namespace

TraceFile::TraceFile(const Settings& settings)
    : path(settings.traceFile), mostBytes(settings.traceBytes / 2) {
    open();
    if (descriptor < 0) {
        throw std::runtime_error("SONOLET_TRACE: " + path + ": " +
                                 std::generic_category().message(errno));
    }
}

TraceFile::~TraceFile() {
    close();
}

// What passes between a page and its music service is nobody else's to read.
// Another process that writes the same trace has its file locked; then this one has a file of its
// own beside it.
void TraceFile::open() {
    descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        path += "." + std::to_string(getpid());
        descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (descriptor >= 0) {
            flock(descriptor, LOCK_EX | LOCK_NB);  // for readers; the name is this process's alone
        }
    }
    if (descriptor >= 0 && ftruncate(descriptor, 0) != 0) {
        // A pipe or a terminal: what is written is added.
        errno = 0;
    }
    written = 0;
}

void TraceFile::write(const std::string& lines) {
    const char* from = lines.data();
    std::size_t left = descriptor >= 0 ? lines.size() : 0;
    while (left > 0) {
        const ssize_t done = ::write(descriptor, from, left);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done < 0) {
            tellEnd(path);
            close();
            return;
        }
        from += done;
        left -= static_cast<std::size_t>(done);
        written += static_cast<std::size_t>(done);
    }
}

bool TraceFile::turn() {
    if (descriptor < 0 || written < mostBytes) {
        return false;
    }
    write("{}]\n");
    if (descriptor < 0) {
        return false;
    }
    close();
    std::rename(path.c_str(), (path + ".old").c_str());
    open();
    if (descriptor < 0) {
        tellEnd(path);
    }
    return descriptor >= 0;
}

void TraceFile::close() {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}
