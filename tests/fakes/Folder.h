#ifndef SONOLET_TESTS_FAKES_FOLDER_H
#define SONOLET_TESTS_FAKES_FOLDER_H

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

// A folder of files that goes away with it. What makes a file answers its path.
class Folder {
public:
    Folder() : folder(std::filesystem::temp_directory_path() / "sonolet-test-XXXXXX") {
        if (mkdtemp(folder.data()) == nullptr) {
            throw std::runtime_error("no folder for test files");
        }
    }
    ~Folder() { std::filesystem::remove_all(folder); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path(const std::string& name) const { return folder + '/' + name; }

    std::string write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    // Cut off, or filled with zeros that take no room on the disk.
    void resize(const std::string& name, std::int64_t size) const {
        if (truncate(path(name).c_str(), size) != 0) {
            throw std::runtime_error("no size " + std::to_string(size) + " for " + name);
        }
    }

private:
    std::string folder;
};

#endif
