#ifndef SONOLET_BENCH_PROGRAM_H
#define SONOLET_BENCH_PROGRAM_H

#include <errno.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

// What the programs that measure have in common.
namespace figures {

// The main function of one: runs `measure`, and says on standard error what it throws. The exit
// code.
template <class Measure>
int runProgram(const Measure& measure) {
    try {
        measure();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, error.what());
        return 1;
    }
}

// The same for groups of figures: those named on its command line, in the order of the list.
inline int runGroups(int argc,
                     char** argv,
                     const std::vector<std::pair<std::string, std::function<void()>>>& groups) {
    return runProgram([&] {
        for (const auto& [name, measure] : groups) {
            for (int i = 1; i < argc; ++i) {
                if (name == argv[i]) {
                    measure();
                }
            }
        }
    });
}

// A fresh folder of this process, which goes with the object. Errors: std::filesystem's when there
// can be none; what cannot be removed stays.
class WorkFolder final {
public:
    explicit WorkFolder(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path())
        : folder(parent / (program_invocation_short_name + ('-' + std::to_string(getpid())))) {
        std::filesystem::create_directories(folder);
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::string& path() const { return folder.native(); }

private:
    const std::filesystem::path folder;
};

}  // namespace figures

#endif
