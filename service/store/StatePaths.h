#ifndef SONOLET_SERVICE_STORE_STATE_PATHS_H
#define SONOLET_SERVICE_STORE_STATE_PATHS_H

#include <string>

namespace sonolet::service {

// Where the plug-in has its sessions keep their settings; the command-line tools look there too.
inline constexpr char defaultSettingsLocation[] = "/settings/spotify";
inline constexpr char defaultCacheLocation[] = "/var/tmp/spotify_cache";

// The folders of a session. Both exist and can be written, unless the disk is full.
struct StatePaths {
    std::string settings;  // accounts, stars, play counts: not to be lost
    std::string cache;     // the catalogue: can be made again

    // Makes the folders, readable by their owner alone. With SONOLET_STATE in the environment both
    // live under it; otherwise a configured place is used where it can be made and written, and the
    // user's state folder where not. Throws std::system_error when neither is possible.
    static StatePaths prepare(const char* settingsLocation, const char* cacheLocation);

    // The catalogue's file for a folder of music; each folder has its own.
    std::string catalogueFile(const std::string& musicFolder) const;
    std::string accountsFile() const { return settings + "/accounts.db"; }
};

// SONOLET_SERVER: the address of a music server; empty for none.
std::string serverAddress();

// SONOLET_MUSIC, else the user's music folder; absolute, without a slash at the end.
std::string musicFolder();

}  // namespace sonolet::service

#endif
