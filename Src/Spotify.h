#ifndef SONOLET_SPOTIFY_H
#define SONOLET_SPOTIFY_H

#include "Album.h"
#include "Albumbrowse.h"
#include "Artist.h"
#include "Artistbrowse.h"
#include "Enumerations.h"
#include "Playlist.h"
#include "Search.h"
#include "Session.h"
#include "SessionConfig.h"
#include "Sonolet.h"
#include "SpImage.h"
#include "Toplistbrowse.h"
#include "Track.h"
#include "jspp/event_dispatcher.h"
#include "jspp/interface.h"
#include "jspp/orvo/shared_ptr.h"

// The root of all that a page sees, under the global name "Spotify". There is one, from load to
// process exit. Script thread. Ownership: shares of everything it answers; script objects own
// shares, too, so that what a page still holds outlives the root.
class Spotify final : public jspp::event_dispatcher<jspp::interface> {
public:
    // Makes every object that it answers. Of libspotify nothing is called before a page creates the
    // session, but for the text of its build. Throws when there is no memory.
    Spotify();

    // For the plug-in's hooks. Never null. It is there before the session is created; its functions
    // throw until then.
    const orvo::shared_ptr<Session>& getSession() const { return session; }

private:
    // An attribute that answers the object it holds, always the same one.
    template <auto Held>
    void gives(jspp::result_context& context) const {
        context.return_interface(this->*Held, true);
    }

    // Script: libspotify's text of an error's number.
    void errorMessage(jspp::function_context& context) const;

    orvo::shared_ptr<Session> session;  // made with the Sonolet below
    const orvo::shared_ptr<SessionConfig> sessionConfig{new SessionConfig};
    const orvo::shared_ptr<Sonolet> sonolet{new Sonolet};

    // Constructor objects: their "create" makes the wrappers.
    const orvo::shared_ptr<Search> search{new Search};
    const orvo::shared_ptr<Albumbrowse> albumbrowse{new Albumbrowse};
    const orvo::shared_ptr<Artistbrowse> artistbrowse{new Artistbrowse};
    const orvo::shared_ptr<SpImage> spImage{new SpImage};
    const orvo::shared_ptr<Toplistbrowse> toplistbrowse{new Toplistbrowse};
    const orvo::shared_ptr<Track> track{new Track};
    const orvo::shared_ptr<Album> album{new Album};
    const orvo::shared_ptr<Artist> artist{new Artist};
    const orvo::shared_ptr<Playlist> playlist{new Playlist};

    // The groups of constants.
    const orvo::shared_ptr<SpSignupPageEnums> spSignupPageEnums{new SpSignupPageEnums};
    const orvo::shared_ptr<SpSignupFeatureEnums> spSignupFeatureEnums{new SpSignupFeatureEnums};
    const orvo::shared_ptr<SpSignupActionEnums> spSignupActionEnums{new SpSignupActionEnums};
    const orvo::shared_ptr<SpErrorEnums> spErrorEnums{new SpErrorEnums};
    const orvo::shared_ptr<SpPlaylistTypeEnums> spPlaylistTypeEnums{new SpPlaylistTypeEnums};
    const orvo::shared_ptr<SpTrackAvailabilityEnums> spTrackAvailabilityEnums{
        new SpTrackAvailabilityEnums};
    const orvo::shared_ptr<SpArtistbrowseTypeEnums> spArtistbrowseTypeEnums{
        new SpArtistbrowseTypeEnums};
    const orvo::shared_ptr<SpAlbumTypeEnums> spAlbumTypeEnums{new SpAlbumTypeEnums};
    const orvo::shared_ptr<SpImageFormatEnums> spImageFormatEnums{new SpImageFormatEnums};
    const orvo::shared_ptr<SpRelationTypeEnums> spRelationTypeEnums{new SpRelationTypeEnums};
    const orvo::shared_ptr<SpToplistTypeEnums> spToplistTypeEnums{new SpToplistTypeEnums};
    const orvo::shared_ptr<SpToplistRegionEnums> spToplistRegionEnums{new SpToplistRegionEnums};
    const orvo::shared_ptr<SpSearchTypeEnums> spSearchTypeEnums{new SpSearchTypeEnums};
    const orvo::shared_ptr<SpPluginErrorEnums> spPluginErrorEnums{new SpPluginErrorEnums};
};

// Created while the plug-in is loaded, released by the process's exit handlers.
extern __attribute__((visibility("default"))) orvo::shared_ptr<Spotify> g_spotify_instance_Spotify;

#endif
