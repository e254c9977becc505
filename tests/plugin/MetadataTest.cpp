#include "PluginTest.h"
#include "base64.h"

namespace {

const std::string imageId("\0\1\2\xfa\xfb\xfc\xfd\xfe\xff\x09\x08\7\6\5\4\3\2\1\0M", 20);
constexpr char imageText[] = "AAEC+vv8/f7/CQgHBgUEAwIBAE0=";

// One wrapper of each kind, over handles of the fake library.
class MetadataTest : public PluginTest {
protected:
    struct Member {
        jsplugin_obj* object;
        const char* name;
        const char* function;
    };

    MetadataTest() {
        createSession();
        spotify.handles["sp_session_user"] = {spotify.add<sp_user>("user")};
        spotify.handles["sp_track_album"] = {albumHandle};
        spotify.handles["sp_track_artist"] = {spotify.add<sp_artist>("artist")};
        spotify.handles["sp_album_artist"] = spotify.handles["sp_track_artist"];
        track = create("Track", "track");
        album = create("Album", "album");
        artist = create("Artist", "artist");
        user = session("user").value.object;
        numbers = {{track, "index", "sp_track_index"},
                   {track, "popularity", "sp_track_popularity"},
                   {track, "disc", "sp_track_disc"},
                   {track, "error", "sp_track_error"},
                   {track, "duration", "sp_track_duration"},
                   {track, "numArtists", "sp_track_num_artists"},
                   {album, "year", "sp_album_year"},
                   {album, "albumType", "sp_album_type"},
                   {user, "relationType", "sp_user_relation_type"}};
        flags = {{track, "isPlaceholder", "sp_track_is_placeholder"},
                 {track, "isLocal", "sp_track_is_local"},
                 {track, "isLoaded", "sp_track_is_loaded"},
                 {track, "isStarred", "sp_track_is_starred"},
                 {track, "getAvailability", "sp_track_get_availability"},
                 {album, "isLoaded", "sp_album_is_loaded"},
                 {album, "isAvailable", "sp_album_is_available"},
                 {artist, "isLoaded", "sp_artist_is_loaded"},
                 {user, "isLoaded", "sp_user_is_loaded"}};
        texts = {{track, "name", "sp_track_name"},
                 {album, "name", "sp_album_name"},
                 {artist, "name", "sp_artist_name"},
                 {user, "picture", "sp_user_picture"},
                 {user, "displayName", "sp_user_display_name"},
                 {user, "canonicalName", "sp_user_canonical_name"},
                 {user, "fullName", "sp_user_full_name"}};
        spotify.calls.clear();
    }

    sp_track* trackHandle = spotify.add<sp_track>("track");
    sp_album* albumHandle = spotify.add<sp_album>("album");
    jsplugin_obj* track = nullptr;
    jsplugin_obj* album = nullptr;
    jsplugin_obj* artist = nullptr;
    jsplugin_obj* user = nullptr;
    std::vector<Member> numbers;
    std::vector<Member> flags;
    std::vector<Member> texts;
};

}  // namespace

TEST_F(MetadataTest, MembersAnswerWhatTheLibraryDoesAtEachCall) {
    for (const int value : {7, 0}) {
        for (const auto& [object, name, function] : numbers) {
            spotify.answers[function] = value;
            EXPECT_EQ(host->call(object, name, {"ignored"}), returned(value)) << name;
        }
        for (const auto& [object, name, function] : flags) {
            spotify.answers[function] = value;
            EXPECT_EQ(host->call(object, name), returned(value != 0)) << name;
        }
    }
    for (const char* text : {"loaded \xc3\xa5", "", static_cast<const char*>(nullptr)}) {
        for (const auto& [object, name, function] : texts) {
            spotify.texts[function] = text;
            EXPECT_EQ(host->call(object, name), returned(text == nullptr ? "" : text)) << name;
        }
    }
    EXPECT_EQ(spotify.callsTo("sp_user_relation").at(0), "sp_user_relation_type(session, user)");
    for (const bool star : {true, false}) {  // whatever the library makes of it
        spotify.answers["sp_track_set_starred"] = star ? SP_ERROR_OTHER_PERMANENT : SP_ERROR_OK;
        EXPECT_EQ(host->call(track, "setStarred", {star}), nothing());
    }
    EXPECT_EQ(spotify.callsTo("sp_track_set_starred"),
              (Strings{"sp_track_set_starred(session, track, 1, true)",
                       "sp_track_set_starred(session, track, 1, false)"}));
}

TEST_F(MetadataTest, RelatedObjectsAreNewWrappersAndMissingOnesAreTold) {
    const std::vector<Member> related = {{track, "album", "sp_track_album"},
                                         {track, "artist", "sp_track_artist"},
                                         {album, "artist", "sp_album_artist"}};
    spotify.texts["sp_artist_name"] = spotify.texts["sp_album_name"] = "its name";
    for (const auto& [object, name, function] : related) {
        const Answer first = host->call(object, name, {0.9});
        EXPECT_EQ(host->call(first.value.object, "name"), returned("its name"));
        EXPECT_NE(host->call(object, name, {0.9}), first);
        spotify.handles[function].clear();
        EXPECT_EQ(host->call(object, name, {0}), failed(notRetrieved));
    }
    EXPECT_EQ(albumHandle->references, 3);
    for (const double index : {1.9, -1.9, 1e300}) {
        EXPECT_EQ(host->call(track, "artist", {index}), failed(notRetrieved));
    }
    const Strings asked = spotify.callsTo("sp_track_artist");
    EXPECT_EQ(Strings(asked.end() - 3, asked.end()),
              (Strings{"sp_track_artist(track, 1)", "sp_track_artist(track, -1)",
                       "sp_track_artist(track, 2147483647)"}));

    EXPECT_EQ(host->call(album, "cover", {0}), failed(notRetrieved));
    EXPECT_EQ(host->call(artist, "portrait", {0}), failed(notRetrieved));
    spotify.texts["sp_album_cover"] = spotify.texts["sp_artist_portrait"] = imageId.data();
    EXPECT_EQ(host->call(album, "cover", {2.9}), returned(imageText));
    EXPECT_EQ(spotify.calls.back(), "sp_album_cover(album, 2)");
    EXPECT_EQ(host->call(artist, "portrait", {1}), returned(imageText));
    EXPECT_EQ(spotify.calls.back(), "sp_artist_portrait(artist, 1)");
}

TEST_F(MetadataTest, ALinkLeadsToANewWrapperAndABadOneNowhere) {
    EXPECT_NE(create("Track", "track"), track);
    EXPECT_EQ(trackHandle->references, 2);
    const std::vector<std::pair<const char*, const char*>> wrong = {
        {"Track", "album"}, {"Album", "artist"}, {"Artist", "track"}};
    for (const auto& [kind, otherKind] : wrong) {
        jsplugin_obj* constructor = find(std::string("Spotify.") + kind);
        expectFailures({{constructor, "create", {otherKind}, notRetrieved},
                        {constructor, "create", {"spotify:nothing"}, notRetrieved},
                        {constructor, "create", {}, "Not enough arguments"},
                        {constructor, "create", {Value::null()}, "Not a string"}});
        EXPECT_EQ(host->get(constructor, "isLoaded").code, JSP_GET_NO_PROPERTY);
    }
    EXPECT_EQ(host->get(track, "create").code, JSP_GET_NO_PROPERTY);
    EXPECT_TRUE(spotify.callsTo("sp_link_release").empty());
}

TEST_F(MetadataTest, LogoutTakesTheHandlesInOrderAndLeavesOnlyTheArgumentChecks) {
    host->collect(create("Track", "track"));  // dead ones are passed over
    create("Track", "track");
    for (const bool loggedIn : {true, false}) {
        expectFailures({{track, "artist", {}, "Not enough arguments"},
                        {track, "artist", {"0"}, "Not a number"},
                        {track, "setStarred", {1}, "Not a boolean"},
                        {album, "cover", {"0"}, "Not a number"},
                        {artist, "portrait", {}, "Not enough arguments"}});
        spotify.calls.clear();
        if (loggedIn) {
            EXPECT_EQ(session("logout"), nothing());
            EXPECT_EQ(spotify.calls,
                      (Strings{"sp_album_release(album)", "sp_artist_release(artist)",
                               "sp_track_release(track)", "sp_track_release(track)",
                               "sp_user_release(user)", "sp_session_logout(session)"}));
        }
    }
    EXPECT_EQ(log.count(2, "Session::logoutlogging out"), 1);
    for (const auto* members : {&numbers, &flags, &texts}) {
        for (const Member& member : *members) {
            EXPECT_EQ(host->call(member.object, member.name), failed(notRetrieved)) << member.name;
        }
    }
    expectFailures({{track, "album", {}, notRetrieved},
                    {track, "artist", {0}, notRetrieved},
                    {track, "setStarred", {true}, notRetrieved},
                    {album, "artist", {}, notRetrieved},
                    {album, "cover", {0}, notRetrieved},
                    {artist, "portrait", {0}, notRetrieved},
                    {find("Spotify.Session"), "playerLoad", {track}, notRetrieved}});
    EXPECT_TRUE(spotify.calls.empty()) << spotify.calls[0];
    EXPECT_EQ(session("logout"), nothing()) << "nothing is left to clear";
}

TEST_F(MetadataTest, ThousandsOfWrappersLeaveNothingBehindAndOnlyAlbumsWriteToTheLog) {
    const std::size_t before = registrySize();
    log.reset();
    for (int i = 0; i < 3000; ++i) {
        host->collect(create("Album", "album"));
        host->collect(create("Track", "track"));
    }
    EXPECT_EQ(registrySize(), before);
    EXPECT_EQ(albumHandle->references, 1);
    for (const char* line : {"Album::create", "Album::Album", "Album::~Album"}) {
        EXPECT_EQ(log.count(2, line), 3000);
    }
    EXPECT_EQ(log.lines.size(), 9000U);
    spotify.calls.clear();
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
