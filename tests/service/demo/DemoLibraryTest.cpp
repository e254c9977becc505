#include "demo/DemoLibrary.h"

#include "../player/TestFiles.h"
#include "demo/Repertoire.h"
#include "player/Decoder.h"

#include <flacfile.h>
#include <gmock/gmock.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <set>

namespace fs = std::filesystem;

namespace sonolet::service {
namespace {

using sonolet::test::Samples;
using sonolet::test::TestFiles;
using testing::StartsWith;

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::map<std::string, fs::file_time_type> filesIn(const fs::path& folder) {
    std::map<std::string, fs::file_time_type> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files[fs::relative(entry.path(), folder)] = entry.last_write_time();
        }
    }
    return files;
}

Samples decode(const std::string& path) {
    std::mutex mutex;
    std::condition_variable wake;
    bool ready = true;
    Samples all;
    Decoder decoder(path, [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        ready = true;
        wake.notify_all();
    });
    for (;;) {
        std::int16_t some[4096];
        const Decoder::Outcome outcome = decoder.read(some, 2048);
        all.insert(all.end(), some, some + 2 * outcome.frames);
        if (outcome.status == Decoder::Status::NotYet) {
            std::unique_lock<std::mutex> lock(mutex);
            wake.wait(lock, [&] { return ready; });
            ready = false;
        } else if (outcome.status != Decoder::Status::Data) {
            return all;
        }
    }
}

class DemoLibraryTest : public testing::Test {
protected:
    TestFiles files;
    const fs::path library = files.path("demo");
};

TEST_F(DemoLibraryTest, HoldsTheRepertoireWithTagsAndCovers) {
    ASSERT_TRUE(makeDemoLibrary(library));
    std::size_t tracks = 0;
    std::set<std::string> covers;
    for (const DemoAlbum& album : repertoire()) {
        const fs::path folder = library / album.folder();
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
            EXPECT_EQ(file.tag()->year(), static_cast<unsigned>(album.year));
            EXPECT_EQ(file.tag()->track(), static_cast<unsigned>(track.number));
            EXPECT_EQ(tags["DISCNUMBER"].toString(), std::to_string(track.disc).c_str());
            EXPECT_GE(file.audioProperties()->lengthInMilliseconds(), 8000);
            EXPECT_LE(file.audioProperties()->lengthInMilliseconds(), 20000);

            const auto pictures = flac.isValid() ? flac.pictureList() : vorbis.tag()->pictureList();
            ASSERT_EQ(pictures.size(), album.coverBesides ? 0U : 1U);
            const std::string cover = album.coverBesides ? bytesOf(folder / "cover.jpg")
                                                         : std::string(pictures[0]->data().data(),
                                                                       pictures[0]->data().size());
            EXPECT_THAT(cover, StartsWith("\xff\xd8\xff"));
            EXPECT_LT(cover.size(), 40000U);
            covers.insert(cover);
            ++tracks;
        }
    }
    EXPECT_EQ(tracks, 12U);
    EXPECT_EQ(covers.size(), 4U) << "each album has a cover of its own";
}

TEST_F(DemoLibraryTest, EveryTuneSoundsAndKeepsBelowFullScale) {
    std::set<Samples> tunes;
    for (const DemoAlbum& album : repertoire()) {
        for (const DemoTrack& track : album.tracks) {
            SCOPED_TRACE(track.title);
            const Samples sound = play(track.score);
            const auto [low, high] = std::minmax_element(sound.begin(), sound.end());
            EXPECT_LT(*high, 30000);
            EXPECT_GT(*low, -30000);
            // Not one second of silence, but for the last ringing out, and no offset.
            double sum = 0;
            for (std::size_t second = 0; second < sound.size() / 88200 - 1; ++second) {
                double power = 0;
                for (std::size_t i = second * 88200; i < (second + 1) * 88200; ++i) {
                    power += static_cast<double>(sound[i]) * sound[i];
                    sum += sound[i];
                }
                EXPECT_GT(std::sqrt(power / 88200), 500) << "second " << second;
            }
            EXPECT_LT(std::abs(sum / static_cast<double>(sound.size())), 50);
            EXPECT_LT(std::abs(sound.front()), 500) << "no click at the start";
            EXPECT_LT(std::abs(sound.back()), 50) << "nor at the end";
            tunes.insert(sound);
        }
    }
    EXPECT_EQ(tunes.size(), 12U);
}

TEST_F(DemoLibraryTest, IsLeftAloneOnceItStandsAndMendedWhenItDoesNot) {
    ASSERT_TRUE(makeDemoLibrary(library));
    const auto made = filesIn(library);
    EXPECT_FALSE(makeDemoLibrary(library.string() + "/"));
    EXPECT_EQ(filesIn(library), made);

    const DemoAlbum& album = repertoire().front();
    const DemoTrack& track = album.tracks.front();
    const fs::path first = library / album.folder() / album.fileName(track);
    EXPECT_TRUE(decode(first) == play(track.score)) << "lossless, and the same every time";
    fs::remove(first);
    std::ofstream(library / "mine.txt") << "kept";
    EXPECT_TRUE(makeDemoLibrary(library));
    EXPECT_TRUE(fs::exists(first));
    EXPECT_EQ(filesIn(library).size(), made.size() + 1);
    EXPECT_FALSE(makeDemoLibrary(library));

    // Nothing else is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(library.parent_path()), {}), 1);
}

TEST_F(DemoLibraryTest, TouchesNoFolderOfAnythingElse) {
    fs::create_directory(library);
    std::ofstream(library / "song.txt") << "mine";
    EXPECT_THROW(makeDemoLibrary(library), std::runtime_error);
    EXPECT_EQ(filesIn(library).size(), 1U);
    EXPECT_THROW(makeDemoLibrary(files.write("file", "")), std::runtime_error);
    EXPECT_THROW(makeDemoLibrary("/proc/nowhere/demo"), std::runtime_error);
}

}  // namespace
}  // namespace sonolet::service
