#ifndef SONOLET_SERVICE_MUSIC_TAG_STREAM_H
#define SONOLET_SERVICE_MUSIC_TAG_STREAM_H

#include "music/MusicFile.h"
#include "music/TagSizes.h"

#include <tiostream.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonolet::service {

// A music file as the tag library reads it: to be read alone, and not for ever.
//
// The library looks for what it does not find to the end of a file, in small steps. A search that
// has seen a mebibyte is told that this is the end. There is a limit for all small steps and one
// for all that is read; behind these, once the flag is set and when the file cannot be read, the
// stream is empty, at which the library gives up. It does so, too, for a library that has gone
// down into boxes in boxes, a call for each, until the stack is in danger.
//
// Threads: belongs to one, the flag aside. Units: bytes. Ownership: borrows file and flag.
class TagStream final : public TagLib::IOStream {
public:
    enum class State { open, stopped, exhausted, failed };

    TagStream(const MusicFile& musicFile, const StopFlag& stopFlag);

    State state() const { return current; }
    // Leaves these bytes out, as if the file did not have them. Before anything is read.
    void cutOut(std::int64_t from, std::int64_t count);
    // Four bytes that are read by themselves, as the names of chunks are, and are `from` come as
    // `to`.
    void rename(const char* from, const char* to) { renamed.emplace_back(from, to); }
    // From here on small steps may read that much, and be one search.
    void allowSteps(std::int64_t limit) {
        stepsLeft = limit;
        searchLeft = limit;
    }

    TagLib::FileName name() const override { return file.path().c_str(); }
    // Fewer bytes at the end, and none where reading ends.
    TagLib::ByteVector readBlock(TagSize length) override;
    bool readOnly() const override { return true; }
    bool isOpen() const override { return true; }
    void seek(TagOffset offset, Position from = Beginning) override;
    TagOffset tell() const override {
        return static_cast<TagOffset>(std::min<std::int64_t>(place, LONG_MAX));
    }
    TagOffset length() override {
        return static_cast<TagOffset>(current == State::open ? size : 0);
    }

    // A file is never written.
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, TagStart, TagSize) override {}
    void removeBlock(TagStart, TagSize) override {}
    void truncate(TagOffset) override {}

private:
    bool pay(std::int64_t count);

    const MusicFile& file;
    const StopFlag& stop;
    const char* const stack;  // where its maker stood
    std::int64_t size;        // without what is cut out
    std::int64_t cutFrom = LONG_MAX;
    std::int64_t cutSize = 0;
    std::vector<std::pair<TagLib::ByteVector, TagLib::ByteVector>> renamed;
    State current = State::open;
    std::int64_t place = 0;
    std::int64_t bytesLeft;
    std::int64_t stepsLeft;
    std::int64_t searchLeft;  // until a seek leads elsewhere

    // Small steps are often near each other.
    std::array<char, 4096> window{};
    std::int64_t windowStart = 0;
    std::int64_t windowSize = 0;
};

}  // namespace sonolet::service

#endif
