// sonolet-bench-server: what a page waits for with a music server of 100,000 tracks, and with one
// that has stopped to answer.

#include "BadServer.h"
#include "Figures.h"
#include "Program.h"
#include "service/MusicSession.h"
#include "service/SyntheticMusic.h"

#include "libspotify/api.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sonolet;
using Clock = std::chrono::steady_clock;
using test::BadServer;

constexpr std::size_t serverTracks = 100000;
constexpr std::size_t mostFound = 500;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void logIn(bench::MusicSession& session) {
    session.time([&] { sp_session_login(session.get(), "ann", "secret", false, nullptr); });
    session.until([&] { return session.loggedIn(); });
}

std::shared_ptr<sp_search> ask(bench::MusicSession& session, const std::string& words) {
    std::shared_ptr<sp_search> search;
    session.time([&] {
        search.reset(sp_search_create(session.get(), words.c_str(), 0, 20, 0, 20, 0, 20, 0, 0,
                                      SP_SEARCH_STANDARD, nullptr, nullptr),
                     sp_search_release);
    });
    return search;
}

// All that a page can change of lists and stars, each of which waits to be told to the server.
void changeLists(bench::MusicSession& session, sp_playlist* list, sp_track* track) {
    sp_track* const tracks[] = {track, track, track};
    const int before = sp_playlist_num_tracks(list);
    session.time([&] { sp_playlist_add_tracks(list, tracks, 3, 0, session.get()); });
    session.time([&] { sp_track_set_starred(session.get(), tracks, 1, true); });
    session.time([&] { sp_track_set_starred(session.get(), tracks, 1, false); });
    if (sp_playlist_num_tracks(list) != before + 3) {
        throw std::runtime_error("a list was not changed");
    }
}

// What a server finds that looks at every title.
std::string found(const std::vector<bench::SyntheticTrack>& tracks, const std::string& head) {
    const std::string words = BadServer::parameter(head, "query");
    const std::size_t count = std::min<std::size_t>(
        std::strtoul(BadServer::parameter(head, "songCount").c_str(), nullptr, 10), mostFound);
    std::size_t skipped =
        std::strtoul(BadServer::parameter(head, "songOffset").c_str(), nullptr, 10);
    std::string songs;
    std::size_t listed = 0;
    for (std::size_t i = 0; i < tracks.size() && listed < count; ++i) {
        const bench::SyntheticTrack& track = tracks[i];
        if (track.title.find(words) == std::string::npos || (skipped > 0 && skipped-- > 0)) {
            continue;
        }
        songs += (listed++ == 0 ? "" : ",") + (R"({"id":"t)" + std::to_string(i)) +
                 R"(","title":")" + track.title + R"(","album":")" + track.album +
                 R"(","albumId":"l)" + track.album + R"(","artist":")" + track.artist +
                 R"(","artistId":"r)" + track.artist + R"(","duration":200,"suffix":"mp3"})";
    }
    return BadServer::envelope(R"("searchResult3":{"song":[)" + songs + "]}");
}

void run(const std::string& root) {
    const auto tracks = bench::syntheticTracks(serverTracks);
    std::string word = tracks[serverTracks / 2].title;
    word = word.substr(0, word.find(' '));
    BadServer server;
    server.answer("ping", [](const std::string&) { return BadServer::envelope(""); });
    const std::string mix = R"({"id":"m1","name":"Mix","owner":"ann"})";
    server.answer("getPlaylists", [&](const std::string&) {
        return BadServer::envelope(R"("playlists":{"playlist":)" + mix + "}");
    });
    server.answer("getPlaylist",
                  [&](const std::string&) { return BadServer::envelope(R"("playlist":)" + mix); });
    server.answer("getStarred2", [](const std::string&) { return BadServer::envelope(""); });
    server.answer("search3", [&](const std::string& head) { return found(tracks, head); });
    // No other thread reads them. NOLINTBEGIN(concurrency-mt-unsafe)
    setenv("SONOLET_SERVER", server.url().c_str(), 1);
    setenv("SONOLET_STATE", (root + "/state").c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)

    for (const char* when : {"new", "known"}) {
        bench::MusicSession session;
        const Clock::time_point start = Clock::now();
        logIn(session);
        const auto search = ask(session, word);
        session.until([&] { return sp_search_is_loaded(search.get()); });
        if (sp_search_num_tracks(search.get()) == 0) {
            throw std::runtime_error("nothing is found");
        }
        figures::report(
            figures::within(std::string("100,000 tracks, login to the first result, ") + when,
                            secondsSince(start), "s", 1));
    }

    auto session = std::make_unique<bench::MusicSession>();
    logIn(*session);
    const auto known = ask(*session, word);
    session->until([&] { return sp_search_is_loaded(known.get()); });
    sp_playlistcontainer* const container = sp_session_playlistcontainer(session->get());
    session->until([&] { return sp_playlistcontainer_num_playlists(container) == 1; });
    sp_playlist* const list = sp_playlistcontainer_playlist(container, 0);
    server.answerAll("");
    session->takeLongest();
    const auto search = ask(*session, "more");
    sp_track* const track = sp_search_track(known.get(), 0);
    const Clock::time_point start = Clock::now();
    int round = 0;
    session->until([&] {
        const std::string link = "spotify:track:000000000000000000000" + std::to_string(round % 10);
        session->time([&] {
            const std::shared_ptr<sp_link> of(sp_link_create_from_string(link.c_str()),
                                              sp_link_release);
            static_cast<void>(sp_track_is_loaded(sp_link_as_track(of.get())));
        });
        session->time(
            [&] { static_cast<void>(sp_session_player_prefetch(session->get(), track)); });
        session->time([&] { static_cast<void>(sp_session_player_load(session->get(), track)); });
        session->time([&] { static_cast<void>(sp_session_connectionstate(session->get())); });
        ++round;
        return secondsSince(start) > 3;
    });
    figures::report(figures::within("the longest call while a server hangs",
                                    session->takeLongest() * 1000, "ms", 1));
    int rounds = 200;
    session->until([&] {
        changeLists(*session, list, track);
        return --rounds == 0;
    });
    figures::report(figures::within("the longest change of a list while a server hangs",
                                    session->takeLongest() * 1000, "ms", 1));
    const Clock::time_point end = Clock::now();
    session.reset();
    figures::report(
        figures::within("the end of a session while a server hangs", secondsSince(end), "s", 0.5));
}

}  // namespace

int main() {
    return figures::runProgram([] {
        // In memory, if it can be: what a disk takes is not the network's.
        const std::filesystem::path memory = "/dev/shm";
        const figures::WorkFolder folder(
            access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path());
        run(folder.path());
    });
}
