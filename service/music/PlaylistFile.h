#ifndef SONOLET_SERVICE_MUSIC_PLAYLIST_FILE_H
#define SONOLET_SERVICE_MUSIC_PLAYLIST_FILE_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// A file that is no playlist: why.
class MalformedPlaylist final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What an M3U, M3U8 or PLS file says, all UTF-8. Entries stand as they are written there. Its
// functions may be called on any thread.
struct PlaylistFile {
    std::string name;  // empty: it has none
    std::vector<std::string> entries;

    // By the name's ending, in whatever case; nothing is opened.
    static bool isOne(std::string_view fileName);

    // Opens the file itself, not what a symbolic link leads to. Throws MalformedPlaylist, also
    // when the file cannot be read.
    static PlaylistFile read(const std::string& path);

    // The file that an entry of the playlist `listPath` means, relative to the folder of music;
    // empty when it is not in there. `roots` are names of that folder; paths alone are compared,
    // nothing is opened.
    static std::string resolve(const std::string& entry,
                               const std::string& listPath,
                               const std::vector<std::string>& roots);
};

}  // namespace sonolet::service

#endif
