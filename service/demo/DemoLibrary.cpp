#include "demo/DemoLibrary.h"

#include "demo/Cover.h"
#include "demo/Encoder.h"
#include "demo/Repertoire.h"

#include <flacfile.h>
#include <flacpicture.h>
#include <stdlib.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace sonolet::service {

namespace {

// The list of what is in the library. It is written last, so a library that has it is whole.
constexpr const char* contentsFile = "Contents.txt";
constexpr const char* contentsTitle = "The demo library of Sonolet. Every note is made by rule.\n";

// Counts up when tunes or pictures change without their names.
constexpr int edition = 1;

std::vector<fs::path> filesOfLibrary() {
    std::vector<fs::path> files;
    for (const DemoAlbum& album : repertoire()) {
        for (const DemoTrack& track : album.tracks) {
            files.push_back(fs::path(album.folder()) / album.fileName(track));
        }
        if (album.coverBesides) {
            files.push_back(fs::path(album.folder()) / "cover.jpg");
        }
    }
    return files;
}

std::string contents() {
    std::string text = contentsTitle + ("Edition " + std::to_string(edition)) + "\n\n";
    for (const fs::path& file : filesOfLibrary()) {
        text += file.string() + '\n';
    }
    return text;
}

std::string textOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool isComplete(const fs::path& folder) {
    for (const fs::path& file : filesOfLibrary()) {
        if (!fs::is_regular_file(folder / file)) {
            return false;
        }
    }
    return textOf(folder / contentsFile) == contents();
}

// A folder beside the library's that goes away unless it becomes the library.
class Workshop final {
public:
    explicit Workshop(const fs::path& library) {
        sweep(library);
        std::string name = library.string() + ".new-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error(library.parent_path().string() + ": cannot be written to");
        }
        folder = name;
        fs::permissions(folder, fs::perms(0755));
    }
    ~Workshop() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;

    fs::path folder;

private:
    // Removes what runs that were killed have left; a run takes seconds.
    static void sweep(const fs::path& library) {
        const std::string prefix = library.filename().string() + ".new-";
        const auto old = fs::file_time_type::clock::now() - std::chrono::minutes(10);
        for (const fs::directory_entry& entry : fs::directory_iterator(library.parent_path())) {
            const bool left = entry.path().filename().string().rfind(prefix, 0) == 0;
            if (left && entry.last_write_time() < old) {
                std::error_code ignored;
                fs::remove_all(entry.path(), ignored);
            }
        }
    }
};

TagLib::String utf8(const std::string& text) {
    return TagLib::String(text, TagLib::String::UTF8);
}

TagLib::PropertyMap tagsOf(const DemoAlbum& album, const DemoTrack& track) {
    const auto set = [](TagLib::PropertyMap& map, const char* key, const std::string& value) {
        map.insert(key, TagLib::StringList(utf8(value)));
    };
    TagLib::PropertyMap tags;
    set(tags, "TITLE", track.title);
    set(tags, "ARTIST", track.artist);
    set(tags, "ALBUM", album.title);
    set(tags, "ALBUMARTIST", album.artist);
    set(tags, "DATE", std::to_string(album.year));
    set(tags, "TRACKNUMBER", std::to_string(track.number));
    set(tags, "DISCNUMBER", std::to_string(track.disc));
    if (album.compilation) {
        set(tags, "COMPILATION", "1");
    }
    return tags;
}

// FLAC::File and Ogg::Vorbis::File keep tags the same way and pictures in different places.
template <typename File, typename Holder>
void tagFile(File& file,
             Holder& pictures,
             const TagLib::PropertyMap& tags,
             const std::string& cover) {
    file.setProperties(tags);
    if (!cover.empty()) {
        auto picture = std::make_unique<TagLib::FLAC::Picture>();
        picture->setType(TagLib::FLAC::Picture::FrontCover);
        picture->setMimeType("image/jpeg");
        picture->setWidth(coverSize);
        picture->setHeight(coverSize);
        picture->setColorDepth(24);
        picture->setData(TagLib::ByteVector(cover.data(), static_cast<unsigned>(cover.size())));
        pictures.addPicture(picture.release());  // the holder's from here on
    }
    if (!file.save()) {
        throw std::runtime_error(std::string(file.name()) + ": tags cannot be written");
    }
}

void writeTrack(const DemoAlbum& album,
                const DemoTrack& track,
                const std::string& cover,
                const fs::path& path) {
    const std::vector<std::int16_t> samples = play(track.score);
    encode(samples.data(), samples.size() * sizeof samples.front(),
           "audio/x-raw, format=S16LE, layout=interleaved, rate=44100, channels=2",
           album.lossless ? "audioconvert ! flacenc"
                          : "audioconvert ! vorbisenc quality=0.6 ! oggmux",
           path.string());
    if (album.lossless) {
        TagLib::FLAC::File file(path.c_str());
        tagFile(file, file, tagsOf(album, track), cover);
    } else {
        TagLib::Ogg::Vorbis::File file(path.c_str());
        if (file.tag() == nullptr) {
            throw std::runtime_error(path.string() + ": was not encoded");
        }
        tagFile(file, *file.tag(), tagsOf(album, track), cover);
    }
}

void writeAlbum(const DemoAlbum& album, const fs::path& library) {
    const fs::path folder = library / album.folder();
    fs::create_directories(folder);
    const fs::path picture = folder / "cover.jpg";
    writeCover(album, picture.string());
    std::string embedded;
    if (!album.coverBesides) {
        embedded = textOf(picture);
        fs::remove(picture);
    }
    for (const DemoTrack& track : album.tracks) {
        writeTrack(album, track, embedded, folder / album.fileName(track));
    }
}

}  // namespace

bool makeDemoLibrary(const std::string& folder) {
    fs::path library = fs::absolute(folder).lexically_normal();
    if (library.filename().empty()) {
        library = library.parent_path();  // the name ended in a slash
    }
    if (fs::exists(library)) {
        if (isComplete(library)) {
            return false;
        }
        const bool ours = textOf(library / contentsFile).rfind(contentsTitle, 0) == 0;
        if (!fs::is_directory(library) || (!ours && !fs::is_empty(library))) {
            throw std::runtime_error(library.string() +
                                     ": holds something else than the demo library");
        }
    }
    fs::create_directories(library.parent_path());
    const Workshop workshop(library);
    for (const DemoAlbum& album : repertoire()) {
        writeAlbum(album, workshop.folder);
    }
    std::ofstream(workshop.folder / contentsFile, std::ios::binary) << contents();

    if (!fs::exists(library) || fs::is_empty(library)) {
        fs::rename(workshop.folder, library);
        return true;
    }
    for (const fs::path& file : filesOfLibrary()) {
        fs::create_directories((library / file).parent_path());
        fs::rename(workshop.folder / file, library / file);
    }
    fs::rename(workshop.folder / contentsFile, library / contentsFile);
    return true;
}

}  // namespace sonolet::service
