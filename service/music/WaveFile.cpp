#include "music/WaveFile.h"

#include "music/MusicFile.h"

namespace sonolet::service {

namespace {

constexpr char hiddenId3[] = "ID3?";
constexpr char hiddenList[] = "LIS?";
constexpr unsigned longestList = 256 << 10;  // bytes
// Bytes; GStreamer plays no more of a WAV file, and says nothing.
constexpr unsigned longestSound = 0x7fffffff;

TagStream* hidingTags(TagStream& stream) {
    stream.rename("ID3 ", hiddenId3);
    stream.rename("id3 ", hiddenId3);
    stream.rename("LIST", hiddenList);
    return &stream;
}

}  // namespace

WaveFile::WaveFile(TagStream& stream, TagFrames& frames) : File(hidingTags(stream)) {
    for (unsigned i = 0; i < chunkCount(); ++i) {
        const TagLib::ByteVector name = chunkName(i);
        if (name == "data" && chunkDataSize(i) > longestSound) {
            throw UnreadableFile(
                "it has more than 2 GiB of sound, more than is played of a WAV file");
        }
        if (name == hiddenId3 && id3 == nullptr) {
            id3 = std::make_unique<TagLib::ID3v2::Tag>(this, chunkOffset(i), &frames);
        } else if (name == hiddenList && info == nullptr && chunkDataSize(i) <= longestList) {
            const TagLib::ByteVector list = chunkData(i);
            if (list.startsWith("INFO")) {
                info = std::make_unique<TagLib::RIFF::Info::Tag>(list);
            }
        }
    }
}

TagLib::PropertyMap WaveFile::texts() const {
    if (id3 != nullptr && !id3->isEmpty()) {
        return id3->properties();
    }
    return info == nullptr ? TagLib::PropertyMap() : info->properties();
}

}  // namespace sonolet::service
