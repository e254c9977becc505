// Playlist files: read or refused, and no entry leads out of the folder of music.

#include "../fakes/Folder.h"
#include "Input.h"
#include "music/PlaylistFile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using sonolet::service::PlaylistFile;
    static const Folder folder;
    if (size == 0) {
        return 0;
    }
    static const char* const names[] = {"list.m3u", "list.m3u8", "list.pls"};
    const std::string path = folder.write(
        names[data[0] % 3], std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    try {
        const PlaylistFile list = PlaylistFile::read(path);
        for (const std::string& entry : list.entries) {
            const std::string file =
                PlaylistFile::resolve(entry, "some/folder/list.m3u", {"/music", "/mnt/music"});
            const std::string inside = '/' + file + '/';
            require(file.empty() ||
                        (file.front() != '/' && inside.find("/../") == std::string::npos),
                    "an entry leads out of the folder");
        }
    } catch (const sonolet::service::MalformedPlaylist&) {
        return 0;
    }
    return 0;
}
