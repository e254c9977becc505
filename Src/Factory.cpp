#include "Factory.h"

#include "Album.h"
#include "Albumbrowse.h"
#include "Artist.h"
#include "Artistbrowse.h"
#include "Object.h"
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

void Factory::Made::add(orvo::weak_ptr<Object> wrapper) {
    if (wrappers.size() >= cleanAt) {
        wrappers.erase(std::remove_if(wrappers.begin(), wrappers.end(),
                                      [](const auto& weak) { return weak.expired(); }),
                       wrappers.end());
        cleanAt = std::max<std::size_t>(8, 2 * wrappers.size());
    }
    wrappers.push_back(std::move(wrapper));
}

void Factory::Made::clear() {
    // Empty before the first handle goes: nothing that follows from that finds it half cleared.
    const Made leaving = std::exchange(*this, {});
    for (const orvo::weak_ptr<Object>& weak : leaving.wrappers) {
        if (const orvo::shared_ptr<Object> wrapper = weak.lock()) {
            wrapper->clear();
        }
    }
}

template <class Kept, class Kind>
orvo::shared_ptr<Kept> Factory::create(Made& made, Kind* handle) {
    orvo::shared_ptr<Kept> wrapper(new Kept(session, handle, library));
    made.add({wrapper, orvo::unshared});
    return wrapper;
}

orvo::shared_ptr<Playlist> Factory::createPlaylist(sp_playlist* handle) {
    return createPlaylist({}, handle);
}

orvo::shared_ptr<Playlist>
Factory::createPlaylist(const orvo::shared_ptr<Playlistcontainer>& container, sp_playlist* handle) {
    orvo::shared_ptr<Playlist> wrapper(new Playlist(session, handle, library, container));
    playlists.add({wrapper, orvo::unshared});
    return wrapper;
}

orvo::shared_ptr<Album> Factory::createAlbum(sp_album* handle) {
    return create<Album>(albums, handle);
}

orvo::shared_ptr<Artist> Factory::createArtist(sp_artist* handle) {
    return create<Artist>(artists, handle);
}

orvo::shared_ptr<Track> Factory::createTrack(sp_track* handle) {
    return create<Track>(tracks, handle);
}

orvo::shared_ptr<User> Factory::createUser(sp_user* handle) {
    return create<User>(users, handle);
}

orvo::shared_ptr<Albumbrowse> Factory::createAlbumbrowse(sp_albumbrowse* handle) {
    return create<Albumbrowse>(albumbrowses, handle);
}

orvo::shared_ptr<Artistbrowse> Factory::createArtistbrowse(sp_artistbrowse* handle) {
    return create<Artistbrowse>(artistbrowses, handle);
}

orvo::shared_ptr<Search> Factory::createSearch(sp_search* handle) {
    return create<Search>(searches, handle);
}

orvo::shared_ptr<Toplistbrowse> Factory::createToplistbrowse(sp_toplistbrowse* handle) {
    return create<Toplistbrowse>(toplistbrowses, handle);
}

orvo::shared_ptr<SpImage> Factory::createSpImage(sp_image* handle) {
    return create<SpImage>(images, handle);
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
    playlists.clear();
}

void Factory::clearAlbums() {
    albums.clear();
}

void Factory::clearArtists() {
    artists.clear();
}

void Factory::clearTracks() {
    tracks.clear();
}

void Factory::clearUsers() {
    users.clear();
}

void Factory::clearAlbumbrowses() {
    albumbrowses.clear();
}

void Factory::clearArtistbrowses() {
    artistbrowses.clear();
}

void Factory::clearSearches() {
    searches.clear();
}

void Factory::clearToplistbrowses() {
    toplistbrowses.clear();
}

void Factory::clearSpImages() {
    images.clear();
}
