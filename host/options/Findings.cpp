#include "options/Findings.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace {

constexpr char variable[] = "SONOLET_FINDINGS";
constexpr std::size_t mostTold = 10;  // of a rule, by the layer of one process

}  // namespace

Findings::Findings() {
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
    if (const char* const given = std::getenv(variable); given != nullptr && *given != '\0') {
        path = given;
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        read = error ? 0 : static_cast<std::size_t>(size);
        return;
    }
    path = (std::filesystem::temp_directory_path() / "sonolet-findings-XXXXXX").string();
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0) {
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    }
    close(descriptor);
    isOwn = true;
    setenv(variable, path.c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
}

Findings::~Findings() {
    if (isOwn) {
        std::remove(path.c_str());
    }
}

void Findings::look() {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(read));
    const std::string news{std::istreambuf_iterator<char>(file), {}};
    std::size_t from = 0;
    for (std::size_t end = news.find('\n'); end != std::string::npos; end = news.find('\n', from)) {
        take(news.substr(from, end - from));
        from = end + 1;
    }
    read += from;
}

// "libSonolet-layer: rule 108, plug-in: what it says ...". What a process sums up itself, at an end
// that it has not always, is left out.
void Findings::take(const std::string& line) {
    const std::size_t rule = line.find("rule ");
    const std::size_t comma = line.find(", ");
    const std::size_t end = comma == std::string::npos ? comma : line.find(':', comma);
    if (rule != line.find(": ") + 2 || end == std::string::npos) {
        return;
    }
    ++counts[line.substr(rule, comma - rule) + line.substr(comma + 1, end - comma - 1)];
    if (isOwn) {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

bool Findings::tellAll() {
    look();
    std::size_t total = 0;
    std::string text;
    for (const auto& [which, count] : counts) {
        total += count;
        text += (text.empty() ? " " : ", ") + which + ' ' + std::to_string(count);
        text += count < mostTold ? "" : " or more";
    }
    if (total > 0) {
        std::fprintf(stderr, "sonolet-browser: %zu finding%s:%s\n", total, total == 1 ? "" : "s",
                     text.c_str());
    }
    return total > 0;
}
