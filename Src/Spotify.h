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
// process exit. Script thread.
class Spotify final : public jspp::event_dispatcher<jspp::interface> {
public:
    Spotify();

    const orvo::shared_ptr<Session>& getSession() const { return session; }

private:
    // Every attribute answers the object it holds, always the same one.
    template <class Held>
    static void answer(const orvo::shared_ptr<Held>& held, jspp::result_context& context) {
        context.return_interface(held, true);
    }

    void get_session(jspp::result_context& context) const;
    void get_search(jspp::result_context& context) const;
    void get_albumbrowse(jspp::result_context& context) const;
    void get_artistbrowse(jspp::result_context& context) const;
    void get_spimage(jspp::result_context& context) const;
    void get_toplistbrowse(jspp::result_context& context) const;
    void get_sessionconfig(jspp::result_context& context) const;
    void get_sonolet(jspp::result_context& context) const;
    void get_track(jspp::result_context& context) const;
    void get_album(jspp::result_context& context) const;
    void get_artist(jspp::result_context& context) const;
    void get_playlist(jspp::result_context& context) const;
    void get_signup_page_enums(jspp::result_context& context) const;
    void get_signup_feature_enums(jspp::result_context& context) const;
    void get_signup_action_enums(jspp::result_context& context) const;
    void get_error_enums(jspp::result_context& context) const;
    void get_playlist_type_enums(jspp::result_context& context) const;
    void get_track_availability_enums(jspp::result_context& context) const;
    void get_artistbrowse_type_enums(jspp::result_context& context) const;
    void get_albumtype_enums(jspp::result_context& context) const;
    void get_image_format_enums(jspp::result_context& context) const;
    void get_relation_type_enums(jspp::result_context& context) const;
    void get_toplist_type_enums(jspp::result_context& context) const;
    void get_toplist_region_enums(jspp::result_context& context) const;
    void get_search_type_enums(jspp::result_context& context) const;
    void get_plugin_error_enums(jspp::result_context& context) const;

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
