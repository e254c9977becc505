#ifndef SONOLET_SERVICE_MUSIC_TAG_ITEMS_H
#define SONOLET_SERVICE_MUSIC_TAG_ITEMS_H

#include "music/TagStream.h"

#include <oggfile.h>

namespace sonolet::service {

// Counts the items that a file says its tag has, before the library takes them all. The tag is
// found by the library's own search and packets: what it would read is what is counted.
//
// Threads: belongs to one. Ownership: borrows the stream. Errors: what is not there has 0 items;
// the stream's state tells of the rest.
class TagItems final : public TagLib::Ogg::File {
public:
    explicit TagItems(TagStream& stream) : File(&stream) {}

    // Vorbis comments of a FLAC file, perhaps behind ID3v2 tags and what else is before its start.
    unsigned inFlac();
    // Vorbis comments of the first stream, as the library takes them to be, whatever is beside it.
    unsigned inOgg();
    // Of an APE tag, which is behind the sound and perhaps before an ID3v1 tag.
    unsigned inApeTag();

    // Nothing of a file is known here but its bytes.
    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
};

}  // namespace sonolet::service

#endif
