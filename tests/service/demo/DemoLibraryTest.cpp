#include "demo/DemoLibrary.h"

#include "../player/TestFiles.h"
#include "Catalogue.h"
#include "Scanner.h"
#include "demo/Repertoire.h"

#include <flacfile.h>
#include <gmock/gmock.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace sonolet::service {
namespace {

using namespace sonolet::test;
using testing::StartsWith;

std::map<std::string, fs::file_time_type> filesIn(const fs::path& folder) {
    std::map<std::string, fs::file_time_type> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        files[entry.path()] = entry.last_write_time();
    }
    return files;
}

struct DemoLibraryTest : testing::Test {
    TestFiles files;
    const fs::path library = files.path("demo");
};

TEST_F(DemoLibraryTest, HoldsTheRepertoireWithTagsCoversAndSound) {
    ASSERT_TRUE(makeDemoLibrary(library));
    std::set<Samples> tunes;
    std::set<std::string> covers;
    for (const DemoAlbum& album : repertoire()) {
        const fs::path folder = library / album.folder();
        std::ifstream beside(folder / "cover.jpg", std::ios::binary);
        std::string cover((std::istreambuf_iterator<char>(beside)), {});
        for (const DemoTrack& track : album.tracks) {
            const fs::path path = folder / album.fileName(track);
            SCOPED_TRACE(path);
            TagLib::FLAC::File flac(path.c_str());
            TagLib::Ogg::Vorbis::File vorbis(path.c_str());
            ASSERT_NE(flac.isValid(), vorbis.isValid());
            TagLib::File& file = flac.isValid() ? static_cast<TagLib::File&>(flac) : vorbis;
            const TagLib::PropertyMap tags = file.properties();
            EXPECT_EQ(tags["TITLE"].toString(), track.title);
            EXPECT_EQ(tags["ARTIST"].toString(), track.artist);
            EXPECT_EQ(tags["ALBUM"].toString(), album.title);
            EXPECT_EQ(tags["ALBUMARTIST"].toString(), album.artist);
            EXPECT_EQ(tags["DISCNUMBER"].toString(), std::to_string(track.disc).c_str());
            EXPECT_EQ(file.tag()->year(), static_cast<unsigned>(album.year));
            EXPECT_EQ(file.tag()->track(), static_cast<unsigned>(track.number));
            EXPECT_NEAR(file.audioProperties()->lengthInMilliseconds(), 14000, 6000);

            const auto pictures = flac.isValid() ? flac.pictureList() : vorbis.tag()->pictureList();
            ASSERT_EQ(pictures.size(), album.coverBesides ? 0U : 1U);
            if (!album.coverBesides) {
                cover.assign(pictures[0]->data().data(), pictures[0]->data().size());
            }
            EXPECT_THAT(cover, StartsWith("\xff\xd8\xff"));
            EXPECT_LT(cover.size(), 40000U);
            covers.insert(cover);

            const Samples sound = play(track.score);
            const auto [low, high] = std::minmax_element(sound.begin(), sound.end());
            EXPECT_NEAR(*high, 16000, 14000);
            EXPECT_NEAR(*low, -16000, 14000);
            EXPECT_LT(std::abs(sound.front()) + std::abs(sound.back()), 500) << "no clicks";
            tunes.insert(sound);
        }
    }
    EXPECT_EQ(tunes.size(), 12U);
    EXPECT_EQ(covers.size(), 4U) << "each album has a cover of its own";
}

TEST_F(DemoLibraryTest, TouchesNoOtherFolderAndIsMadeOnceAndMended) {
    files.write("other/song.txt", "mine");
    for (const std::string& path :
         {files.path("other"), files.path("other/song.txt"), std::string("/proc/demo")}) {
        EXPECT_THROW(makeDemoLibrary(path), std::runtime_error) << path;
    }
    EXPECT_EQ(filesIn(files.path("other")).size(), 1U);

    ASSERT_TRUE(makeDemoLibrary(library));
    const auto made = filesIn(library);
    EXPECT_FALSE(makeDemoLibrary(library.string() + "/"));
    EXPECT_EQ(filesIn(library), made);

    const DemoAlbum& album = repertoire().front();
    const fs::path first = library / album.folder() / album.fileName(album.tracks.front());
    ASSERT_TRUE(fs::remove(first));
    files.write("demo/mine.txt", "kept");
    EXPECT_TRUE(makeDemoLibrary(library));
    EXPECT_EQ(filesIn(library).size(), made.size() + 1);
    EXPECT_FALSE(makeDemoLibrary(library));
    EXPECT_EQ(std::distance(fs::directory_iterator(library.parent_path()), {}), 2)
        << "no work is left beside it";
}

// A link is a digest of tags, so a changed tag would leave pages and README pointing nowhere. They
// give each link with its title in quotes behind it.
TEST_F(DemoLibraryTest, HoldsTheTracksThatPagesLinkTo) {
    ASSERT_TRUE(makeDemoLibrary(library));
    Catalogue catalogue(files.path("catalogue"));
    std::promise<void> finished;
    const ScanEvents events{[](const std::string&) {}, [&finished] { finished.set_value(); }};
    const Scanner scanner(library, files.path("catalogue"), events);
    finished.get_future().wait();

    std::vector<fs::path> texts{PROJECT_FOLDER "/README.md"};
    texts.insert(texts.end(), fs::directory_iterator(PROJECT_FOLDER "/pages"), {});
    std::size_t found = 0;
    for (const fs::path& path : texts) {
        std::ifstream text(path);
        for (std::string line; std::getline(text, line);) {
            const std::size_t at = line.find("spotify:track:");
            const std::size_t title = line.find("// \"", at);
            if (at != std::string::npos && title != std::string::npos) {
                const auto id = Id::fromText(line.substr(at + 14, Id::textLength));
                const auto track = catalogue.track(id.value_or(Id()));
                ASSERT_TRUE(track) << path << ": " << line;
                EXPECT_EQ(line.compare(title + 4, track->title.size() + 1, track->title + '"'), 0)
                    << line;
                ++found;
            }
        }
    }
    EXPECT_GE(found, 3U);
}

}  // namespace
}  // namespace sonolet::service
