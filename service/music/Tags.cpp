#include "music/Tags.h"

#include "music/AdtsDuration.h"
#include "music/TagFrames.h"
#include "music/TagItems.h"
#include "music/TagStream.h"
#include "music/WaveFile.h"
#include "store/GlibText.h"

#include <attachedpictureframe.h>
#include <flacfile.h>
#include <glib.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <mpegheader.h>
#include <mpegproperties.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xingheader.h>
#include <xiphcomment.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::array<std::string_view, 11> endings = {"flac", "ogg", "oga", "opus", "mp3", "m4a",
                                                      "m4b",  "mp4", "aac", "wav",  "wave"};

constexpr unsigned mostArtists = 1000;
constexpr unsigned mostItems = 10'000;  // of one tag
constexpr char withoutEnd[] = "its tags do not end, or it is damaged";

std::string endingOf(std::string_view fileName) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    std::string ending(fileName.substr(dot + 1));
    for (char& character : ending) {
        character = g_ascii_tolower(character);
    }
    return ending;
}

// Tag libraries hand on what a file holds, lone surrogates and NULs included.
std::string cleaned(const TagLib::String& text) {
    const std::string bytes = text.stripWhiteSpace().to8Bit(true);
    return GlibText(g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size()))).get();
}

std::string first(const TagLib::PropertyMap& properties, const char* name) {
    const auto entry = properties.find(name);
    return entry == properties.end() || entry->second.isEmpty() ? std::string()
                                                                : cleaned(entry->second.front());
}

// The number at the front of a text such as "7", "7/12" or "1994-05-02"; 0 for anything else.
int leadingNumber(const std::string& text) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    return number > 0 && number < INT_MAX ? static_cast<int>(number) : 0;
}

int numberAfterSlash(const std::string& text) {
    const std::size_t slash = text.find('/');
    return slash == std::string::npos ? 0 : leadingNumber(text.substr(slash + 1));
}

std::string bytesOf(const TagLib::ByteVector& data) {
    return std::string(data.data(), data.size());
}

std::string frontCover(const TagLib::List<TagLib::FLAC::Picture*>& pictures) {
    std::string any;
    for (const TagLib::FLAC::Picture* picture : pictures) {
        if (picture->type() == TagLib::FLAC::Picture::FrontCover) {
            return bytesOf(picture->data());
        }
        if (any.empty()) {
            any = bytesOf(picture->data());
        }
    }
    return any;
}

std::string frontCover(const TagLib::ID3v2::Tag* tag) {
    std::string any;
    if (tag == nullptr) {
        return any;
    }
    for (const TagLib::ID3v2::Frame* frame : tag->frameList("APIC")) {
        const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame);
        if (picture == nullptr) {
            continue;
        }
        if (picture->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover) {
            return bytesOf(picture->picture());
        }
        if (any.empty()) {
            any = bytesOf(picture->picture());
        }
    }
    return any;
}

std::string frontCover(TagLib::File& file) {
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
        std::string cover = frontCover(flac->pictureList());
        return cover.empty() ? frontCover(flac->ID3v2Tag()) : cover;
    }
    if (auto* comment = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
        return frontCover(comment->pictureList());
    }
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
        return frontCover(mpeg->ID3v2Tag());
    }
    if (const auto* wave = dynamic_cast<const WaveFile*>(&file)) {
        return frontCover(wave->id3Tag());
    }
    if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file)) {
        const TagLib::MP4::Item item = mp4->tag()->item("covr");
        const TagLib::MP4::CoverArtList covers = item.toCoverArtList();
        return covers.isEmpty() ? std::string() : bytesOf(covers.front().data());
    }
    return {};
}

// The length of an MP3 stream in milliseconds. Without a header that tells it, the tag library
// goes by the first frame's bit rate, which is right only while all frames have the same.
int mpegDurationMs(TagLib::MPEG::File& file, TagStream& stream) {
    const TagLib::MPEG::Properties* audio = file.audioProperties();
    if (audio == nullptr) {
        return 0;
    }
    if (audio->xingHeader() != nullptr) {
        return audio->lengthInMilliseconds();
    }
    constexpr int framesThatTell = 64;
    constexpr int mostFrames = 1'000'000;  // seven hours and more
    constexpr std::int64_t stepsOfFrame = 64;
    stream.allowSteps(mostFrames * stepsOfFrame);
    std::int64_t nanoseconds = 0;
    int frames = 0;
    int firstRate = 0;
    bool varies = false;
    const long begin = file.firstFrameOffset();
    std::int64_t offset = begin;
    while (offset >= 0 && offset < file.length() &&
           frames < (varies ? mostFrames : framesThatTell)) {
        const TagLib::MPEG::Header header(&file, static_cast<long>(offset), false);
        if (!header.isValid() || header.frameLength() <= 0 || header.sampleRate() <= 0) {
            break;
        }
        firstRate = frames == 0 ? header.bitrate() : firstRate;
        varies = varies || header.bitrate() != firstRate;
        nanoseconds += 1'000'000'000LL * header.samplesPerFrame() / header.sampleRate();
        offset += header.frameLength();
        ++frames;
    }
    if (!varies && frames == framesThatTell) {
        return audio->lengthInMilliseconds();
    }
    std::int64_t milliseconds = nanoseconds / 1'000'000;
    if (frames == mostFrames) {
        // The rest is like these.
        const std::int64_t thousandths =
            (static_cast<std::int64_t>(file.length()) - begin) * 1000 / (offset - begin);
        milliseconds = milliseconds * std::max<std::int64_t>(thousandths, 1000) / 1000;
    }
    return static_cast<int>(std::min<std::int64_t>(milliseconds, INT_MAX));
}

Tags tagsOf(TagLib::File& file) {
    const auto* const wave = dynamic_cast<const WaveFile*>(&file);
    const TagLib::PropertyMap properties = wave != nullptr ? wave->texts() : file.properties();
    Tags tags;
    tags.title = first(properties, "TITLE");
    if (const auto artists = properties.find("ARTIST"); artists != properties.end()) {
        unsigned looked = 0;
        for (const TagLib::String& artist : artists->second) {
            if (++looked > mostArtists) {
                break;
            }
            std::string name = cleaned(artist);
            if (!name.empty() &&
                std::find(tags.artists.begin(), tags.artists.end(), name) == tags.artists.end()) {
                tags.artists.push_back(std::move(name));
            }
        }
    }
    tags.albumArtist = first(properties, "ALBUMARTIST");
    tags.album = first(properties, "ALBUM");
    const std::string number = first(properties, "TRACKNUMBER");
    tags.number = leadingNumber(number);
    tags.numberOfTracks =
        std::max({numberAfterSlash(number), leadingNumber(first(properties, "TRACKTOTAL")),
                  leadingNumber(first(properties, "TOTALTRACKS"))});
    tags.disc = leadingNumber(first(properties, "DISCNUMBER"));
    tags.year = leadingNumber(first(properties, "DATE"));
    if (tags.year == 0) {
        tags.year = leadingNumber(first(properties, "YEAR"));
    }
    tags.compilation = leadingNumber(first(properties, "COMPILATION")) != 0;
    tags.releaseType = first(properties, "RELEASETYPE");
    if (tags.releaseType.empty()) {
        tags.releaseType = first(properties, "MUSICBRAINZ_ALBUMTYPE");
    }
    for (char& character : tags.releaseType) {
        character = g_ascii_tolower(character);
    }
    tags.copyright = first(properties, "COPYRIGHT");
    tags.picture = frontCover(file);
    if (const TagLib::AudioProperties* audio = file.audioProperties(); audio != nullptr) {
        tags.durationMs = std::max(0, audio->lengthInMilliseconds());
    }
    return tags;
}

// The ending decides; Ogg alone hides several formats behind one.
std::unique_ptr<TagLib::File>
openFile(TagStream& stream, TagFrames& frames, const std::string& ending) {
    if (ending == "ogg" || ending == "oga") {
        std::unique_ptr<TagLib::File> file = std::make_unique<TagLib::Ogg::Vorbis::File>(&stream);
        if (!file->isValid()) {
            file = std::make_unique<TagLib::Ogg::Opus::File>(&stream);
        }
        if (!file->isValid()) {
            file = std::make_unique<TagLib::Ogg::FLAC::File>(&stream);
        }
        return file;
    }
    if (ending == "flac") {
        return std::make_unique<TagLib::FLAC::File>(&stream, &frames);
    }
    if (ending == "opus") {
        return std::make_unique<TagLib::Ogg::Opus::File>(&stream);
    }
    if (ending == "wav" || ending == "wave") {
        return std::make_unique<WaveFile>(stream, frames);
    }
    if (ending == "m4a" || ending == "m4b" || ending == "mp4") {
        return std::make_unique<TagLib::MP4::File>(&stream);
    }
    // An ADTS stream carries its tags as MP3 does, but has frames of its own.
    return std::make_unique<TagLib::MPEG::File>(&stream, &frames, ending != "aac");
}

void requireOpen(const TagStream& stream) {
    switch (stream.state()) {
    case TagStream::State::open:
        return;
    case TagStream::State::stopped:
        throw UnreadableFile("nobody waits for it any more");
    case TagStream::State::exhausted:
        throw UnreadableFile(withoutEnd);
    case TagStream::State::failed:
        throw UnreadableFile("the file cannot be read");
    }
}

// The library takes all items of a tag, and there is no way to stop it.
void requireFewItems(const MusicFile& file, const StopFlag& stop, const std::string& ending) {
    TagStream stream(file, stop);
    TagItems items(stream);
    unsigned number = 0;
    if (ending == "flac") {
        number = items.inFlac();
    } else if (ending == "ogg" || ending == "oga" || ending == "opus") {
        number = items.inOgg();
    } else if (ending == "mp3" || ending == "aac") {
        number = items.inApeTag();
    }
    requireOpen(stream);
    if (number > mostItems) {
        throw UnreadableFile(withoutEnd);
    }
}

}  // namespace

bool isMusicFile(std::string_view fileName) {
    return std::find(endings.begin(), endings.end(), endingOf(fileName)) != endings.end();
}

Tags readTags(const MusicFile& file, const StopFlag& stop) {
    if (file.size() > LONG_MAX) {
        throw UnreadableFile("it has more than 2 GiB, which can be read on 64 bits only");
    }
    try {
        const std::string ending = endingOf(file.path());
        requireFewItems(file, stop, ending);
        TagStream stream(file, stop);
        TagFrames frames(stop);
        if (ending == "aac") {
            // The library would look for MP3 frames in all of it. Other tags are at the end.
            constexpr std::int64_t tail = 128 << 10;
            const std::int64_t begin = adtsStart(file);
            stream.cutOut(begin, std::max<std::int64_t>(file.size() - begin - tail, 0));
        }
        const std::unique_ptr<TagLib::File> tagged = openFile(stream, frames, ending);
        requireOpen(stream);
        if (!tagged->isValid()) {
            throw UnreadableFile("this is no " + ending + " file, or a damaged one");
        }
        Tags tags = tagsOf(*tagged);
        if (ending == "aac") {
            tags.durationMs = adtsDurationMs(file, stop);
        } else if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(tagged.get())) {
            tags.durationMs = mpegDurationMs(*mpeg, stream);
        }
        requireOpen(stream);
        if (tags.durationMs == 0) {
            throw UnreadableFile("there is no sound in it, or it is damaged");
        }
        return tags;
    } catch (const UnreadableFile&) {
        throw;
    } catch (const std::exception& error) {
        throw UnreadableFile(std::string("its tags cannot be read: ") + error.what());
    } catch (...) {
        throw UnreadableFile("its tags cannot be read");
    }
}

}  // namespace sonolet::service
