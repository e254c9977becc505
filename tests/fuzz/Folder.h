#ifndef SONOLET_TESTS_FUZZ_FOLDER_H
#define SONOLET_TESTS_FUZZ_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// A folder for a fuzz target's files, until the process ends.
class Folder {
public:
    Folder() {
        std::string name = std::filesystem::temp_directory_path() / "sonolet-fuzz-XXXXXX";
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file(const std::string& name) const { return path / name; }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }

private:
    std::filesystem::path path;
};

#endif
