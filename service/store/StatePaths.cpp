#include "store/StatePaths.h"

#include "store/Id.h"

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

// The environment is read when a session is made, on the thread that owns the process's start-up.
std::string environment(const char* name) {
    const char* value = g_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

// 0, or why the folder cannot be used.
int makeFolder(const std::string& path) {
    if (g_mkdir_with_parents(path.c_str(), S_IRWXU) != 0) {
        return errno;
    }
    return access(path.c_str(), R_OK | W_OK | X_OK) == 0 ? 0 : errno;
}

void requireFolder(const std::string& path) {
    // While the disk is full, a session does without its files.
    if (const int why = makeFolder(path); why != 0 && why != ENOSPC && why != EDQUOT) {
        throw std::system_error(why, std::generic_category(), "cannot use the folder " + path);
    }
}

std::string chooseFolder(const char* configured, const char* name) {
    if (configured != nullptr && *configured != '\0' && makeFolder(configured) == 0) {
        return configured;
    }
    std::string state = environment("XDG_STATE_HOME");
    if (state.empty() || state.front() != '/') {
        state = std::string(g_get_home_dir()) + "/.local/state";
    }
    std::string folder = state + "/sonolet/" + name;
    requireFolder(folder);
    return folder;
}

std::string absolute(std::string path) {
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) {
        return resolved;
    }
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

}  // namespace

StatePaths StatePaths::prepare(const char* settingsLocation, const char* cacheLocation) {
    StatePaths paths;
    if (std::string state = environment("SONOLET_STATE"); !state.empty()) {
        // The process may change its folder later.
        gchar* whole = g_canonicalize_filename(state.c_str(), nullptr);
        state = whole;
        g_free(whole);
        paths.settings = state + "/settings";
        paths.cache = state + "/cache";
        requireFolder(paths.settings);
        requireFolder(paths.cache);
    } else {
        paths.settings = chooseFolder(settingsLocation, "settings");
        paths.cache = chooseFolder(cacheLocation, "cache");
    }
    return paths;
}

std::string StatePaths::catalogueFile(const std::string& musicFolder) const {
    return cache + "/catalogue-" + Id::digest({"music", musicFolder}).text().substr(0, 12) + ".db";
}

std::string serverAddress() {
    return environment("SONOLET_SERVER");
}

std::string musicFolder() {
    if (std::string music = environment("SONOLET_MUSIC"); !music.empty()) {
        return absolute(std::move(music));
    }
    if (std::string music = environment("XDG_MUSIC_DIR"); !music.empty()) {
        return absolute(std::move(music));
    }
    const char* music = g_get_user_special_dir(G_USER_DIRECTORY_MUSIC);
    return absolute(music != nullptr ? music : std::string(g_get_home_dir()) + "/Music");
}

}  // namespace sonolet::service
