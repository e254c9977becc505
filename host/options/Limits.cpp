#include "options/Limits.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// A page that plays has about thirty.
constexpr std::size_t neededFiles = 48;
// The engine takes what it can get of 128 GiB, and aborts below 5.5.
constexpr std::size_t neededMebibytes = sizeof(void*) > 4 ? 6144 : 256;

void checkFiles() {
    std::vector<int> opened;
    for (int file = 0; opened.size() < neededFiles && (file = dup(STDERR_FILENO)) >= 0;) {
        opened.push_back(file);
    }
    for (const int file : opened) {
        close(file);
    }
    if (opened.size() < neededFiles) {
        throw std::runtime_error("only " + std::to_string(opened.size()) +
                                 " more files may be opened, and a page takes up to " +
                                 std::to_string(neededFiles) + " (ulimit -n sets the limit)");
    }
}

void checkAddressSpace() {
    constexpr std::size_t size = neededMebibytes << 20U;
    void* const space =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (space == MAP_FAILED) {
        throw std::runtime_error("the script engine takes " + std::to_string(neededMebibytes) +
                                 " MiB of address space, which are not to be had (ulimit -v sets "
                                 "the limit)");
    }
    munmap(space, size);
}

}  // namespace

void checkLimits() {
    checkFiles();
    checkAddressSpace();
}
