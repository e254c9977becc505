#ifndef SONOLET_TESTS_SERVICE_SERVER_ONE_SONG_H
#define SONOLET_TESTS_SERVICE_SERVER_ONE_SONG_H

#include "../TestMusic.h"
#include "../TestSession.h"
#include "BadServer.h"
#include "subsonic/Subsonic.h"

#include <gmock/gmock.h>

namespace sonolet::test {

using service::ServerLogin;

// A session with a server that knows one song, and logins by token.
struct OneSong : testing::Test {
    OneSong() {
        // NOLINTBEGIN(concurrency-mt-unsafe): no other thread is there yet
        setenv("SONOLET_SERVER", server.url().c_str(), 1);
        bePatient("60");
        setenv("SONOLET_SERVER_LOOK", "0", 1);
        // NOLINTEND(concurrency-mt-unsafe)
        server.answer("ping", [](const std::string& head) {
            const std::string salt = BadServer::parameter(head, "s");
            const std::string token = BadServer::parameter(head, "t");
            return token == ServerLogin::tokenOf("s\xc3\xa9same", salt) && salt.size() >= 6
                       ? BadServer::envelope("")
                       : BadServer::failure(40);
        });
        server.answer("search3", [](const std::string& head) {
            const bool first = BadServer::parameter(head, "songOffset") == "0";
            return BadServer::envelope(R"("searchResult3":{)" +
                                       (first ? R"("song":)" + song + "}" : std::string("}")));
        });
        server.answer("getSong", [](const std::string& head) {
            return BadServer::parameter(head, "id") == "7"
                       ? BadServer::envelope(R"("song":)" + song)
                       : BadServer::failure(70);
        });
        server.answer("scrobble", [this](const std::string& head) {
            plays += BadServer::parameter(head, "id") + ' ' +
                     BadServer::parameter(head, "submission") + ';';
            return BadServer::envelope("");
        });
        // As if it were the login that is wrong.
        server.answer("getUsers", [](const std::string&) { return BadServer::failure(40); });
        server.answer("getAlbum", [](const std::string&) { return BadServer::failure(70); });
        server.answer("download", [this](const std::string& head) { return part(head); });
    }
    ~OneSong() override {
        // NOLINTBEGIN(concurrency-mt-unsafe): the session has ended its threads
        unsetenv("SONOLET_SERVER");
        unsetenv("SONOLET_SERVER_PATIENCE");
        unsetenv("SONOLET_SERVER_PLAIN");
        unsetenv("SONOLET_SERVER_LOOK");
        // NOLINTEND(concurrency-mt-unsafe)
    }

    // In seconds, for sessions to come. The first connection that is encrypted takes one by itself
    // where the machine is busy.
    static void bePatient(const char* seconds) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no session is there
        setenv("SONOLET_SERVER_PATIENCE", seconds, 1);
    }

    // As many bytes as are to come at once.
    std::string part(const std::string& head) const { return part(head, file, most); }
    static std::string part(const std::string& head, const std::string& of, std::size_t atOnce) {
        const std::size_t from = partFrom(head);
        const std::string whole = of.substr(from);
        const std::string about = "Content-Range: bytes " + std::to_string(from) + "-" +
                                  std::to_string(of.size() - 1) + "/" + std::to_string(of.size()) +
                                  "\r\n";
        const std::string sent =
            BadServer::reply(whole, "206 Partial Content", "audio/x-wav", about);
        return whole.size() > atOnce ? sent.substr(0, sent.size() - whole.size() + atOnce) : sent;
    }
    static std::size_t partFrom(const std::string& head) {
        const std::size_t range = head.find("Range: bytes=");
        return range == std::string::npos ? 0
                                          : std::strtoul(head.c_str() + range + 13, nullptr, 10);
    }
    std::string contents(const Samples& of) const {
        std::ifstream stream(files.writeWav("song.wav", of), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // Logs in, and what is found first.
    sp_track* enter(TestSession& session) {
        EXPECT_EQ(session.login("ann", "s\xc3\xa9same"), SP_ERROR_OK);
        lastFound = session.found("1999");
        return sp_search_track(lastFound.get(), 0);
    }
    static void play(TestSession& session, sp_track* track) {
        session.delivered.clear();
        session.ended = false;
        ASSERT_EQ(sp_session_player_load(session.get(), track), SP_ERROR_OK);
        ASSERT_EQ(sp_session_player_play(session.get(), true), SP_ERROR_OK);
        ASSERT_TRUE(session.until([&] { return session.ended.load(); })) << session.log;
    }
    // What is kept of each server that there was.
    static std::vector<std::string> storeFiles() {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(TestMusic::paths().settings)) {
            const std::string name = entry.path().filename();
            if (name.rfind("server-", 0) == 0 && entry.path().extension() == ".db" &&
                name.find("-lists") == std::string::npos) {
                files.push_back(entry.path());
            }
        }
        return files;
    }
    // What a query is answered with.
    sp_error ask(TestSession& session, const char* words) {
        return sp_search_error(session.found(words).get());
    }

    // A number for an id, a title that is a number, no size: servers differ.
    static inline const std::string song =
        R"({"id":7,"title":1999,"album":"Blue","albumId":"al-1","artist":"Ann","artistId":"ar-1",)"
        R"("duration":"2","suffix":"WAV","track":3,"playCount":null})";

    TestMusic music;
    TestFiles files;
    const Samples sound = numbered(5, 88200);
    const std::string file = contents(sound);
    std::shared_ptr<sp_search> lastFound;
    std::size_t most = std::string::npos;
    std::string plays;  // to be read once the session is gone
    BadServer server;
};

}  // namespace sonolet::test

#endif
