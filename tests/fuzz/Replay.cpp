// Gives each file of the folders on the command line to a fuzz target, for compilers without a
// fuzzer.

#include "Input.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

int main(int count, char** arguments) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < count; ++i) {
        std::copy(std::filesystem::directory_iterator(arguments[i]),
                  std::filesystem::directory_iterator(), std::back_inserter(files));
    }
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << files.size() << " inputs\n";
    return files.empty() ? 1 : 0;
}
