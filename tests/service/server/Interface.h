#ifndef SONOLET_TESTS_SERVICE_SERVER_INTERFACE_H
#define SONOLET_TESTS_SERVICE_SERVER_INTERFACE_H

#include "subsonic/Items.h"
#include "subsonic/Reply.h"

#include <glib-object.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// What the interface's documents say of what the client uses: the parameters of each method, and
// what is read of its answer.
namespace sonolet::test {

using service::ArtistItem;
using service::readAlbum;
using service::readArtist;
using service::readPlaylist;
using service::readSong;
using service::Reply;

// Each method that is used, with all its parameters: "name?" may be there, "name*" may be there
// often, and "name+" must; behind "=" stands what its values look like.
inline const std::map<std::string, std::string> documented = {
    {"ping", ""},
    {"getUsers", ""},
    {"search3", "query artistCount?=\\d+ artistOffset?=\\d+ albumCount?=\\d+ albumOffset?=\\d+ "
                "songCount?=\\d+ songOffset?=\\d+ musicFolderId?"},
    {"getSong", "id"},
    {"getAlbum", "id"},
    {"getArtist", "id"},
    {"getAlbumList2",
     "type=random|newest|highest|frequent|recent|starred|byYear|byGenre|alphabeticalByName|"
     "alphabeticalByArtist size?=\\d{1,3} offset?=\\d+ fromYear?=\\d+ toYear?=\\d+ genre? "
     "musicFolderId?"},
    {"getStarred2", "musicFolderId?"},
    {"getCoverArt", "id size?=[1-9]\\d*"},
    {"download", "id"},
    {"stream", "id maxBitRate?=\\d+ format? timeOffset?=\\d+ size?=\\d+x\\d+ "
               "estimateContentLength?=true|false converted?=true|false"},
    {"getPlaylists", "username?"},
    {"getPlaylist", "id"},
    {"createPlaylist", "playlistId? name? songId*"},
    {"updatePlaylist",
     "playlistId name? comment? public?=true|false songIdToAdd* songIndexToRemove*=\\d+"},
    {"deletePlaylist", "id"},
    {"star", "id* albumId* artistId*"},
    {"unstar", "id* albumId* artistId*"},
    {"scrobble", "id+ time*=\\d{13} submission?=true|false"},
};
inline const std::string ofEachMethod =
    "u=listener v=1\\.16\\.1 c=\\w{1,32} f=json t=[0-9a-f]{32} s=\\w{6,}";

using Parameters = std::multimap<std::string, std::string>;

// Those in the head of a request.
inline Parameters parametersOf(const std::string& head) {
    const std::size_t from = head.find('?') + 1;
    std::istringstream query(head.substr(from, head.find(' ', from) - from));
    Parameters parameters;
    for (std::string name, value; std::getline(query, name, '=');) {
        std::getline(query, value, '&');
        g_autofree gchar* plain = g_uri_unescape_string(value.c_str(), nullptr);
        parameters.emplace(name, plain == nullptr ? "no text" : plain);
    }
    return parameters;
}

inline void expectDocumented(const std::string& method, Parameters asked) {
    ASSERT_EQ(documented.count(method), 1U);
    std::istringstream rules(ofEachMethod + ' ' + documented.at(method));
    for (std::string rule; rules >> rule;) {
        const std::size_t equals = rule.find('=');
        const std::string fits =
            equals == std::string::npos ? ".*" : "^(?:" + rule.substr(equals + 1) + ")\\z";
        std::string name = rule.substr(0, equals);
        const char often = name.back();
        name.erase(std::min(name.size(), name.find_first_of("?*+")));
        const std::size_t count = asked.count(name);
        EXPECT_TRUE(count > 0 || often == '?' || often == '*') << name << " is missing";
        EXPECT_TRUE(count < 2 || often == '*' || often == '+') << name << " is there twice";
        const auto [first, last] = asked.equal_range(name);
        for (auto each = first; each != last; ++each) {
            EXPECT_TRUE(g_regex_match_simple(fits.c_str(), each->second.c_str(),
                                             GRegexCompileFlags{}, GRegexMatchFlags{}))
                << name << " is " << each->second;
        }
        asked.erase(name);
    }
    for (const auto& [name, value] : asked) {
        ADD_FAILURE() << name << " is no parameter of it";
    }
}

// ---- What is read of answers ----

enum class Given {
    always,
    sometimes,  // in one answer at least
    elsewhere,  // by other servers: the field has an example
};

struct Field {
    const char* name;
    GType type;
    Given given;
    // A text in which is what the field says.
    std::function<std::string(const Reply& item)> read;
    const char* example = nullptr;  // JSON
    const char* meaning = nullptr;  // of the example
};
using Fields = std::vector<Field>;

inline std::string listed(const std::vector<ArtistItem>& artists) {
    std::string text;
    for (const ArtistItem& artist : artists) {
        text += artist.id + ' ' + artist.name + ' ';
    }
    return text;
}
// A part of a playlist's version.
inline std::string version(const Reply& playlist, int number) {
    std::istringstream parts(readPlaylist(playlist).version);
    std::string part;
    for (int i = 0; i <= number; ++i) {
        std::getline(parts, part, '/');
    }
    return part;
}
inline std::string time(std::int64_t microseconds) {
    g_autoptr(GDateTime) local = g_date_time_new_from_unix_local(microseconds / G_USEC_PER_SEC);
    g_autofree gchar* text = g_date_time_format(local, "%Y-%m-%dT%H:%M:%S");
    return text;
}
inline std::string truth(bool flag) {
    return flag ? "true" : "false";
}

inline const Fields ofArtist = {
    {"id", G_TYPE_STRING, Given::always, [](auto& item) { return readArtist(item).id; }},
    {"name", G_TYPE_STRING, Given::always, [](auto& item) { return readArtist(item).name; }},
};
inline const Fields ofAlbum = {
    {"id", G_TYPE_STRING, Given::always, [](auto& item) { return readAlbum(item).id; }},
    {"name", G_TYPE_STRING, Given::always, [](auto& item) { return readAlbum(item).name; }},
    {"artist", G_TYPE_STRING, Given::always,
     [](auto& item) { return readAlbum(item).artist.name; }},
    {"artistId", G_TYPE_STRING, Given::always,
     [](auto& item) { return readAlbum(item).artist.id; }},
    {"songCount", G_TYPE_INT64, Given::always,
     [](auto& item) { return std::to_string(readAlbum(item).songs); }},
    {"year", G_TYPE_INT64, Given::sometimes,
     [](auto& item) { return std::to_string(readAlbum(item).year); }},
    {"coverArt", G_TYPE_STRING, Given::sometimes, [](auto& item) { return readAlbum(item).cover; }},
    {"isCompilation", G_TYPE_BOOLEAN, Given::elsewhere,
     [](auto& item) { return truth(readAlbum(item).compilation); }, "true", "true"},
    {"releaseTypes", G_TYPE_INVALID, Given::elsewhere,
     [](auto& item) { return truth(readAlbum(item).compilation); }, R"(["Album","Compilation"])",
     "true"},
};
inline const Fields ofSong = {
    {"id", G_TYPE_STRING, Given::always, [](auto& item) { return readSong(item).id; }},
    {"title", G_TYPE_STRING, Given::always, [](auto& item) { return readSong(item).title; }},
    {"artist", G_TYPE_STRING, Given::always,
     [](auto& item) { return readSong(item).artists.at(0).name; }},
    {"artistId", G_TYPE_STRING, Given::always,
     [](auto& item) { return readSong(item).artists.at(0).id; }},
    {"album", G_TYPE_STRING, Given::always, [](auto& item) { return readSong(item).album.name; }},
    {"albumId", G_TYPE_STRING, Given::always, [](auto& item) { return readSong(item).album.id; }},
    {"suffix", G_TYPE_STRING, Given::always, [](auto& item) { return readSong(item).suffix; }},
    {"duration", G_TYPE_INT64, Given::always,
     [](auto& item) { return std::to_string(readSong(item).durationMs / 1000); }},
    {"size", G_TYPE_INT64, Given::always,
     [](auto& item) { return std::to_string(readSong(item).size); }},
    {"track", G_TYPE_INT64, Given::always,
     [](auto& item) { return std::to_string(readSong(item).number); }},
    {"discNumber", G_TYPE_INT64, Given::always,
     [](auto& item) { return std::to_string(readSong(item).disc); }},
    {"year", G_TYPE_INT64, Given::sometimes,
     [](auto& item) { return std::to_string(readSong(item).year); }},
    {"coverArt", G_TYPE_STRING, Given::sometimes, [](auto& item) { return readSong(item).cover; }},
    {"playCount", G_TYPE_INT64, Given::elsewhere,
     [](auto& item) { return std::to_string(readSong(item).plays); }, "7", "7"},
    {"starred", G_TYPE_STRING, Given::sometimes,
     [](auto& item) { return time(readSong(item).starred); }},
    {"artists", G_TYPE_INVALID, Given::elsewhere,
     [](auto& item) { return listed(readSong(item).artists); },
     R"([{"id":"1","name":"Eve"},{"id":"2","name":"Fay"}])", "1 Eve 2 Fay "},
    {"albumArtists", G_TYPE_INVALID, Given::elsewhere,
     [](auto& item) { return listed({readSong(item).album.artist}); },
     R"([{"id":"3","name":"Gil"}])", "3 Gil "},
};
inline const Fields ofPlaylist = {
    {"id", G_TYPE_STRING, Given::always, [](auto& item) { return readPlaylist(item).id; }},
    {"name", G_TYPE_STRING, Given::always, [](auto& item) { return readPlaylist(item).name; }},
    {"owner", G_TYPE_STRING, Given::always, [](auto& item) { return readPlaylist(item).owner; }},
    {"public", G_TYPE_BOOLEAN, Given::always,
     [](auto& item) { return truth(readPlaylist(item).isPublic); }},
    {"songCount", G_TYPE_INT64, Given::always, [](auto& item) { return version(item, 1); }},
    {"duration", G_TYPE_INT64, Given::always, [](auto& item) { return version(item, 2); }},
    {"comment", G_TYPE_STRING, Given::sometimes,
     [](auto& item) { return readPlaylist(item).comment; }},
    {"changed", G_TYPE_STRING, Given::elsewhere, [](auto& item) { return version(item, 0); },
     R"("2026-01-02T03:04:05Z")", "2026-01-02T03:04:05Z"},
};
inline const Fields ofUser = {
    {"username", G_TYPE_STRING, Given::always, [](auto& item) { return item["username"].text(); }},
};
inline const Fields ofEnvelope = {
    {"status", G_TYPE_STRING, Given::always, [](auto& item) { return item["status"].text(); }},
};
inline const Fields ofError = {
    {"code", G_TYPE_INT64, Given::always, [](auto& item) { return item["code"].text(); }},
    {"message", G_TYPE_STRING, Given::always, [](auto& item) { return item["message"].text(); }},
};

// Where in answers the things are that are read.
inline const struct Place {
    const char* answer;
    const char* path;
    const Fields& fields;
} places[] = {
    {"ping", "", ofEnvelope},
    {"getUsers", "users/user", ofUser},
    {"getUsers refused", "error", ofError},
    {"search3", "searchResult3/artist", ofArtist},
    {"search3", "searchResult3/album", ofAlbum},
    {"search3", "searchResult3/song", ofSong},
    {"getSong", "song", ofSong},
    {"getAlbum", "album", ofAlbum},
    {"getAlbum", "album/song", ofSong},
    {"getArtist", "artist", ofArtist},
    {"getArtist", "artist/album", ofAlbum},
    {"getAlbumList2 newest", "albumList2/album", ofAlbum},
    {"getAlbumList2 frequent", "albumList2/album", ofAlbum},
    {"getStarred2", "starred2/artist", ofArtist},
    {"getStarred2", "starred2/album", ofAlbum},
    {"getStarred2", "starred2/song", ofSong},
    {"getPlaylists", "playlists/playlist", ofPlaylist},
    {"getPlaylist", "playlist", ofPlaylist},
    {"getPlaylist", "playlist/entry", ofSong},
    {"getPlaylist gone", "error", ofError},
    {"getCoverArt refused", "error", ofError},
    {"download refused", "error", ofError},
};

}  // namespace sonolet::test

#endif
