#include "music/PlaylistFile.h"

#include "music/MusicFile.h"
#include "store/GlibText.h"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>

namespace sonolet::service {

namespace {

constexpr std::int64_t largestFile = 16 << 20;
constexpr std::size_t mostEntries = 100'000;
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

std::string contentsOf(const std::string& path) {
    std::string text;
    try {
        text = MusicFile(path, MusicFile::Links::refuse).contents(largestFile);
    } catch (const UnreadableFile& error) {
        throw MalformedPlaylist(error.what());
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
    PlaylistFile list = endsWith(path, ".pls") ? parsePls(text) : parseM3u(text);
    if (list.entries.size() > mostEntries) {
        throw MalformedPlaylist("it has more than " + std::to_string(mostEntries) + " entries");
    }
    return list;
}

std::string PlaylistFile::resolve(const std::string& entry,
                                  const std::string& listPath,
                                  const std::vector<std::string>& roots) {
    namespace fs = std::filesystem;
    std::string written = entry;
    if (startsWith(entry, "file:")) {
        const GlibText plain(g_filename_from_uri(entry.c_str(), nullptr, nullptr));
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
