#include "PluginTest.h"
#include "base64.h"

namespace {

// One wrapper of each kind, over handles of the fake library.
class MetadataTest : public PluginTest {
protected:
    MetadataTest() {
        createSession();
        trackHandle = spotify.add<sp_track>("track");
        spotify.add<sp_album>("album");
        spotify.add<sp_artist>("artist");
        spotify.handles["sp_session_user"] = {spotify.add<sp_user>("user")};
        track = create("Track", "track");
        album = create("Album", "album");
        artist = create("Artist", "artist");
        user = session("user").value.object;
        members = {{album, "albumType", 'n', "sp_album_type(album)", false}};
        for (const auto& [object, label, list] :
             {std::tuple(track, "track",
                         "n index n popularity n disc n error n duration n numArtists "
                         "b isPlaceholder b isLocal@ b isLoaded b isStarred@ b getAvailability@ "
                         "t name A album R artist#"),
              {album, "album", "n year b isLoaded b isAvailable t name R artist i cover#"},
              {artist, "artist", "b isLoaded t name i portrait#"},
              {user, "user",
               "n relationType@ b isLoaded t picture t displayName t canonicalName t fullName"}}) {
            const std::vector<Member> more = membersOf(object, label, list);
            members.insert(members.end(), more.begin(), more.end());
        }
    }

    sp_track* trackHandle = nullptr;
    jsplugin_obj* track = nullptr;
    jsplugin_obj* album = nullptr;
    jsplugin_obj* artist = nullptr;
    jsplugin_obj* user = nullptr;
    std::vector<Member> members;
};

}  // namespace

TEST_F(MetadataTest, MembersAnswerWhatTheLibraryDoesAtEachCall) {
    expectReads(members);
    for (const auto& [index, passed] : {std::pair(-1.9, "-1"), std::pair(1e300, "2147483647")}) {
        EXPECT_EQ(host->call(track, "artist", {index}), failed(notRetrieved));
        EXPECT_EQ(spotify.calls.back(), std::string("sp_track_artist(track, ") + passed + ")");
    }
    spotify.answers["sp_track_set_starred"] = SP_ERROR_OTHER_PERMANENT;
    EXPECT_EQ(host->call(track, "setStarred", {true}), nothing());
    EXPECT_EQ(spotify.calls.back(), "sp_track_set_starred(session, track, 1, true)");
    EXPECT_EQ(host->call(track, "setStarred", {false}), nothing());
    EXPECT_EQ(spotify.calls.back(), "sp_track_set_starred(session, track, 1, false)");
}

TEST_F(MetadataTest, ALinkLeadsToANewWrapperAndABadOneNowhere) {
    EXPECT_NE(create("Track", "track"), track);
    EXPECT_EQ(trackHandle->references, 2);
    for (const auto& [kind, otherKind] : {std::pair("Spotify.Track", "album"),
                                          {"Spotify.Album", "artist"},
                                          {"Spotify.Artist", "track"}}) {
        EXPECT_EQ(call(kind, "create", {otherKind}), failed(notRetrieved));
    }
    EXPECT_EQ(host->get(track, "create").code, JSP_GET_NO_PROPERTY);
    EXPECT_TRUE(spotify.callsTo("sp_link_release").empty());
}

TEST_F(MetadataTest, LogoutTakesTheHandlesInOrderAndLeavesTheArgumentChecks) {
    host->collect(create("Track", "track"));  // dead ones are passed over
    create("Track", "track");
    spotify.calls.clear();
    EXPECT_EQ(session("logout"), nothing());
    EXPECT_EQ(spotify.calls, (Strings{"sp_album_release(album)", "sp_artist_release(artist)",
                                      "sp_track_release(track)", "sp_track_release(track)",
                                      "sp_user_release(user)", "sp_session_logout(session)"}));
    EXPECT_EQ(log.count(2, "Session::logoutlogging out"), 1);
    expectCleared(members);
    EXPECT_EQ(host->call(track, "setStarred", {true}), failed(notRetrieved));
    EXPECT_EQ(host->call(track, "setStarred", {1}), failed("Not a boolean"));
    EXPECT_EQ(session("logout"), nothing()) << "nothing is left to clear";
    EXPECT_EQ(spotify.calls, Strings{"sp_session_logout(session)"});
}

TEST_F(MetadataTest, OnlyAlbumsWriteToTheLog) {
    log.reset();
    host->collect(create("Album", "album"));
    host->collect(create("Track", "track"));
    ASSERT_EQ(log.lines.size(), 3U);
    EXPECT_EQ(log.lines[0].text + log.lines[1].text + log.lines[2].text,
              "Album::createAlbum::AlbumAlbum::~Album");
    EXPECT_EQ(trackHandle->references, 1);
}

TEST(Base64, DecodesAsLooselyAsItAlwaysDid) {
    FakeLog::get().reset();
    const auto decode = [](const std::string& text, std::string& out, unsigned size) {
        return base64_decode(text.data(), static_cast<unsigned>(text.size()),
                             reinterpret_cast<unsigned char*>(&out[0]), size);
    };
    std::string text;
    base64_encode(reinterpret_cast<const unsigned char*>(imageId.data()), 20, text);
    EXPECT_EQ(text, imageText);
    std::string out = "!!!!";
    EXPECT_EQ(decode("QQQQQQ", out, 4), -1);
    EXPECT_EQ(out, "!!!!");
    EXPECT_EQ(FakeLog::get().count(5, "WARNING: Input string to base64 decode does not have a "
                                      "length that is a multiple of 4"),
              1);
    EXPECT_EQ(decode("QU=Q", out, 4), 0);  // this "=" counts as value 0
    EXPECT_EQ(out, "A@\x10!");
    EXPECT_EQ(decode("*Q==", out, 4), 0);
    EXPECT_EQ(out, "\xFD@\x10!");
    EXPECT_TRUE(get_position('=') == 0 && get_position('*') == -1 && get_position('\xff') == -1);
}
