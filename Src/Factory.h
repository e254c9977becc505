#ifndef SONOLET_FACTORY_H
#define SONOLET_FACTORY_H

#include "LibWrapper.h"
#include "jspp/orvo/shared_ptr.h"

#include "libspotify/api.h"

#include <cstddef>
#include <vector>

class Album;
class Albumbrowse;
class Artist;
class Artistbrowse;
class Object;
class Playlist;
class Playlistcontainer;
class Search;
class SpImage;
class Toplistbrowse;
class Track;
class User;

// Makes every wrapper of a libspotify handle, a new one on each request, and clears those that
// still live at logout. Nothing is ever looked up by handle. Script thread; made on first use,
// never freed. Ownership: wrappers belong to who asks; the factory remembers them weakly. Errors:
// memory alone.
class Factory final {
public:
    static Factory& getInstance();

    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;

    // The session that new wrappers get, and a share of it; null and empty take both away.
    void setSession(sp_session* librarySession, const orvo::shared_ptr<LibWrapper>& libraryShare);

    // A null handle is wrapped as it is, but for a container, whose wrapper refuses it.
    orvo::shared_ptr<Playlist> createPlaylist(sp_playlist* handle);
    // The container lives as long as the playlist's wrapper.
    orvo::shared_ptr<Playlist> createPlaylist(const orvo::shared_ptr<Playlistcontainer>& container,
                                              sp_playlist* handle);
    orvo::shared_ptr<Album> createAlbum(sp_album* handle);
    orvo::shared_ptr<Artist> createArtist(sp_artist* handle);
    orvo::shared_ptr<Track> createTrack(sp_track* handle);
    orvo::shared_ptr<User> createUser(sp_user* handle);
    orvo::shared_ptr<Albumbrowse> createAlbumbrowse(sp_albumbrowse* handle);
    orvo::shared_ptr<Artistbrowse> createArtistbrowse(sp_artistbrowse* handle);
    orvo::shared_ptr<Search> createSearch(sp_search* handle);
    orvo::shared_ptr<Toplistbrowse> createToplistbrowse(sp_toplistbrowse* handle);
    orvo::shared_ptr<SpImage> createSpImage(sp_image* handle);
    // Not among those that are cleared at logout.
    orvo::shared_ptr<Playlistcontainer> createPlaylistcontainer(sp_playlistcontainer* handle);

    // Every living wrapper loses its handle and its recorded script names. To be called before
    // libspotify is told to log out.
    void clearObjects();
    // In this order; each kind by itself.
    void clearPlaylists();
    void clearAlbums();
    void clearArtists();
    void clearTracks();
    void clearUsers();
    void clearAlbumbrowses();
    void clearArtistbrowses();
    void clearSearches();
    void clearToplistbrowses();
    void clearSpImages();

private:
    // The wrappers of one kind, in order of making. The dead among them go whenever the list has
    // doubled since they last went, but not before there are eight: more blocks at once the heap
    // would sort. Weakly: that a wrapper stands here keeps nothing alive.
    class Made final {
    public:
        void add(orvo::weak_ptr<Object> wrapper);
        // Clears the living, and forgets all.
        void clear();

    private:
        std::vector<orvo::weak_ptr<Object>> wrappers;
        std::size_t cleanAt = 8;
    };

    Factory() = default;

    template <class Kept, class Kind>
    orvo::shared_ptr<Kept> create(Made& made, Kind* handle);

    // Null and empty before the session is created and after it has gone.
    sp_session* session = nullptr;
    orvo::shared_ptr<LibWrapper> library;

    Made playlists;
    Made albums;
    Made artists;
    Made tracks;
    Made users;
    Made albumbrowses;
    Made artistbrowses;
    Made searches;
    Made toplistbrowses;
    Made images;
};

#endif
