#include "browser/Address.h"

#include "options/Folders.h"

#include <glib.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

std::string addressOf(const std::string& page) {
    if (!isThere(page)) {
        g_autofree char* scheme = g_uri_parse_scheme(page.c_str());
        if (scheme != nullptr) {
            return page;
        }
        throw std::invalid_argument(page + ": no such file, and no address such as "
                                           "http://localhost:8000/");
    }
    fs::path file = fs::absolute(page).lexically_normal();
    if (isFolder(file)) {
        file /= "index.html";
        if (!isThere(file)) {
            throw std::invalid_argument(page + ": is a folder without an index.html");
        }
    }
    g_autofree char* uri = g_filename_to_uri(file.c_str(), nullptr, nullptr);
    return uri;
}

std::string installedPlayer() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    const fs::path player = self.parent_path() / "../../../share/sonolet/pages/player";
    return fs::exists(player / "index.html", error) ? player.lexically_normal().string() : "";
}
