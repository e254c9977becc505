#include "PlaylistFile.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

namespace sonolet::service {

namespace {

constexpr off_t largestFile = 16 << 20;
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

using GlibText = std::unique_ptr<char, decltype(&g_free)>;

class Descriptor final {
public:
    explicit Descriptor(const std::string& path)
        : number(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number >= 0) {
            close(number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

[[noreturn]] void failToRead() {
    throw MalformedPlaylist(errno == ELOOP
                                ? "it is a symbolic link"
                                : std::error_code(errno, std::generic_category()).message());
}

std::string contentsOf(const std::string& path) {
    const Descriptor file(path);
    struct stat status {};
    if (file.number < 0 || fstat(file.number, &status) != 0) {
        failToRead();
    }
    if (!S_ISREG(status.st_mode) || status.st_size > largestFile) {
        throw MalformedPlaylist("it is no regular file of at most 16 MiB");
    }
    std::string text;
    std::array<char, 65536> buffer{};
    ssize_t size = 0;
    while ((size = ::read(file.number, buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(size));
        if (text.size() > largestFile) {
            throw MalformedPlaylist("it grows while it is read");
        }
    }
    if (size < 0) {
        failToRead();
    }
    // Also false for a zero byte.
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) {
        throw MalformedPlaylist("it is not UTF-8 text");
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos
               ? std::string_view()
               : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return trimmed(line);
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() &&
           g_ascii_strncasecmp(text.data(), start.data(), start.size()) == 0;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && startsWith(text.substr(text.size() - end.size()), end);
}

PlaylistFile parseM3u(std::string_view text) {
    constexpr std::string_view title = "#PLAYLIST:";
    PlaylistFile list;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (startsWith(line, title)) {
            list.name = trimmed(line.substr(title.size()));
        } else if (!line.empty() && line.front() != '#') {
            list.entries.emplace_back(line);
        }
    }
    return list;
}

// "FileN=" lines in the order of their numbers.
PlaylistFile parsePls(std::string_view text) {
    constexpr std::string_view header = "[playlist]";
    constexpr std::string_view file = "File";
    std::string_view line;
    while (!text.empty() && line.empty()) {
        line = takeLine(text);
    }
    if (line.size() != header.size() || !startsWith(line, header)) {
        throw MalformedPlaylist("it does not begin with [playlist]");
    }
    std::multimap<unsigned long, std::string_view> entries;
    while (!text.empty()) {
        line = takeLine(text);
        const std::size_t equals = line.find('=');
        if (!startsWith(line, file) || equals == std::string_view::npos) {
            continue;
        }
        unsigned long number = 0;
        const char* end = line.data() + equals;
        const auto [stopped, error] = std::from_chars(line.data() + file.size(), end, number);
        if (error != std::errc() || stopped != end) {
            throw MalformedPlaylist("an entry without a number: " + std::string(line));
        }
        entries.emplace(number, trimmed(line.substr(equals + 1)));
    }
    PlaylistFile list;
    for (const auto& [number, entry] : entries) {
        list.entries.emplace_back(entry);
    }
    return list;
}

}  // namespace

bool PlaylistFile::isOne(std::string_view fileName) {
    return endsWith(fileName, ".m3u8") || endsWith(fileName, ".m3u") || endsWith(fileName, ".pls");
}

PlaylistFile PlaylistFile::read(const std::string& path) {
    const std::string contents = contentsOf(path);
    std::string_view text = contents;
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) {
        text.remove_prefix(byteOrderMark.size());
    }
    return endsWith(path, ".pls") ? parsePls(text) : parseM3u(text);
}

std::string PlaylistFile::resolve(const std::string& entry,
                                  const std::string& listPath,
                                  const std::vector<std::string>& roots) {
    namespace fs = std::filesystem;
    std::string written = entry;
    if (startsWith(entry, "file:")) {
        const GlibText plain(g_filename_from_uri(entry.c_str(), nullptr, nullptr), &g_free);
        written = plain == nullptr ? "" : plain.get();
    } else if (written.find('/') == std::string::npos) {
        // As other systems write it.
        std::replace(written.begin(), written.end(), '\\', '/');
    }
    if (written.empty()) {
        return {};
    }
    fs::path path = written;
    if (path.is_relative()) {
        path = (fs::path(listPath).parent_path() / written).lexically_normal();
        return path.empty() || *path.begin() == ".." ? std::string() : path.string();
    }
    path = path.lexically_normal();
    for (const std::string& root : roots) {
        const fs::path inside = path.lexically_relative(root);
        if (!inside.empty() && *inside.begin() != ".." && inside != ".") {
            return inside.string();
        }
    }
    return {};
}

}  // namespace sonolet::service
