// A folder of music that changes while a session runs.

#include "../TestMusic.h"
#include "../TestSession.h"
#include "folder/FolderWatch.h"

namespace sonolet::test {
namespace {

using namespace service;
namespace fs = std::filesystem;

TEST(ChangingFolder, ShowsInASessionThatRuns) {
    const TestMusic music;
    const Folder elsewhere;
    music.add("a/First.wav", "TITLE=First|ARTIST=Ann|ALBUM=Blue");
    TestSession session(TestSession::State::Scanned);
    ASSERT_EQ(session.login("listener", "listener"), SP_ERROR_OK);
    const auto titles = [&] {
        std::set<std::string> sorted;
        const auto found = session.found("ann");
        for (int i = 0; i < sp_search_num_tracks(found.get()); ++i) {
            sorted.insert(sp_track_name(sp_search_track(found.get(), i)) + std::string(" "));
        }
        return std::accumulate(sorted.begin(), sorted.end(), std::string());
    };
    const auto first = trackOf(TestMusic::link("First"));
    const auto lists = [&] {
        return sp_playlistcontainer_num_playlists(sp_session_playlistcontainer(session.get()));
    };
    const struct {
        const char* what;
        std::function<void()> change;
        std::function<bool()> shows;
    } changes[] = {
        {"a file", [&] { music.add("a/Second.wav", "TITLE=Second|ARTIST=Ann"); },
         [&] { return titles() == "First Second "; }},
        {"other tags", [&] { music.add("a/Second.wav", "TITLE=Third of them|ARTIST=Ann"); },
         [&] { return titles() == "First Third of them "; }},
        {"a folder with folders in it",
         [&] {
             music.add("b/c/Fourth.wav", "TITLE=Fourth|ARTIST=Ann");
             music.add("b/c/d/Fifth.wav", "TITLE=Fifth|ARTIST=Ann");
         },
         [&] { return titles() == "Fifth First Fourth Third of them "; }},
        {"a file in a new folder", [&] { music.add("b/c/d/Sixth.wav", "TITLE=Sixth|ARTIST=Ann"); },
         [&] { return titles() == "Fifth First Fourth Sixth Third of them "; }},
        {"a playlist file", [&] { music.write("all.m3u", "a/First.wav\nb/c/Fourth.wav\n"); },
         [&] { return lists() == 1; }},
        {"a folder that goes", [&] { fs::rename(music.path("b"), elsewhere.path("b")); },
         [&] { return titles() == "First Third of them "; }},
        {"a file that goes", [&] { fs::remove(music.path("a/First.wav")); },
         [&] {
             return sp_track_get_availability(session.get(), first.get()) ==
                    SP_TRACK_AVAILABILITY_UNAVAILABLE;
         }},
        {"all comes back",
         [&] {
             music.add("a/First.wav", "TITLE=First|ARTIST=Ann|ALBUM=Blue");
             fs::rename(elsewhere.path("b"), music.path("b"));
         },
         [&] { return titles() == "Fifth First Fourth Sixth Third of them "; }},
        {"a file through a link",
         [&] {
             fs::create_directory_symlink(elsewhere.path(""), music.path("linked"));
             fs::rename(music.path("a/Second.wav"), elsewhere.path("Second.wav"));
         },
         [&] { return titles() == "Fifth First Fourth Sixth Third of them "; }},
    };
    const std::size_t told = session.heard("metadata");
    for (const auto& each : changes) {
        each.change();
        EXPECT_TRUE(session.until(each.shows)) << each.what << '\n' << session.log;
    }
    // Of the playlist its container tells.
    EXPECT_TRUE(session.untilHeard("metadata", told + std::size(changes) - 1));
}

// What cannot be watched is looked at again and again, what happened before it is watched is told.
TEST(FolderWatch, TellsWhatTheKernelDoesNot) {
    const Folder folder;
    folder.write("deep/one.mp3", "");
    std::mutex mutex;
    std::condition_variable called;
    int told = 0;
    const auto tell = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        ++told;
        called.notify_one();
    };
    const auto untilTold = [&](int times) {
        std::unique_lock<std::mutex> lock(mutex);
        return called.wait_for(lock, std::chrono::minutes(5), [&] { return told >= times; });
    };
    FolderWatch::Limits limits;
    limits.begin = limits.quiet = limits.rescan = std::chrono::milliseconds(10);
    limits.folders = 1;
    {
        const FolderWatch partial(folder.path(""), INT64_MAX, tell, limits);
        EXPECT_TRUE(untilTold(3));
    }
    limits.folders = 100;
    limits.rescan = std::chrono::hours(1);
    told = 0;
    {
        const FolderWatch late(folder.path(""), 0, tell, limits);
        EXPECT_TRUE(untilTold(1)) << "it has changed since 1970";
        // What is moved there is one event.
        const Folder elsewhere;
        const auto put = [&](const std::string& name) {
            fs::rename(elsewhere.write(name, ""), folder.path("deep/" + name));
        };
        put("notes.txt");
        put(".hidden.mp3");
        put("cover.JPG");
        EXPECT_TRUE(untilTold(2));
        put("two.mp3");
        EXPECT_TRUE(untilTold(3));
    }
    EXPECT_EQ(told, 3);
    const FolderWatch brief(folder.path(""), 0, tell, FolderWatch::Limits());  // ends at once
}

}  // namespace
}  // namespace sonolet::test
