#ifndef SONOLET_SERVICE_MUSIC_WAVE_FILE_H
#define SONOLET_SERVICE_MUSIC_WAVE_FILE_H

#include "music/TagFrames.h"
#include "music/TagStream.h"

#include <id3v2tag.h>
#include <infotag.h>
#include <tpropertymap.h>
#include <wavfile.h>

#include <memory>

namespace sonolet::service {

// A WAV file whose tags end. The library reads both kinds that there are, an ID3v2 tag and a list
// of texts, with nothing between it and what they unpack to; so it does not see them, and they are
// taken here, the first of each: the tag with frames that end, the list when it is of a length that
// texts have.
//
// Threads: belongs to one. Ownership: borrows stream and frames. Errors: UnreadableFile for more
// sound than can be played.
class WaveFile final : public TagLib::RIFF::WAV::File {
public:
    WaveFile(TagStream& stream, TagFrames& frames);

    // Of the ID3v2 tag; of the list, when that says nothing. Hides the library's, which knows none.
    TagLib::PropertyMap texts() const;
    // Null: there is none.
    const TagLib::ID3v2::Tag* id3Tag() const { return id3.get(); }

private:
    std::unique_ptr<TagLib::ID3v2::Tag> id3;
    std::unique_ptr<TagLib::RIFF::Info::Tag> info;
};

}  // namespace sonolet::service

#endif
