#include "server/ServerAnswers.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace sonolet::service {

namespace {

enum Kind { artists, albums, tracks };

// What is asked for at least, so that totals of short answers are exact.
constexpr int leastCount = 50;
constexpr int mostCount = 500;
// Of a query that the server does not understand as it is.
constexpr std::size_t mostWords = 4;
constexpr int perWord = 100;
constexpr std::size_t longestText = 500;  // bytes
// Of the artists and albums that were found, so many are looked into.
constexpr std::size_t widened = 5;
// Of what the index finds behind the server's answers.
constexpr int mostLocal = 500;

constexpr std::size_t mostTop = 100;
constexpr std::size_t albumsForTracks = 10;

bool isWordByte(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
           (byte >= 'A' && byte <= 'Z') || byte == '\'';
}

// The words of a query, without the names of its filters and the years.
std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (std::size_t place = 0; place < text.size();) {
        std::size_t end = place;
        while (end < text.size() && isWordByte(text[end])) {
            ++end;
        }
        const bool isFilter = end < text.size() && text[end] == ':';
        const bool isYear = place >= 5 && text.compare(place - 5, 5, "year:") == 0;
        if (end > place && end - place <= longestText && !isFilter && !isYear) {
            words.push_back(text.substr(place, end - place));
        }
        place = std::max(end, place + 1);
    }
    return words;
}

// Whether the text says nothing but words, as every server understands them; a long one makes an
// address that some refuse.
bool isPlain(const std::string& text) {
    return text.size() <= longestText && text.find_first_of("\":") == std::string::npos;
}

std::string trimmed(const std::string& text) {
    const std::size_t from = text.find_first_not_of(" \t\r\n");
    return from == std::string::npos
               ? std::string()
               : text.substr(from, text.find_last_not_of(" \t\r\n") - from + 1);
}

}  // namespace

ServerAnswers::ServerAnswers(Subsonic& client,
                             const Kept& kept,
                             const std::string& storeFile,
                             std::function<bool()> away)
    : server(client), isAway(std::move(away)), links(storeFile), writer(kept.catalogue, links),
      store(kept.catalogue, kept.accounts) {}

void ServerAnswers::Found::add(const Id& id) {
    if (known.insert(id).second) {
        ids.push_back(id);
    }
}

FoundPage ServerAnswers::Found::page(const Page& wanted) const {
    FoundPage page;
    page.total = static_cast<int>(ids.size());
    const auto from = std::min(static_cast<std::size_t>(wanted.offset), ids.size());
    const auto to = std::min(from + static_cast<std::size_t>(wanted.count), ids.size());
    page.ids.assign(ids.begin() + static_cast<std::ptrdiff_t>(from),
                    ids.begin() + static_cast<std::ptrdiff_t>(to));
    return page;
}

// ---- Searching ----

SearchAnswer ServerAnswers::search(const SearchRequest& request) {
    const std::string text = trimmed(request.text);
    if (text != lastText) {
        lastText = text;
        for (Found& each : found) {
            each = Found();
        }
    }
    if (text.empty() || isAway() || wordsOf(text).empty()) {
        lastText.clear();
        return store.index.search(request);
    }
    const Page wanted[3] = {request.artists, request.albums, request.tracks};
    if (isPlain(text)) {
        fetchMore(text, wanted);
    }
    const std::vector<std::string> words = wordsOf(text);
    const bool isComplete = std::all_of(std::begin(found), std::end(found),
                                        [](const Found& each) { return each.isAll; });
    if ((!isPlain(text) || (words.size() > 1 && isComplete)) && !request.suggest &&
        !found[tracks].hasLocal) {
        for (std::size_t index = 0; index < std::min(words.size(), mostWords); ++index) {
            const Reply reply =
                server.call("search3", {{"query", words[index]},
                                        {"artistCount", std::to_string(perWord)},
                                        {"albumCount", std::to_string(perWord)},
                                        {"songCount", std::to_string(perWord)}})["searchResult3"];
            writer.write({readArtists(reply["artist"]), readAlbums(reply["album"]),
                          readSongs(reply["song"])});
        }
    }
    if (isPlain(text) && !request.suggest && isComplete && !found[tracks].hasLocal) {
        widen();
    }
    addLocal(request);
    SearchRequest guess = request;
    guess.artists = guess.albums = guess.tracks = Page{};
    SearchAnswer answer = store.index.search(guess);
    answer.artists = found[artists].page(request.artists);
    answer.albums = found[albums].page(request.albums);
    answer.tracks = found[tracks].page(request.tracks);
    const bool isNothing = answer.artists.total + answer.albums.total + answer.tracks.total == 0;
    if (!isNothing) {
        answer.didYouMean.clear();
    }
    return answer;
}

// As much as the pages take, and one more, so that one knows whether there is more.
void ServerAnswers::fetchMore(const std::string& text, const Page (&wanted)[3]) {
    for (;;) {
        int counts[3] = {};
        bool isEnough = true;
        for (const Kind kind : {artists, albums, tracks}) {
            Found& each = found[kind];
            const Page& page = wanted[kind];
            const std::int64_t needed =
                std::max<std::int64_t>(std::int64_t{page.offset} + page.count, leastCount) + 1;
            const std::int64_t missing = needed - static_cast<std::int64_t>(each.ids.size());
            if (!each.isAll && missing > 0) {
                counts[kind] = static_cast<int>(std::min<std::int64_t>(missing, mostCount));
                isEnough = false;
            }
        }
        if (isEnough) {
            return;
        }
        const auto offset = [&](Kind kind) { return std::to_string(found[kind].ids.size()); };
        const Reply reply =
            server.call("search3", {{"query", text},
                                    {"artistCount", std::to_string(counts[artists])},
                                    {"artistOffset", offset(artists)},
                                    {"albumCount", std::to_string(counts[albums])},
                                    {"albumOffset", offset(albums)},
                                    {"songCount", std::to_string(counts[tracks])},
                                    {"songOffset", offset(tracks)}})["searchResult3"];
        const Seen seen{readArtists(reply["artist"]), readAlbums(reply["album"]),
                        readSongs(reply["song"])};
        writer.write(seen);
        const auto take = [&](Kind kind, const auto& items, sp_linktype type) {
            const std::size_t before = found[kind].ids.size();
            for (const auto& item : items) {
                found[kind].add(links.link(type, item.id));
            }
            // A server that repeats itself has no more either.
            found[kind].isAll =
                found[kind].isAll ||
                (counts[kind] > 0 && (static_cast<int>(items.size()) < counts[kind] ||
                                      found[kind].ids.size() == before));
        };
        take(artists, seen.artists, SP_LINKTYPE_ARTIST);
        take(albums, seen.albums, SP_LINKTYPE_ALBUM);
        take(tracks, seen.songs, SP_LINKTYPE_TRACK);
    }
}

// Many servers find names alone: what the artists and albums that were found have belongs to them.
void ServerAnswers::widen() {
    std::vector<Id> near = found[albums].ids;
    for (std::size_t index = 0; index < std::min(found[artists].ids.size(), widened); ++index) {
        if (const auto contents = artist(found[artists].ids[index], true, false)) {
            near.insert(near.end(), contents->albums.begin(), contents->albums.end());
        }
    }
    for (std::size_t index = 0; index < std::min(near.size(), widened); ++index) {
        fetchAlbum(links.serverId(SP_LINKTYPE_ALBUM, near[index]));
    }
}

// What the index finds stands behind the server's last.
void ServerAnswers::addLocal(const SearchRequest& request) {
    SearchRequest wide = request;
    wide.artists = wide.albums = wide.tracks = Page{0, mostLocal};
    wide.playlists = Page{};
    std::optional<SearchAnswer> local;
    const bool isPlainText = isPlain(lastText);
    for (const Kind kind : {artists, albums, tracks}) {
        Found& each = found[kind];
        if (each.hasLocal || (isPlainText && !each.isAll)) {
            continue;
        }
        if (!local) {
            local = store.index.search(wide);
        }
        const FoundPage& page = kind == artists  ? local->artists
                                : kind == albums ? local->albums
                                                 : local->tracks;
        for (const Id& id : page.ids) {
            each.add(id);
        }
        each.hasLocal = true;
    }
}

// ---- Browsing ----

std::optional<AlbumItem> ServerAnswers::fetchAlbum(const std::string& id) {
    try {
        const Reply reply = server.call("getAlbum", {{"id", id}})["album"];
        AlbumItem album = readAlbum(reply);
        if (album.id.empty()) {
            return std::nullopt;
        }
        Seen seen{{}, {album}, readSongs(reply["song"])};
        album.songs = std::max(album.songs, static_cast<int>(seen.songs.size()));
        seen.albums.front().songs = album.songs;
        writer.write(seen);
        return album;
    } catch (const ServerError& error) {
        if (!error.isNotThere()) {
            throw;
        }
        return std::nullopt;
    }
}

std::optional<AlbumContents> ServerAnswers::album(const Id& id) {
    if (!isAway()) {
        fetchAlbum(links.serverId(SP_LINKTYPE_ALBUM, id));
    }
    return store.browser.album(id);
}

std::optional<ArtistContents>
ServerAnswers::artist(const Id& id, bool withAlbums, bool withTracks) {
    if (isAway()) {
        return store.browser.artist(id, withAlbums, withTracks);
    }
    std::vector<AlbumItem> own;
    try {
        const Reply reply =
            server.call("getArtist", {{"id", links.serverId(SP_LINKTYPE_ARTIST, id)}})["artist"];
        own = readAlbums(reply["album"]);
        writer.write({{readArtist(reply)}, own, {}});
    } catch (const ServerError& error) {
        if (!error.isNotThere()) {
            throw;
        }
    }
    if (withTracks) {
        for (std::size_t index = 0; index < std::min(own.size(), albumsForTracks); ++index) {
            fetchAlbum(own[index].id);
        }
    }
    return store.browser.artist(id, withAlbums, withTracks);
}

// An empty query lists everything.
int ServerAnswers::learn(int offset) {
    const Reply reply = server.call("search3", {{"query", ""},
                                                {"artistCount", "0"},
                                                {"albumCount", std::to_string(mostCount)},
                                                {"albumOffset", std::to_string(offset)},
                                                {"songCount", std::to_string(mostCount)},
                                                {"songOffset", std::to_string(offset)}});
    // There are no more albums than songs.
    const Reply result = reply["searchResult3"];
    const Seen seen{{}, readAlbums(result["album"]), readSongs(result["song"])};
    writer.write(seen);
    return static_cast<int>(seen.songs.size());
}

// ---- Top lists ----

bool ServerAnswers::hasUser(const std::string& canonicalName) {
    return store.browser.hasUser(canonicalName);
}

std::vector<Id> ServerAnswers::topTracks(const ToplistScope& scope) {
    const char* list = scope.country ? "newest" : "frequent";
    const Reply reply = server.call(
        "getAlbumList2", {{"type", list}, {"size", std::to_string(albumsForTracks)}})["albumList2"];
    std::vector<SongItem> songs;
    for (const AlbumItem& album : readAlbums(reply["album"])) {
        const Reply contents = server.call("getAlbum", {{"id", album.id}})["album"];
        for (SongItem& song : readSongs(contents["song"])) {
            songs.push_back(std::move(song));
        }
    }
    // Not every server says of a song how often it was played.
    const bool isCounted = std::any_of(songs.begin(), songs.end(),
                                       [](const SongItem& song) { return song.plays > 0; });
    if (!scope.country && isCounted) {
        songs.erase(std::remove_if(songs.begin(), songs.end(),
                                   [](const SongItem& song) { return song.plays == 0; }),
                    songs.end());
        std::stable_sort(songs.begin(), songs.end(), [](const auto& left, const auto& right) {
            return left.plays > right.plays;
        });
    }
    writer.write({{}, {}, songs});
    std::vector<Id> ids;
    ids.reserve(songs.size());
    for (const SongItem& song : songs) {
        ids.push_back(links.link(SP_LINKTYPE_TRACK, song.id));
    }
    return ids;
}

std::vector<Id> ServerAnswers::top(sp_toplisttype type, const ToplistScope& scope) {
    if (isAway()) {
        return store.browser.top(type, scope);
    }
    // What is played and starred here comes first.
    Found liked;
    for (const Id& id : store.browser.top(type, scope)) {
        liked.add(id);
    }
    if (scope.user) {
        // What the user has starred; the server tells of nobody else.
        const Reply reply = server.call("getStarred2")["starred2"];
        const Seen seen{readArtists(reply["artist"]), readAlbums(reply["album"]),
                        readSongs(reply["song"])};
        writer.write(seen);
        for (const ArtistItem& each : seen.artists) {
            if (type == SP_TOPLIST_TYPE_ARTISTS) {
                liked.add(links.link(SP_LINKTYPE_ARTIST, each.id));
            }
        }
        for (const AlbumItem& each : seen.albums) {
            if (type == SP_TOPLIST_TYPE_ALBUMS) {
                liked.add(links.link(SP_LINKTYPE_ALBUM, each.id));
            }
        }
        for (const SongItem& each : seen.songs) {
            if (type == SP_TOPLIST_TYPE_TRACKS) {
                liked.add(links.link(SP_LINKTYPE_TRACK, each.id));
            }
        }
    } else if (type == SP_TOPLIST_TYPE_TRACKS) {
        for (const Id& id : topTracks(scope)) {
            liked.add(id);
        }
    } else {
        const Reply reply =
            server.call("getAlbumList2", {{"type", scope.country ? "newest" : "frequent"},
                                          {"size", std::to_string(mostTop)}})["albumList2"];
        const std::vector<AlbumItem> seen = readAlbums(reply["album"]);
        writer.write({{}, seen, {}});
        for (const AlbumItem& each : seen) {
            if (type == SP_TOPLIST_TYPE_ALBUMS) {
                liked.add(links.link(SP_LINKTYPE_ALBUM, each.id));
            } else if (!each.artist.id.empty()) {
                liked.add(links.link(SP_LINKTYPE_ARTIST, each.artist.id));
            }
        }
    }
    liked.ids.resize(std::min(liked.ids.size(), mostTop));
    return liked.ids;
}

}  // namespace sonolet::service
