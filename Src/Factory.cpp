#include "Factory.h"

#include "Album.h"
#include "Albumbrowse.h"
#include "Artist.h"
#include "Artistbrowse.h"
#include "Playlist.h"
#include "Playlistcontainer.h"
#include "Search.h"
#include "SpImage.h"
#include "Toplistbrowse.h"
#include "Track.h"
#include "User.h"

#include <algorithm>
#include <utility>

Factory& Factory::getInstance() {
    static Factory& instance = *new Factory;
    return instance;
}

void Factory::setSession(sp_session* librarySession,
                         const orvo::shared_ptr<LibWrapper>& libraryShare) {
    session = librarySession;
    library = libraryShare;
}

template <class Wrapper, class... Arguments>
orvo::shared_ptr<Wrapper> Factory::create(Made<Wrapper>& made, const Arguments&... arguments) {
    orvo::shared_ptr<Wrapper> wrapper(new Wrapper(session, arguments...));
    auto& wrappers = made.wrappers;
    if (wrappers.size() >= made.cleanAt) {
        wrappers.erase(std::remove_if(wrappers.begin(), wrappers.end(),
                                      [](const auto& weak) { return weak.expired(); }),
                       wrappers.end());
        made.cleanAt = std::max<std::size_t>(16, 2 * wrappers.size());
    }
    wrappers.push_back(wrapper);
    return wrapper;
}

template <class Wrapper>
void Factory::clear(Made<Wrapper>& made) {
    // The list is empty before the first handle goes: nothing that follows from that finds it half
    // cleared.
    const Made<Wrapper> leaving = std::exchange(made, {});
    for (const auto& weak : leaving.wrappers) {
        if (const orvo::shared_ptr<Wrapper> wrapper = weak.lock()) {
            wrapper->clear();
        }
    }
}

orvo::shared_ptr<Playlist> Factory::createPlaylist(sp_playlist* handle) {
    return createPlaylist({}, handle);
}

orvo::shared_ptr<Playlist>
Factory::createPlaylist(const orvo::shared_ptr<Playlistcontainer>& container, sp_playlist* handle) {
    return create(playlists, handle, library, container);
}

orvo::shared_ptr<Album> Factory::createAlbum(sp_album* handle) {
    return create(albums, handle, library);
}

orvo::shared_ptr<Artist> Factory::createArtist(sp_artist* handle) {
    return create(artists, handle, library);
}

orvo::shared_ptr<Track> Factory::createTrack(sp_track* handle) {
    return create(tracks, handle, library);
}

orvo::shared_ptr<User> Factory::createUser(sp_user* handle) {
    return create(users, handle, library);
}

orvo::shared_ptr<Albumbrowse> Factory::createAlbumbrowse(sp_albumbrowse* handle) {
    return create(albumbrowses, handle, library);
}

orvo::shared_ptr<Artistbrowse> Factory::createArtistbrowse(sp_artistbrowse* handle) {
    return create(artistbrowses, handle, library);
}

orvo::shared_ptr<Search> Factory::createSearch(sp_search* handle) {
    return create(searches, handle, library);
}

orvo::shared_ptr<Toplistbrowse> Factory::createToplistbrowse(sp_toplistbrowse* handle) {
    return create(toplistbrowses, handle, library);
}

orvo::shared_ptr<SpImage> Factory::createSpImage(sp_image* handle) {
    return create(images, handle, library);
}

orvo::shared_ptr<Playlistcontainer> Factory::createPlaylistcontainer(sp_playlistcontainer* handle) {
    return orvo::make_shared<Playlistcontainer>(session, handle, library);
}

void Factory::clearObjects() {
    clearPlaylists();
    clearAlbums();
    clearArtists();
    clearTracks();
    clearUsers();
    clearAlbumbrowses();
    clearArtistbrowses();
    clearSearches();
    clearToplistbrowses();
    clearSpImages();
}

void Factory::clearPlaylists() {
    clear(playlists);
}

void Factory::clearAlbums() {
    clear(albums);
}

void Factory::clearArtists() {
    clear(artists);
}

void Factory::clearTracks() {
    clear(tracks);
}

void Factory::clearUsers() {
    clear(users);
}

void Factory::clearAlbumbrowses() {
    clear(albumbrowses);
}

void Factory::clearArtistbrowses() {
    clear(artistbrowses);
}

void Factory::clearSearches() {
    clear(searches);
}

void Factory::clearToplistbrowses() {
    clear(toplistbrowses);
}

void Factory::clearSpImages() {
    clear(images);
}
