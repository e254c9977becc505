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

Factory& Factory::getInstance() {
    static Factory& instance = *new Factory;
    return instance;
}

void Factory::setSession(sp_session* librarySession,
                         const orvo::shared_ptr<LibWrapper>& libraryShare) {
    session = librarySession;
    library = libraryShare;
}

template <class Wrapper, class Kind>
orvo::shared_ptr<Wrapper> Factory::create(Kind* handle, Made<Wrapper>& made) {
    orvo::shared_ptr<Wrapper> wrapper(new Wrapper(session, handle, library));
    made.push_back(wrapper);
    return wrapper;
}

template <class Wrapper>
void Factory::clear(Made<Wrapper>& made) {
    // The list is empty before the first handle goes: nothing that follows from that finds it half
    // cleared.
    Made<Wrapper> leaving;
    leaving.swap(made);
    for (const auto& weak : leaving) {
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
    orvo::shared_ptr<Playlist> wrapper(new Playlist(session, handle, library, container));
    playlists.push_back(wrapper);
    return wrapper;
}

orvo::shared_ptr<Album> Factory::createAlbum(sp_album* handle) {
    return create(handle, albums);
}

orvo::shared_ptr<Artist> Factory::createArtist(sp_artist* handle) {
    return create(handle, artists);
}

orvo::shared_ptr<Track> Factory::createTrack(sp_track* handle) {
    return create(handle, tracks);
}

orvo::shared_ptr<User> Factory::createUser(sp_user* handle) {
    return create(handle, users);
}

orvo::shared_ptr<Albumbrowse> Factory::createAlbumbrowse(sp_albumbrowse* handle) {
    return create(handle, albumbrowses);
}

orvo::shared_ptr<Artistbrowse> Factory::createArtistbrowse(sp_artistbrowse* handle) {
    return create(handle, artistbrowses);
}

orvo::shared_ptr<Search> Factory::createSearch(sp_search* handle) {
    return create(handle, searches);
}

orvo::shared_ptr<Toplistbrowse> Factory::createToplistbrowse(sp_toplistbrowse* handle) {
    return create(handle, toplistbrowses);
}

orvo::shared_ptr<SpImage> Factory::createSpImage(sp_image* handle) {
    return create(handle, images);
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
