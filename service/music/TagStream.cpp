#include "music/TagStream.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace sonolet::service {

namespace {

// Room for a picture of 32 MiB as text, which is a third more.
constexpr std::int64_t mostBytes = 64 << 20;
constexpr std::int64_t smallStep = 1024;
constexpr std::int64_t mostInSteps = 4 << 20;
constexpr std::int64_t longestSearch = 1 << 20;
// What a step costs, however small.
constexpr std::int64_t leastCost = 16;
// A level of boxes takes some 300 bytes, in an instrumented build a few times that.
constexpr std::ptrdiff_t deepestStack = 512 << 10;

const char* stackHere() {
    return static_cast<const char*>(__builtin_frame_address(0));
}

}  // namespace

TagStream::TagStream(const MusicFile& musicFile, const StopFlag& stopFlag)
    : file(musicFile), stop(stopFlag), stack(stackHere()),
      size(std::min<std::int64_t>(file.size(), LONG_MAX)), bytesLeft(mostBytes),
      stepsLeft(mostInSteps), searchLeft(longestSearch) {}

void TagStream::cutOut(std::int64_t from, std::int64_t count) {
    cutFrom = from;
    cutSize = count;
    size -= count;
}

bool TagStream::pay(std::int64_t count) {
    if (current == State::open && stop) {
        current = State::stopped;
    }
    std::int64_t& left = count <= smallStep ? stepsLeft : bytesLeft;
    left -= std::max(count, leastCost);
    if (current == State::open && (left < 0 || stack - stackHere() > deepestStack)) {
        current = State::exhausted;
    }
    return current == State::open;
}

TagLib::ByteVector TagStream::readBlock(TagSize length) {
    const std::int64_t end = place < cutFrom ? std::min(cutFrom, size) : size;
    const std::int64_t count =
        std::min(static_cast<std::int64_t>(std::min<TagSize>(length, LONG_MAX)),
                 std::max<std::int64_t>(end - place, 0));
    searchLeft -= count <= smallStep ? count : 0;
    if (count == 0 || searchLeft < 0 || !pay(count)) {
        return {};
    }
    TagLib::ByteVector block(static_cast<unsigned>(count), '\0');
    std::int64_t got = 0;
    const std::int64_t from = place + (place < cutFrom ? 0 : cutSize);
    try {
        if (count <= smallStep) {
            if (from < windowStart || from + count > windowStart + windowSize) {
                windowStart = from;
                windowSize =
                    static_cast<std::int64_t>(file.read(from, window.data(), window.size()));
            }
            got = std::min(count, windowSize - (from - windowStart));
            std::copy_n(window.data() + (from - windowStart), got, block.data());
        } else {
            got = static_cast<std::int64_t>(
                file.read(from, block.data(), static_cast<std::size_t>(count)));
        }
    } catch (const UnreadableFile&) {
        current = State::failed;
        return {};
    }
    place += got;
    block.resize(static_cast<unsigned>(got));
    for (const auto& [name, otherName] : renamed) {
        if (block == name) {
            return otherName;
        }
    }
    return block;
}

void TagStream::seek(TagOffset offset, Position from) {
    const std::int64_t base = from == Current ? place : from == End ? size : 0;
    const std::int64_t target = std::max<std::int64_t>(base + offset, 0);
    // A search goes back by a few bytes at times, and on by one step.
    if (std::abs(target - place) > smallStep) {
        searchLeft = longestSearch;
    }
    place = target;
}

}  // namespace sonolet::service
