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
        members = {{track, "index", 'n', "sp_track_index(track)"},
                   {track, "popularity", 'n', "sp_track_popularity(track)"},
                   {track, "disc", 'n', "sp_track_disc(track)"},
                   {track, "error", 'n', "sp_track_error(track)"},
                   {track, "duration", 'n', "sp_track_duration(track)"},
                   {track, "numArtists", 'n', "sp_track_num_artists(track)"},
                   {track, "isPlaceholder", 'b', "sp_track_is_placeholder(track)"},
                   {track, "isLocal", 'b', "sp_track_is_local(session, track)"},
                   {track, "isLoaded", 'b', "sp_track_is_loaded(track)"},
                   {track, "isStarred", 'b', "sp_track_is_starred(session, track)"},
                   {track, "getAvailability", 'b', "sp_track_get_availability(session, track)"},
                   {track, "name", 't', "sp_track_name(track)"},
                   {track, "album", 'A', "sp_track_album(track)"},
                   {track, "artist", 'R', "sp_track_artist(track, 1)"},
                   {album, "year", 'n', "sp_album_year(album)"},
                   {album, "albumType", 'n', "sp_album_type(album)"},
                   {album, "isLoaded", 'b', "sp_album_is_loaded(album)"},
                   {album, "isAvailable", 'b', "sp_album_is_available(album)"},
                   {album, "name", 't', "sp_album_name(album)"},
                   {album, "artist", 'R', "sp_album_artist(album)"},
                   {album, "cover", 'i', "sp_album_cover(album, 1)"},
                   {artist, "isLoaded", 'b', "sp_artist_is_loaded(artist)"},
                   {artist, "name", 't', "sp_artist_name(artist)"},
                   {artist, "portrait", 'i', "sp_artist_portrait(artist, 1)"},
                   {user, "relationType", 'n', "sp_user_relation_type(session, user)"},
                   {user, "isLoaded", 'b', "sp_user_is_loaded(user)"},
                   {user, "picture", 't', "sp_user_picture(user)"},
                   {user, "displayName", 't', "sp_user_display_name(user)"},
                   {user, "canonicalName", 't', "sp_user_canonical_name(user)"},
                   {user, "fullName", 't', "sp_user_full_name(user)"}};
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
        expectFailures({{find(kind), "create", {otherKind}, notRetrieved},
                        {find(kind), "create", {"spotify:nothing"}, notRetrieved},
                        {find(kind), "create", {}, "Not enough arguments"},
                        {find(kind), "create", {Value::null()}, "Not a string"}});
        EXPECT_EQ(host->get(find(kind), "isLoaded").code, JSP_GET_NO_PROPERTY);
    }
    EXPECT_EQ(host->get(track, "create").code, JSP_GET_NO_PROPERTY);
    EXPECT_TRUE(spotify.callsTo("sp_link_release").empty());
}

TEST_F(MetadataTest, LogoutTakesTheHandlesInOrderAndLeavesOnlyTheArgumentChecks) {
    host->collect(create("Track", "track"));  // dead ones are passed over
    create("Track", "track");
    spotify.calls.clear();
    EXPECT_EQ(session("logout"), nothing());
    EXPECT_EQ(spotify.calls, (Strings{"sp_album_release(album)", "sp_artist_release(artist)",
                                      "sp_track_release(track)", "sp_track_release(track)",
                                      "sp_user_release(user)", "sp_session_logout(session)"}));
    EXPECT_EQ(log.count(2, "Session::logoutlogging out"), 1);
    expectCleared(members);
    expectFailures({{track, "setStarred", {true}, notRetrieved},
                    {track, "setStarred", {1}, "Not a boolean"},
                    {track, "setStarred", {}, "Not enough arguments"},
                    {find("Spotify.Session"), "playerLoad", {track}, notRetrieved}});
    EXPECT_EQ(session("logout"), nothing()) << "nothing is left to clear";
    EXPECT_EQ(spotify.calls, Strings{"sp_session_logout(session)"});
}

TEST_F(MetadataTest, ThousandsOfWrappersLeaveNothingBehindAndOnlyAlbumsWriteToTheLog) {
    const std::size_t before = registrySize();
    log.reset();
    for (int i = 0; i < 3000; ++i) {
        host->collect(create("Album", "album"));
        host->collect(create("Track", "track"));
    }
    EXPECT_EQ(registrySize(), before);
    EXPECT_EQ(trackHandle->references, 1);
    for (const char* line : {"Album::create", "Album::Album", "Album::~Album"}) {
        EXPECT_EQ(log.count(2, line), 3000);
    }
    EXPECT_EQ(log.lines.size(), 9000U);
}

TEST(Base64, EncodesTheKnownTextsAndDecodesThemBackWithinTheirBounds) {
    const std::vector<std::pair<std::string, std::string>> known = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {std::string("\xff\xef\xbe\0", 4), "/+++AA=="},
        {imageId, imageText}};
    for (const auto& [bytes, text] : known) {
        std::string out = "replaced";
        base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<unsigned>(bytes.size()), out);
        EXPECT_EQ(out, text);
        std::string back(24, '!');
        EXPECT_EQ(base64_decode(text.data(), static_cast<unsigned>(text.size()),
                                reinterpret_cast<unsigned char*>(&back[0]), 20),
                  0);
        EXPECT_EQ(back, bytes + std::string(24 - bytes.size(), '!'));
    }
}

TEST(Base64, DecodingIsAsLooseAsItAlwaysWas) {
    FakeLog::get().reset();
    unsigned char out[4] = {1, 1, 1, 1};
    EXPECT_EQ(base64_decode("QQQQQQ", 6, out, 4), -1);
    EXPECT_EQ(out[0], 1);
    const char warning[] = "WARNING: Input string to base64 decode does not have a length that is "
                           "a multiple of 4";
    EXPECT_EQ(FakeLog::get().count(5, warning), 1);
    EXPECT_EQ(base64_decode("QU=Q", 4, out, 4), 0);  // this "=" counts as value 0
    EXPECT_EQ(out[1], 0x40);
    EXPECT_EQ(out[2], 0x10);
    EXPECT_EQ(base64_decode("*Q==", 4, out, 4), 0);
    EXPECT_EQ(out[0], 0xFD);
    EXPECT_TRUE(get_position('=') == 0 && get_position('*') == -1 && get_position('\xff') == -1);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(get_position(alphabet[i]), i);
    }
}
