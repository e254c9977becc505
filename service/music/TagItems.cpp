#include "music/TagItems.h"

#include <id3v2header.h>

#include <algorithm>

namespace sonolet::service {

namespace {

using TagLib::ByteVector;

// A block of FLAC's metadata begins with its kind, which has a mark at the last one, and its
// length.
constexpr unsigned blockHeader = 4;

unsigned kindOf(const ByteVector& block) {
    return static_cast<unsigned char>(block[0]) & 0x7fU;
}

bool isLast(const ByteVector& block) {
    return (static_cast<unsigned char>(block[0]) & 0x80U) != 0;
}

constexpr unsigned commentBlock = 4;

// As the library reads it, an overflow of the first length included.
unsigned commentsIn(const ByteVector& comments) {
    return comments.toUInt(4 + comments.toUInt(0U, false), false);
}

}  // namespace

unsigned TagItems::inFlac() {
    long at = 0;
    for (;;) {
        seek(at);
        const ByteVector header = readBlock(TagLib::ID3v2::Header::size());
        if (!header.startsWith(TagLib::ID3v2::Header::fileIdentifier())) {
            break;
        }
        at += static_cast<long>(TagLib::ID3v2::Header(header).completeTagSize());
    }
    at = find("fLaC", at);
    if (at < 0) {
        return 0;
    }
    at += 4;
    for (;;) {
        seek(at);
        const ByteVector header = readBlock(blockHeader);
        if (header.size() < blockHeader) {
            return 0;
        }
        const unsigned length = header.toUInt(1U, 3U);
        if (kindOf(header) == commentBlock) {
            return commentsIn(readBlock(length));
        }
        if (isLast(header)) {
            return 0;
        }
        at += static_cast<long>(blockHeader + length);
    }
}

unsigned TagItems::inOgg() {
    const ByteVector second = packet(1);
    if (second.startsWith("\3vorbis")) {
        return commentsIn(second.mid(7));
    }
    if (second.startsWith("OpusTags")) {
        return commentsIn(second.mid(8));
    }
    // FLAC, of whose packets each is a block.
    unsigned most = 0;
    ByteVector block = second;
    for (unsigned i = 1; block.size() >= blockHeader; block = packet(++i)) {
        if (kindOf(block) == commentBlock) {
            most = std::max(most, commentsIn(block.mid(blockHeader)));
        }
        if (isLast(block)) {
            break;
        }
    }
    return most;
}

unsigned TagItems::inApeTag() {
    constexpr long footerSize = 32;
    constexpr long id3v1Size = 128;
    constexpr unsigned numberAt = 16;
    for (const long behind : {footerSize, footerSize + id3v1Size}) {
        if (length() < behind) {
            break;
        }
        seek(-behind, End);
        const ByteVector footer = readBlock(footerSize);
        if (footer.startsWith("APETAGEX")) {
            return footer.toUInt(numberAt, false);
        }
    }
    return 0;
}

}  // namespace sonolet::service
