#include "service/SyntheticMusic.h"

#include "catalogue/CatalogueWriter.h"
#include "demo/Encoder.h"

#include <fileref.h>
#include <flacfile.h>
#include <flacpicture.h>
#include <sys/stat.h>
#include <tpropertymap.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

namespace sonolet::bench {

namespace {

constexpr std::size_t vocabularySize = 30000;
constexpr std::size_t filesInBatch = 128;
constexpr std::size_t pictureSize = 32 << 10;

constexpr std::array<const char*, 40> commonWords = {
    "the",  "of",    "love", "you",   "me",  "in",   "my",    "a",    "to",   "and",
    "i",    "night", "for",  "it",    "on",  "time", "is",    "your", "no",   "don't",
    "live", "with",  "be",   "blue",  "all", "song", "down",  "one",  "life", "day",
    "baby", "world", "go",   "heart", "new", "away", "dance", "café", "home", "über"};

std::string inventedWord(std::mt19937& random) {
    static constexpr std::array<const char*, 24> onsets = {
        "b", "br", "c", "ch", "d", "f", "g",  "gr", "h", "j",  "k", "l",
        "m", "n",  "p", "pl", "r", "s", "sh", "st", "t", "tr", "v", "w"};
    static constexpr std::array<const char*, 10> vowels = {"a",  "e",  "i",  "o", "u",
                                                           "ea", "oo", "ai", "é", "y"};
    static constexpr std::array<const char*, 10> codas = {"",  "",  "n",  "r",  "l",
                                                          "s", "t", "nd", "ck", "m"};
    std::string word;
    for (unsigned syllables = 1 + random() % 3; syllables > 0; --syllables) {
        word += onsets[random() % onsets.size()];
        word += vowels[random() % vowels.size()];
        word += codas[random() % codas.size()];
    }
    return word;
}

std::string numbered(std::size_t number) {
    std::string text = std::to_string(number);
    return std::string(text.size() < 6 ? 6 - text.size() : 0, '0') + text;
}

void tagFile(const std::string& path, const SyntheticTrack& track, bool picture) {
    const auto text = [](const std::string& utf8) {
        return TagLib::StringList(TagLib::String(utf8, TagLib::String::UTF8));
    };
    TagLib::FileRef file(path.c_str(), false);
    if (file.isNull()) {
        throw std::runtime_error("cannot tag " + path);
    }
    TagLib::PropertyMap properties;
    properties["TITLE"] = text(track.title);
    properties["ARTIST"] = text(track.artist);
    properties["ALBUM"] = text(track.album);
    properties["TRACKNUMBER"] = text(std::to_string(track.number));
    properties["DATE"] = text(std::to_string(track.year));
    properties["COPYRIGHT"] = text("© " + std::to_string(track.year) + ' ' + track.artist);
    file.file()->setProperties(properties);
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(file.file()); flac != nullptr && picture) {
        auto* cover = new TagLib::FLAC::Picture;  // taken over by the file
        cover->setType(TagLib::FLAC::Picture::FrontCover);
        cover->setMimeType("image/jpeg");
        cover->setData(TagLib::ByteVector(static_cast<unsigned>(pictureSize), 'p'));
        flac->addPicture(cover);
    }
    if (!file.save()) {
        throw std::runtime_error("cannot save " + path);
    }
}

}  // namespace

Words::Words(std::uint32_t seed) : random(seed), words(commonWords.begin(), commonWords.end()) {
    std::set<std::string> known(words.begin(), words.end());
    while (words.size() < vocabularySize) {
        const std::string word = inventedWord(random);
        if (known.insert(word).second) {
            words.push_back(word);
        }
    }
    // Zipf's law: the second is used half as often as the first, the third a third.
    std::vector<double> weights;
    for (std::size_t rank = 1; rank <= words.size(); ++rank) {
        weights.push_back(1.0 / static_cast<double>(rank));
    }
    which = std::discrete_distribution<std::size_t>(weights.begin(), weights.end());
}

std::string Words::some(int least, int most) {
    std::uniform_int_distribution<int> length(least, most);
    std::string text;
    for (int left = length(random); left > 0; --left) {
        text += (text.empty() ? "" : " ") + words[which(random)];
    }
    return text;
}

std::vector<SyntheticTrack> syntheticTracks(std::size_t count) {
    Words words(1);
    std::mt19937 random(2);
    std::vector<std::string> artists;
    for (std::size_t artist = 0; artist < 1 + count / 20; ++artist) {
        artists.push_back(words.some(1, 3));
    }
    std::vector<SyntheticTrack> tracks;
    for (std::size_t album = 0; tracks.size() < count; ++album) {
        SyntheticTrack track;
        // The square makes the first artists have more albums than the last.
        const double share = std::uniform_real_distribution<double>()(random);
        track.artist =
            artists[static_cast<std::size_t>(share * share * static_cast<double>(artists.size()))];
        track.album = words.some(1, 4);
        track.year = 1955 + static_cast<int>(random() % 70);
        track.folder = numbered(album);
        const int size = 8 + static_cast<int>(random() % 7);
        for (track.number = 1; track.number <= size && tracks.size() < count; ++track.number) {
            track.title = words.some(1, 5);
            track.file = numbered(static_cast<std::size_t>(track.number)) + ".flac";
            tracks.push_back(track);
        }
    }
    return tracks;
}

void writeCatalogue(const std::vector<SyntheticTrack>& tracks,
                    const std::string& musicFolder,
                    const std::string& catalogueFile) {
    service::CatalogueWriter writer(catalogueFile);
    service::ScanBatch batch;
    for (const SyntheticTrack& track : tracks) {
        const std::string folder = musicFolder + '/' + track.folder;
        const std::string path = folder + '/' + track.file;
        std::filesystem::create_directories(folder);
        std::ofstream(path).close();
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            throw std::runtime_error("cannot make " + path);
        }
        service::ScannedFile file;
        file.folder = track.folder;
        file.name = track.file;
        file.stamp = {status.st_size,
                      status.st_mtim.tv_sec * std::int64_t{1000000000} + status.st_mtim.tv_nsec};
        service::Tags tags;
        tags.title = track.title;
        tags.artists = {track.artist};
        tags.album = track.album;
        tags.number = track.number;
        tags.year = track.year;
        tags.durationMs = 200000;
        file.tags = tags;
        batch.files.push_back(std::move(file));
        if (batch.files.size() == filesInBatch) {
            writer.apply(batch);
            batch = {};
        }
    }
    writer.apply(batch);
}

void writeTaggedFiles(const std::vector<SyntheticTrack>& tracks, const std::string& musicFolder) {
    const std::vector<std::int16_t> silence(44100);
    struct Format {
        const char* ending;
        const char* elements;
    };
    static constexpr std::array<Format, 3> formats = {
        {{".flac", "flacenc"},
         {".ogg", "audioconvert ! vorbisenc ! oggmux"},
         {".mp3", "lamemp3enc"}}};
    for (const Format& format : formats) {
        service::encode(silence.data(), silence.size() * sizeof(silence[0]),
                        "audio/x-raw,format=S16LE,rate=44100,channels=1,layout=interleaved",
                        format.elements, musicFolder + "/.model" + format.ending);
    }
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const SyntheticTrack& track = tracks[index];
        // Half of them FLAC, which carry the pictures.
        const Format& format = formats[index % 2 == 0 ? 0 : 1 + index / 2 % 2];
        const std::string folder = musicFolder + '/' + track.folder;
        std::filesystem::create_directories(folder);
        const std::string path = folder + '/' + numbered(index) + format.ending;
        std::filesystem::copy_file(musicFolder + "/.model" + format.ending, path);
        tagFile(path, track, index % 2 == 0);
    }
}

}  // namespace sonolet::bench
