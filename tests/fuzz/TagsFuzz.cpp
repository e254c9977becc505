// Music files of every format with anything in them: read or refused.

#include "../fakes/Folder.h"
#include "Input.h"
#include "music/Tags.h"

#include <glib.h>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sonolet::service;
    static const Folder folder;
    if (size == 0) {
        return 0;
    }
    static const char* const names[] = {"a.flac", "a.ogg", "a.opus", "a.mp3",
                                        "a.m4a",  "a.aac", "a.wav"};
    const std::string path = folder.write(
        names[data[0] % 7], std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    try {
        const Tags tags = readTags(MusicFile(path), StopFlag(false));
        std::string texts =
            tags.title + tags.albumArtist + tags.album + tags.releaseType + tags.copyright;
        for (const std::string& artist : tags.artists) {
            texts += artist;
        }
        require(g_utf8_validate(texts.data(), static_cast<gssize>(texts.size()), nullptr) != 0,
                "a text is not UTF-8");
        require(tags.durationMs >= 0, "a track of less than no time");
    } catch (const UnreadableFile&) {
        return 0;
    }
    return 0;
}
