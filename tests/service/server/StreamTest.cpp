// Music of a server: what of it is asked for, when, and what stays of it.

#include "OneSong.h"

namespace sonolet::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Gt;

const std::string away = "HTTP/1.1 503 Away\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";

struct StreamTest : OneSong {
    // Which part is asked for; where those began that were asked for before it.
    using Answer = std::function<std::string(const std::string& head, std::size_t number)>;
    void answerParts(const Answer& with) {
        server.answer("download", [this, with](const std::string& head) {
            const std::lock_guard<std::mutex> lock(mutex);
            asked.push_back(partFrom(head));
            return with(head, asked.size());
        });
    }
    std::vector<std::size_t> askedFrom() {
        const std::lock_guard<std::mutex> lock(mutex);
        return asked;
    }

    static std::string songWith(const std::string& other, const std::string& than) {
        return std::string(song).replace(song.find(other), other.size(), than);
    }
    void showSongs(const std::vector<std::string>& songs) {
        std::string list;
        for (const std::string& each : songs) {
            list += (list.empty() ? "" : ",") + each;
        }
        server.answer("search3", [list](const std::string&) {
            return BadServer::envelope(R"("searchResult3":{"song":[)" + list + "]}");
        });
    }

    // Longer than what is waited for instead of asking anew.
    const Samples longSound = numbered(6, 400000);

private:
    std::mutex mutex;
    std::vector<std::size_t> asked;  // protected by mutex; the first bytes
};

TEST_F(StreamTest, APrefetchFetches) {
    TestSession session;
    sp_track* const track = enter(session);
    ASSERT_EQ(sp_session_player_prefetch(session.get(), track), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return server.count("download") == 1; }));
    server.answerAll(away);
    play(session, track);
    EXPECT_TRUE(session.delivered == sound);
    EXPECT_EQ(server.count("download"), 1U);
}

TEST_F(StreamTest, GoesOnAtTheRightByteWhenTheServerIsBack) {
    constexpr std::size_t first = 100000;
    answerParts([this](const std::string& head, std::size_t number) {
        return number == 1   ? part(head, file, first)
               : number <= 3 ? away
                             : part(head, file, file.size());
    });
    TestSession session;
    play(session, enter(session));
    EXPECT_TRUE(session.delivered == sound);
    EXPECT_THAT(askedFrom(), ElementsAre(0, first, first, first));
    const std::string lost = "connection " + std::to_string(SP_ERROR_OTHER_TRANSIENT);
    EXPECT_TRUE(session.untilHeard(lost) && session.untilHeard("connection 0"));
    EXPECT_TRUE(session.until([&] {
        return sp_session_connectionstate(session.get()) == SP_CONNECTION_STATE_LOGGED_IN;
    }));
}

// What is before it is on its way for ever.
TEST_F(StreamTest, ASeekAsksForItsPlace) {
    const std::string bytes = contents(longSound);
    constexpr std::size_t first = 100000;
    showSongs({songWith(R"("duration":"2")", R"("duration":9)")});
    answerParts([&](const std::string& head, std::size_t number) {
        return number == 1                   ? part(head, bytes, first)
               : partFrom(head) < 10 * first ? std::string()
                                             : part(head, bytes, bytes.size());
    });
    TestSession session;
    sp_track* const track = enter(session);
    ASSERT_EQ(sp_session_player_load(session.get(), track), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return askedFrom().size() == 2; }));
    ASSERT_EQ(sp_session_player_seek(session.get(), 8000), SP_ERROR_OK);
    ASSERT_EQ(sp_session_player_play(session.get(), true), SP_ERROR_OK);
    ASSERT_TRUE(session.until([&] { return session.ended.load(); })) << session.log;
    constexpr std::ptrdiff_t place = 8L * 44100 * 2;
    EXPECT_TRUE(session.delivered == Samples(longSound.begin() + place, longSound.end()));
    EXPECT_THAT(askedFrom(), Contains(Gt(10 * first)));
}

TEST_F(StreamTest, WhatCannotBeDecodedHereIsMadeThere) {
    showSongs({songWith(R"("suffix":"WAV")", R"("suffix":"ape")")});
    std::string format;
    server.answer("stream", [&](const std::string& head) {
        format =
            BadServer::parameter(head, "format") + ' ' + BadServer::parameter(head, "maxBitRate");
        return BadServer::reply(file, "200 OK", "audio/mpeg");
    });
    TestSession session;
    sp_track* const track = enter(session);
    ASSERT_EQ(sp_session_preferred_bitrate(session.get(), SP_BITRATE_160k), SP_ERROR_OK);
    play(session, track);
    EXPECT_TRUE(session.delivered == sound);
    session.release();
    EXPECT_EQ(format, "mp3 160");
    EXPECT_EQ(server.count("download"), 0U);
}

TEST_F(StreamTest, TheCacheHasItsSize) {
    const std::string bytes = contents(longSound);
    showSongs({song, songWith("7", "8"), songWith("7", "9")});
    answerParts(
        [&](const std::string& head, std::size_t) { return part(head, bytes, bytes.size()); });
    TestSession session;
    enter(session);
    ASSERT_EQ(sp_session_set_cache_size(session.get(), 2), SP_ERROR_OK);
    ASSERT_EQ(sp_search_num_tracks(lastFound.get()), 3);
    for (int number = 0; number < 3; ++number) {
        play(session, sp_search_track(lastFound.get(), number));
        EXPECT_TRUE(session.delivered == longSound);
    }
    // One of these fits, and the one before was perhaps still open.
    std::size_t kept = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(TestMusic::paths().cache + "/music")) {
        kept += entry.path().extension() == ".sound" ? 1 : 0;
    }
    EXPECT_TRUE(kept == 1 || kept == 2) << kept;
    server.answerAll(away);
    play(session, sp_search_track(lastFound.get(), 2));
    EXPECT_TRUE(session.delivered == longSound) << "what was heard last stays";
}

// As after a fall of the power: it says of two parts that they are there, and has half of one.
TEST_F(StreamTest, WhatTheCacheHasLostIsFetchedAgain) {
    const auto hear = [&] {
        TestSession session;
        play(session, enter(session));
        EXPECT_TRUE(session.delivered == sound) << session.log;
    };
    hear();
    for (const auto& entry :
         std::filesystem::directory_iterator(TestMusic::paths().cache + "/music")) {
        if (entry.path().extension() == ".map") {
            const std::string whole = std::to_string(file.size());
            std::ofstream(entry.path()) << whole << "\n\n0 2000\n3000 " << whole << '\n';
        } else {
            std::filesystem::resize_file(entry.path(), file.size() / 2);
        }
    }
    hear();
    EXPECT_EQ(server.count("download"), 2U);
}

}  // namespace
}  // namespace sonolet::test
