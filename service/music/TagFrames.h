#ifndef SONOLET_SERVICE_MUSIC_TAG_FRAMES_H
#define SONOLET_SERVICE_MUSIC_TAG_FRAMES_H

#include "music/MusicFile.h"
#include "music/TagSizes.h"

#include <id3v2frame.h>
#include <id3v2framefactory.h>

#include <cstdint>

namespace sonolet::service {

// The library hides a frame's header from all but frames.
struct TagFrame : TagLib::ID3v2::Frame {
    using TagLib::ID3v2::Frame::Header;
};

// Takes the frames of one ID3v2 tag, but not for ever: behind ten thousand frames, behind 64 KiB of
// compressed ones (which may unpack to a thousand times as much) and once the flag is set, the tag
// is at its end.
//
// Threads: belongs to one, the flag aside. Ownership: borrows the flag; a file borrows this.
class TagFrames final : public TagLib::ID3v2::FrameFactory {
public:
    explicit TagFrames(const StopFlag& stopFlag) : stop(stopFlag) {}

protected:
    bool updateFrame(TagFrame::Header* header) const override {
        constexpr unsigned mostFrames = 10'000;
        constexpr unsigned mostCompressed = 64 << 10;
        compressed += header->compression() ? header->frameSize() : 0;
        if (++frames > mostFrames || compressed > mostCompressed || stop) {
            // Empty and not compressed, at which the library ends a tag.
            const TagLib::ByteVector empty("NONE\0\0\0\0\0\0", 10);
            header->setData(empty, header->version());
            return false;
        }
        return FrameFactory::updateFrame(header);
    }

private:
    const StopFlag& stop;
    // Counted while a tag is read, in functions that the library declares const.
    mutable std::uint64_t compressed = 0;  // bytes
    mutable unsigned frames = 0;
};

}  // namespace sonolet::service

#endif
