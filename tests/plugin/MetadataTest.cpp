#include "PluginTest.h"
#include "base64.h"

#include <cctype>
#include <string>
#include <vector>

namespace {

constexpr char notRetrieved[] = "Failed to retrieve object from Spotify";
const byte imageId[20] = {0, 1, 2, 250, 251, 252, 253, 254, 255, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 77};

// One wrapper of each kind, over handles of the fake library.
class MetadataTest : public PluginTest {
protected:
    struct Wrapper {
        std::string kind;  // "track"
        jsplugin_obj* object;
        std::vector<std::string> numbers;
        std::vector<std::string> flags;
    };

    MetadataTest() {
        createSession();
        trackHandle = spotify.addTrack("track");
        albumHandle = trackHandle->album;
        artistHandle = albumHandle->artist;
        spotify.user = spotify.addUser("user");
        track = create("Track", "track");
        album = create("Album", "track.album");
        artist = create("Artist", "track.album.artist");
        user = call("Spotify.Session", "user").value.object;
        wrappers = {{"track",
                     track,
                     {"index", "popularity", "disc", "error"},
                     {"isPlaceholder", "isLocal", "isLoaded", "isStarred", "getAvailability"}},
                    {"album", album, {"year"}, {"isLoaded", "isAvailable"}},
                    {"artist", artist, {}, {"isLoaded"}},
                    {"user", user, {"relationType"}, {"isLoaded"}}};
    }

    // "isLoaded" of a track is sp_track_is_loaded.
    static std::string functionOf(const std::string& kind, const std::string& member) {
        std::string name = "sp_" + kind + '_';
        for (const char c : member) {
            name += std::isupper(static_cast<unsigned char>(c)) != 0
                        ? std::string{'_', static_cast<char>(c + 'a' - 'A')}
                        : std::string{c};
        }
        return name;
    }

    sp_track* trackHandle = nullptr;
    sp_album* albumHandle = nullptr;
    sp_artist* artistHandle = nullptr;
    jsplugin_obj* track = nullptr;
    jsplugin_obj* album = nullptr;
    jsplugin_obj* artist = nullptr;
    jsplugin_obj* user = nullptr;
    std::vector<Wrapper> wrappers;
};

}  // namespace

TEST_F(MetadataTest, NumbersAndFlagsAreTheLibrarysAtEachCall) {
    for (const Wrapper& wrapper : wrappers) {
        for (const std::string& name : wrapper.numbers) {
            int& answer = spotify.answers[functionOf(wrapper.kind, name)];
            for (const int value : {7, 0}) {
                answer = value;
                EXPECT_EQ(host->call(wrapper.object, name, {"ignored"}), returned(value)) << name;
            }
        }
        for (const std::string& name : wrapper.flags) {
            int& answer = spotify.answers[functionOf(wrapper.kind, name)];
            for (const int value : {3, 0, 1}) {
                answer = value;
                EXPECT_EQ(host->call(wrapper.object, name), returned(value != 0)) << name;
            }
        }
    }
    spotify.answers["sp_album_type"] = SP_ALBUMTYPE_UNKNOWN;
    EXPECT_EQ(host->call(album, "albumType"), returned(3));
    EXPECT_EQ(host->call(track, "duration"), returned(10000));
    EXPECT_EQ(host->call(track, "numArtists"), returned(1));
    EXPECT_EQ(spotify.callsTo("sp_user_relation").at(0), "sp_user_relation_type(session, user)");
}

TEST_F(MetadataTest, TextsAreCopiedAndANullTextIsEmpty) {
    const auto expect = [&](jsplugin_obj* object, const char* name, const char*& field) {
        for (const char* text : {"loaded \xc3\xa5", "", static_cast<const char*>(nullptr)}) {
            field = text;
            EXPECT_EQ(host->call(object, name), returned(text == nullptr ? "" : text)) << name;
        }
    };
    expect(track, "name", trackHandle->name);
    expect(album, "name", albumHandle->name);
    expect(artist, "name", artistHandle->name);
    expect(user, "picture", spotify.user->picture);
    expect(user, "displayName", spotify.user->displayName);
    expect(user, "canonicalName", spotify.user->canonicalName);
    expect(user, "fullName", spotify.user->fullName);
}

TEST_F(MetadataTest, ALinkLeadsToANewWrapperAndABadOneNowhere) {
    EXPECT_NE(create("Track", "track"), track);
    EXPECT_EQ(trackHandle->references, 2);
    for (const char* kind : {"Spotify.Track", "Spotify.Album", "Spotify.Artist"}) {
        const std::string own = std::string(kind) == "Spotify.Album" ? "track" : "track.album";
        EXPECT_EQ(call(kind, "create", {kind == std::string("Spotify.Artist") ? "track" : own}),
                  failed(notRetrieved));
        EXPECT_EQ(call(kind, "create", {"spotify:nothing"}), failed(notRetrieved));
        EXPECT_EQ(call(kind, "create"), failed("Not enough arguments"));
        EXPECT_EQ(call(kind, "create", {Value::null()}), failed("Not a string"));
        EXPECT_EQ(call(kind, "isLoaded").code, -1) << "a constructor object offers create alone";
    }
    EXPECT_EQ(host->get(track, "create").code, JSP_GET_NO_PROPERTY);
    EXPECT_TRUE(spotify.callsTo("sp_link_release").empty());
}

TEST_F(MetadataTest, RelatedObjectsAreNewWrappersAndMissingOnesAreTold) {
    const Answer first = host->call(track, "album");
    EXPECT_EQ(first.code, JSP_CALL_VALUE);
    EXPECT_NE(host->call(track, "album"), first);
    EXPECT_EQ(albumHandle->references, 3);
    EXPECT_EQ(host->call(host->call(track, "artist", {0.9}).value.object, "name"),
              returned("Artist"));
    EXPECT_EQ(host->call(host->call(album, "artist").value.object, "name"), returned("Artist"));
    for (const double index : {1.0, -1.0, 1e300}) {
        EXPECT_EQ(host->call(track, "artist", {index}), failed(notRetrieved)) << index;
    }
    trackHandle->album = nullptr;
    albumHandle->artist = nullptr;
    EXPECT_EQ(host->call(track, "album"), failed(notRetrieved));
    EXPECT_EQ(host->call(album, "artist"), failed(notRetrieved));
}

TEST_F(MetadataTest, ImageIdsAreTwentyEightCharactersOfBase64) {
    EXPECT_EQ(host->call(album, "cover", {0}), failed(notRetrieved));
    EXPECT_EQ(host->call(artist, "portrait", {0}), failed(notRetrieved));
    albumHandle->cover = artistHandle->portrait = imageId;
    EXPECT_EQ(host->call(album, "cover", {2.9}), returned("AAEC+vv8/f7/CQgHBgUEAwIBAE0="));
    EXPECT_EQ(host->call(artist, "portrait", {1}), returned("AAEC+vv8/f7/CQgHBgUEAwIBAE0="));
    EXPECT_EQ(spotify.calls.back(), "sp_artist_portrait(track.album.artist, 1)");
    EXPECT_EQ(spotify.callsTo("sp_album_cover").back(), "sp_album_cover(track.album, 2)");
}

TEST_F(MetadataTest, StarringPassesThisTrackAndAnswersNothing) {
    spotify.answers["sp_track_set_starred"] = SP_ERROR_OTHER_PERMANENT;
    EXPECT_EQ(host->call(track, "setStarred", {true}), nothing());
    EXPECT_EQ(host->call(track, "setStarred", {false}), nothing());
    EXPECT_EQ(spotify.callsTo("sp_track_set_starred"),
              (std::vector<std::string>{"sp_track_set_starred(session, track, 1, true)",
                                        "sp_track_set_starred(session, track, 1, false)"}));
}

TEST_F(MetadataTest, ArgumentsAreCheckedBeforeTheHandleAlsoAfterLogout) {
    const auto check = [&] {
        const std::vector<std::tuple<jsplugin_obj*, const char*, const char*>> members = {
            {track, "artist", "Not a number"},
            {track, "setStarred", "Not a boolean"},
            {album, "cover", "Not a number"},
            {artist, "portrait", "Not a number"}};
        for (const auto& [object, name, message] : members) {
            EXPECT_EQ(host->call(object, name), failed("Not enough arguments")) << name;
            EXPECT_EQ(host->call(object, name, {"0"}), failed(message)) << name;
        }
    };
    check();
    call("Spotify.Session", "logout");
    check();
    spotify.calls.clear();
    for (const Wrapper& wrapper : wrappers) {
        for (const auto* names : {&wrapper.numbers, &wrapper.flags}) {
            for (const std::string& name : *names) {
                EXPECT_EQ(host->call(wrapper.object, name), failed(notRetrieved)) << name;
            }
        }
    }
    for (const char* name : {"album", "name", "duration", "numArtists"}) {
        EXPECT_EQ(host->call(track, name), failed(notRetrieved)) << name;
    }
    EXPECT_EQ(host->call(track, "artist", {0}), failed(notRetrieved));
    EXPECT_EQ(host->call(track, "setStarred", {true}), failed(notRetrieved));
    EXPECT_EQ(host->call(album, "cover", {0}), failed(notRetrieved));
    EXPECT_EQ(host->call(album, "albumType"), failed(notRetrieved));
    EXPECT_EQ(host->call(artist, "portrait", {0}), failed(notRetrieved));
    EXPECT_EQ(host->call(user, "picture"), failed(notRetrieved));
    EXPECT_TRUE(spotify.calls.empty()) << spotify.calls[0];
}

TEST_F(MetadataTest, OnlyAlbumsWriteToTheLog) {
    log.reset();
    host->collect(create("Album", "track.album"));
    EXPECT_EQ(log.count(2, "Album::create"), 1);
    EXPECT_EQ(log.count(2, "Album::Album"), 1);
    EXPECT_EQ(log.count(2, "Album::~Album"), 1);
    EXPECT_EQ(spotify.calls.back(), "sp_album_release(track.album)");
    host->collect(create("Track", "track"));
    host->collect(create("Artist", "track.album.artist"));
    EXPECT_EQ(log.lines.size(), 3U);
}

TEST_F(MetadataTest, ThousandsOfWrappersLeaveNothingBehind) {
    const std::size_t before = registrySize();
    const int references = albumHandle->references;
    for (int i = 0; i < 3000; ++i) {
        host->collect(host->call(track, "album").value.object);
    }
    EXPECT_EQ(registrySize(), before + 1) << "the kept function is all";
    EXPECT_EQ(albumHandle->references, references);
    spotify.calls.clear();
}

TEST(Base64, EncodesTheKnownTextsAndDecodesThemBack) {
    const std::vector<std::pair<std::string, std::string>> known = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {std::string("\xff\xef\xbe\0", 4), "/+++AA=="}};
    for (const auto& [bytes, text] : known) {
        std::string out = "replaced";
        base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<unsigned>(bytes.size()), out);
        EXPECT_EQ(out, text);
        std::vector<unsigned char> back(16, '!');
        EXPECT_EQ(base64_decode(text.data(), static_cast<unsigned>(text.size()), back.data(), 14),
                  0);
        EXPECT_EQ(std::string(back.begin(), back.begin() + static_cast<long>(bytes.size())), bytes);
        EXPECT_EQ(back[bytes.size()], '!') << text;
    }
}

TEST(Base64, DecodingKeepsItsBoundsAndItsLooseness) {
    FakeLog::get().reset();
    std::vector<unsigned char> out(24, '!');
    EXPECT_EQ(base64_decode(std::string(30, 'Q').data(), 30, out.data(), 20), -1);
    EXPECT_EQ(out, std::vector<unsigned char>(24, '!'));
    EXPECT_EQ(FakeLog::get().count(5,
                                   "WARNING: Input string to base64 decode does not have a length "
                                   "that is a multiple of 4"),
              1);
    const std::string id = "AAEC+vv8/f7/CQgHBgUEAwIBAE0=";
    EXPECT_EQ(base64_decode(id.data(), 28, out.data(), 20), 0);
    EXPECT_EQ(std::vector<unsigned char>(out.begin(), out.begin() + 20),
              std::vector<unsigned char>(imageId, imageId + 20));
    EXPECT_EQ(out[20], '!');
    EXPECT_EQ(base64_decode("QQ==", 4, out.data(), 20), 0);
    EXPECT_EQ(out[0], 0x41);
    EXPECT_EQ(out[1], 1);
    EXPECT_EQ(base64_decode("QU=Q", 4, out.data(), 20), 0);  // this "=" counts as value 0
    EXPECT_EQ(out[1], 0x40);
    EXPECT_EQ(out[2], 0x10);
    EXPECT_EQ(base64_decode("*Q==", 4, out.data(), 20), 0);
    EXPECT_EQ(out[0], 0xFD);
    EXPECT_EQ(get_position('='), 0);
    EXPECT_EQ(get_position('*'), -1);
    EXPECT_EQ(get_position('\xff'), -1);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(get_position(alphabet[i]), i);
    }
}
