#ifndef SONOLET_SERVICE_MUSIC_TAGS_H
#define SONOLET_SERVICE_MUSIC_TAGS_H

#include "music/MusicFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace sonolet::service {

// What a music file says of itself. Texts are valid UTF-8; a text or number that is not given is
// empty or 0.
struct Tags {
    std::string title;
    std::vector<std::string> artists;
    std::string albumArtist;
    std::string album;
    int disc = 0;
    int number = 0;
    int numberOfTracks = 0;
    int year = 0;
    bool compilation = false;
    std::string releaseType;  // "album", "single", "compilation", ... in lower case
    std::string copyright;
    int durationMs = 0;
    std::string picture;  // the front cover's bytes
};

// Whether the name's ending, in whatever case, is one of a format that can be played: FLAC, Ogg,
// Opus, MP3, MPEG-4, AAC or WAV. The ending decides how a file is read, its bytes whether it is
// one.
bool isMusicFile(std::string_view fileName);

// What the file's ending says it is, it must be. Reads as much as tags and pictures take and no
// more, whatever the file holds. Throws UnreadableFile, with a cause for the log, also once `stop`
// is set. Any thread, one for each file.
Tags readTags(const MusicFile& file, const StopFlag& stop);

}  // namespace sonolet::service

#endif
