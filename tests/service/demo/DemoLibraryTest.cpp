#include "demo/DemoLibrary.h"

#include "../player/TestFiles.h"
#include "catalogue/Catalogue.h"
#include "catalogue/Scanner.h"
#include "demo/Repertoire.h"

namespace fs = std::filesystem;

namespace sonolet::service {
namespace {

using namespace sonolet::test;

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

TEST_F(DemoLibraryTest, TouchesNoOtherFolderIsMadeOnceIsMendedAndHoldsTheRepertoire) {
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

    const DemoAlbum& opener = repertoire().front();
    const fs::path first = library / opener.folder() / opener.fileName(opener.tracks.front());
    ASSERT_TRUE(fs::remove(first));
    files.write("demo/mine.txt", "kept");
    EXPECT_TRUE(makeDemoLibrary(library));
    EXPECT_EQ(filesIn(library).size(), made.size() + 1);
    EXPECT_FALSE(makeDemoLibrary(library));
    EXPECT_EQ(std::distance(fs::directory_iterator(library.parent_path()), {}), 2)
        << "no work is left beside it";

    Catalogue catalogue(files.path("catalogue"));
    std::promise<void> finished;
    ScanEvents events;
    events.log = [](const std::string&) {};
    events.finished = [&finished](bool) { finished.set_value(); };
    const Scanner scanner(library, files.path("catalogue"), events);
    finished.get_future().wait();

    using Tags =
        std::tuple<std::string, std::string, std::string, std::string, std::string, int, int, int>;
    std::set<Tags> scanned;
    std::set<std::string> covers;
    for (const Id& id : catalogue.tracks()) {
        const TrackRow track = catalogue.track(id).value();
        const AlbumRow album = catalogue.album(track.album).value();
        scanned.emplace(track.path, track.title, catalogue.artist(track.artists.at(0))->name,
                        album.name, catalogue.artist(album.artist)->name, album.year, track.disc,
                        track.number);
        covers.insert(album.cover);
        EXPECT_NEAR(track.durationMs, 14000, 6000) << track.title;
    }
    EXPECT_EQ(covers.size() - covers.count(""), 4U) << "each album has a cover of its own";
    std::set<Tags> written;
    std::set<Samples> tunes;
    for (const DemoAlbum& album : repertoire()) {
        for (const DemoTrack& track : album.tracks) {
            written.emplace(album.folder() + '/' + album.fileName(track), track.title, track.artist,
                            album.title, album.artist, album.year, track.disc, track.number);
            const Samples sound = play(track.score);
            const auto [low, high] = std::minmax_element(sound.begin(), sound.end());
            EXPECT_NEAR(*high, 16000, 14000) << track.title;
            EXPECT_NEAR(*low, -16000, 14000) << track.title;
            EXPECT_LT(std::abs(sound.front()) + std::abs(sound.back()), 500) << "a click";
            tunes.insert(sound);
        }
    }
    EXPECT_EQ(scanned, written);
    EXPECT_EQ(tunes.size(), 12U);
}

}  // namespace
}  // namespace sonolet::service
