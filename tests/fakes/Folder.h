#ifndef SONOLET_TESTS_FAKES_FOLDER_H
#define SONOLET_TESTS_FAKES_FOLDER_H

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

private:
    std::string folder;
};

#endif
