// sonolet-bench-server: what a page waits for with a music server of 100,000 tracks, and with one
// that has stopped to answer.

#include "BadServer.h"
#include "Figures.h"
#include "SyntheticMusic.h"

#include "libspotify/api.h"

#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
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

// How often the processor was taken from this thread though it could go on.
long timesTakenAway() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nivcsw;
}

// A session whose owner measures each call of the library.
class TimedSession final {
public:
    TimedSession() {
        callbacks.notify_main_thread = [](sp_session* caller) {
            if (auto* self = static_cast<TimedSession*>(sp_session_userdata(caller))) {
                const std::lock_guard<std::mutex> lock(self->mutex);
                self->notified = true;
                self->called.notify_one();
            }
        };
        callbacks.logged_in = [](sp_session* caller, sp_error error) {
            static_cast<TimedSession*>(sp_session_userdata(caller))->loggedIn =
                error == SP_ERROR_OK;
        };
        sp_session_config config{};
        config.api_version = SPOTIFY_API_VERSION;
        config.application_key = "key";
        config.application_key_size = 3;
        config.user_agent = "bench";
        config.callbacks = &callbacks;
        config.userdata = this;
        if (sp_session_create(&config, &session) != SP_ERROR_OK) {
            throw std::runtime_error("no session");
        }
    }
    ~TimedSession() { sp_session_release(session); }
    TimedSession(const TimedSession&) = delete;
    TimedSession& operator=(const TimedSession&) = delete;

    void logIn() {
        time([&] { sp_session_login(session, "ann", "secret", false, nullptr); });
        until([&] { return loggedIn; });
    }
    std::shared_ptr<sp_search> ask(const std::string& words) {
        std::shared_ptr<sp_search> search;
        time([&] {
            search.reset(sp_search_create(session, words.c_str(), 0, 20, 0, 20, 0, 20, 0, 0,
                                          SP_SEARCH_STANDARD, nullptr, nullptr),
                         sp_search_release);
        });
        return search;
    }
    void until(const std::function<bool()>& condition) {
        constexpr int often = 20;  // milliseconds
        for (int timeout = 0; !condition();) {
            std::unique_lock<std::mutex> lock(mutex);
            called.wait_for(lock, std::chrono::milliseconds(std::min(timeout, often)),
                            [this] { return notified; });
            notified = false;
            lock.unlock();
            time([&] { sp_session_process_events(session, &timeout); });
        }
    }
    template <typename Call>
    void time(Call call) {
        const long before = timesTakenAway();
        const Clock::time_point start = Clock::now();
        call();
        const double taken = secondsSince(start);
        // A busy machine is not the network.
        if (timesTakenAway() == before) {
            longest = std::max(longest, taken);
        }
    }

    sp_session* session = nullptr;
    double longest = 0;  // seconds

private:
    sp_session_callbacks callbacks{};
    bool loggedIn = false;
    std::mutex mutex;
    std::condition_variable called;
    bool notified = false;
};

// All that a page can change of lists and stars, each of which waits to be told to the server.
void changeLists(TimedSession& timed, sp_playlist* list, sp_track* track) {
    sp_track* const tracks[] = {track, track, track};
    const int before = sp_playlist_num_tracks(list);
    timed.time([&] { sp_playlist_add_tracks(list, tracks, 3, 0, timed.session); });
    timed.time([&] { sp_track_set_starred(timed.session, tracks, 1, true); });
    timed.time([&] { sp_track_set_starred(timed.session, tracks, 1, false); });
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
        TimedSession session;
        const Clock::time_point start = Clock::now();
        session.logIn();
        const auto search = session.ask(word);
        session.until([&] { return sp_search_is_loaded(search.get()); });
        if (sp_search_num_tracks(search.get()) == 0) {
            throw std::runtime_error("nothing is found");
        }
        figures::report(
            figures::within(std::string("100,000 tracks, login to the first result, ") + when,
                            secondsSince(start), "s", 1));
    }

    auto session = std::make_unique<TimedSession>();
    session->logIn();
    const auto known = session->ask(word);
    session->until([&] { return sp_search_is_loaded(known.get()); });
    sp_playlistcontainer* const container = sp_session_playlistcontainer(session->session);
    session->until([&] { return sp_playlistcontainer_num_playlists(container) == 1; });
    sp_playlist* const list = sp_playlistcontainer_playlist(container, 0);
    server.answerAll("");
    session->longest = 0;
    const auto search = session->ask("more");
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
            [&] { static_cast<void>(sp_session_player_prefetch(session->session, track)); });
        session->time([&] { static_cast<void>(sp_session_player_load(session->session, track)); });
        session->time([&] { static_cast<void>(sp_session_connectionstate(session->session)); });
        ++round;
        return secondsSince(start) > 3;
    });
    figures::report(
        figures::within("the longest call while a server hangs", session->longest * 1000, "ms", 1));
    session->longest = 0;
    int rounds = 200;
    session->until([&] {
        changeLists(*session, list, track);
        return --rounds == 0;
    });
    figures::report(figures::within("the longest change of a list while a server hangs",
                                    session->longest * 1000, "ms", 1));
    const Clock::time_point end = Clock::now();
    session.reset();
    figures::report(
        figures::within("the end of a session while a server hangs", secondsSince(end), "s", 0.5));
}

}  // namespace

int main() {
    // In memory, if it can be: what a disk takes is not the network's.
    const std::filesystem::path memory = "/dev/shm";
    const std::string root =
        (access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) /
        ("sonolet-bench-" + std::to_string(getpid()));
    int status = 0;
    try {
        std::filesystem::create_directories(root);
        run(root);
    } catch (const std::exception& error) {
        std::cerr << "sonolet-bench-server: " << error.what() << '\n';
        status = 1;
    }
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    return status;
}
