#include "api/Api.h"
#include "lists/Playlist.h"
#include "queries/Search.h"

using namespace sonolet::service;

namespace {

// A text of a playlist that was found; NULL for a place that is not there.
const char* listText(sp_search* search, int index, std::string Search::FoundList::*text) {
    return ask<const char*>(search, nullptr, [&](Search& asked) {
        const Search::FoundList* list = asked.playlist(index);
        return list == nullptr ? nullptr : (list->*text).c_str();
    });
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): as declared
sp_search* sp_search_create(sp_session* session,
                            const char* query,
                            int track_offset,
                            int track_count,
                            int album_offset,
                            int album_count,
                            int artist_offset,
                            int artist_count,
                            int playlist_offset,
                            int playlist_count,
                            sp_search_type search_type,
                            search_complete_cb* callback,
                            void* userdata) {
    // NOLINTEND(readability-identifier-naming)
    if (query == nullptr) {
        return nullptr;
    }
    return askSession<sp_search>(session, [&] {
        SearchRequest request;
        request.text = query;
        request.suggest = search_type == SP_SEARCH_SUGGEST;
        request.tracks = {track_offset, track_count};
        request.albums = {album_offset, album_count};
        request.artists = {artist_offset, artist_count};
        request.playlists = {playlist_offset, playlist_count};
        Playlists& lists = sessionOf(session)->playlists();
        if (lists.account()) {
            request.account = lists.account()->id;
        }
        return new sp_search(std::move(request), lists.shared_from_this(), callback, userdata);
    });
}

bool sp_search_is_loaded(sp_search* search) {
    return ask(search, false, [](Search& asked) { return asked.isLoaded(); });
}

sp_error sp_search_error(sp_search* search) {
    return ask(search, SP_ERROR_INVALID_INDATA, [](Search& asked) { return asked.error(); });
}

const char* sp_search_query(sp_search* search) {
    return ask(search, "", [](Search& asked) { return asked.query().c_str(); });
}

const char* sp_search_did_you_mean(sp_search* search) {
    return ask(search, "", [](Search& asked) { return asked.didYouMean().c_str(); });
}

int sp_search_num_tracks(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.trackCount(); });
}

sp_track* sp_search_track(sp_search* search, int index) {
    return ask<sp_track*>(search, nullptr, [&](Search& asked) { return asked.track(index); });
}

int sp_search_num_albums(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.albumCount(); });
}

sp_album* sp_search_album(sp_search* search, int index) {
    return ask<sp_album*>(search, nullptr, [&](Search& asked) { return asked.album(index); });
}

int sp_search_num_artists(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.artistCount(); });
}

sp_artist* sp_search_artist(sp_search* search, int index) {
    return ask<sp_artist*>(search, nullptr, [&](Search& asked) { return asked.artist(index); });
}

int sp_search_num_playlists(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.playlistCount(); });
}

sp_playlist* sp_search_playlist(sp_search* search, int index) {
    return ask<sp_playlist*>(search, nullptr, [&](Search& asked) {
        const Search::FoundList* list = asked.playlist(index);
        return list == nullptr ? nullptr : list->handle.get();
    });
}

const char* sp_search_playlist_name(sp_search* search, int index) {
    return listText(search, index, &Search::FoundList::name);
}

const char* sp_search_playlist_uri(sp_search* search, int index) {
    return listText(search, index, &Search::FoundList::uri);
}

const char* sp_search_playlist_image_uri(sp_search* search, int index) {
    return listText(search, index, &Search::FoundList::imageUri);
}

int sp_search_total_tracks(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.totalTracks(); });
}

int sp_search_total_albums(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.totalAlbums(); });
}

int sp_search_total_artists(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.totalArtists(); });
}

int sp_search_total_playlists(sp_search* search) {
    return ask(search, 0, [](Search& asked) { return asked.totalPlaylists(); });
}

sp_error sp_search_add_ref(sp_search* search) {
    return addRef(search);
}

sp_error sp_search_release(sp_search* search) {
    return release(search);
}
