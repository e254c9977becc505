#include "validate/Clock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

namespace {

class SystemClock final : public Clock {
public:
    std::uint64_t now() const override {
        timespec time = {};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return static_cast<std::uint64_t>(time.tv_sec) * 1000000000U +
               static_cast<std::uint64_t>(time.tv_nsec);
    }

    // A kernel that does not tell leaves 0.
    std::uint64_t busy() const override {
        char path[64];
        std::snprintf(path, sizeof path, "/proc/self/task/%ld/schedstat", syscall(SYS_gettid));
        std::FILE* const file = std::fopen(path, "re");
        unsigned long long ran = 0;
        unsigned long long waited = 0;
        if (file != nullptr) {
            const int read = std::fscanf(file, "%20llu %20llu", &ran, &waited);
            std::fclose(file);
            if (read != 2) {
                return 0;
            }
        }
        return ran + waited;
    }
};

}  // namespace

const Clock& systemClock() {
    static const SystemClock& clock = *new SystemClock;  // never freed: threads go on
    return clock;
}
