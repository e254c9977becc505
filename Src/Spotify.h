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

    orvo::shared_ptr<Session> session;
    orvo::shared_ptr<SessionConfig> sessionConfig;
    orvo::shared_ptr<Sonolet> sonolet;

    // Constructor objects: their "create" makes the wrappers.
    orvo::shared_ptr<Search> search;
    orvo::shared_ptr<Albumbrowse> albumbrowse;
    orvo::shared_ptr<Artistbrowse> artistbrowse;
    orvo::shared_ptr<SpImage> spImage;
    orvo::shared_ptr<Toplistbrowse> toplistbrowse;
    orvo::shared_ptr<Track> track;
    orvo::shared_ptr<Album> album;
    orvo::shared_ptr<Artist> artist;
    orvo::shared_ptr<Playlist> playlist;

    orvo::shared_ptr<SpSignupPageEnums> spSignupPageEnums;
    orvo::shared_ptr<SpSignupFeatureEnums> spSignupFeatureEnums;
    orvo::shared_ptr<SpSignupActionEnums> spSignupActionEnums;
    orvo::shared_ptr<SpErrorEnums> spErrorEnums;
    orvo::shared_ptr<SpPlaylistTypeEnums> spPlaylistTypeEnums;
    orvo::shared_ptr<SpTrackAvailabilityEnums> spTrackAvailabilityEnums;
    orvo::shared_ptr<SpArtistbrowseTypeEnums> spArtistbrowseTypeEnums;
    orvo::shared_ptr<SpAlbumTypeEnums> spAlbumTypeEnums;
    orvo::shared_ptr<SpImageFormatEnums> spImageFormatEnums;
    orvo::shared_ptr<SpRelationTypeEnums> spRelationTypeEnums;
    orvo::shared_ptr<SpToplistTypeEnums> spToplistTypeEnums;
    orvo::shared_ptr<SpToplistRegionEnums> spToplistRegionEnums;
    orvo::shared_ptr<SpSearchTypeEnums> spSearchTypeEnums;
    orvo::shared_ptr<SpPluginErrorEnums> spPluginErrorEnums;
};

// Created while the plug-in is loaded, released by the process's exit handlers.
extern __attribute__((visibility("default"))) orvo::shared_ptr<Spotify> g_spotify_instance_Spotify;

#endif
