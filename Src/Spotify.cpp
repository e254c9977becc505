#include "Spotify.h"

#include "Logger.h"

#include "libspotify/api.h"

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Spotify");

constexpr char scriptApiVersion[] = "12.8";

}  // namespace

Spotify::Spotify() {
    session = orvo::make_shared<Session>(sonolet);

    _register();
    _enum("SPOTIFY_API_VERSION", SPOTIFY_API_VERSION);
    _string("SPOTIFY_JS_API_VERSION", scriptApiVersion);
    _attribute_get("Session", &Spotify::get_session);
    _attribute_get("Search", &Spotify::get_search);
    _attribute_get("Albumbrowse", &Spotify::get_albumbrowse);
    _attribute_get("Artistbrowse", &Spotify::get_artistbrowse);
    _attribute_get("SpImage", &Spotify::get_spimage);
    _attribute_get("Toplistbrowse", &Spotify::get_toplistbrowse);
    _attribute_get("SessionConfig", &Spotify::get_sessionconfig);
    _attribute_get("Sonolet", &Spotify::get_sonolet);
    _attribute_get("Track", &Spotify::get_track);
    _attribute_get("Album", &Spotify::get_album);
    _attribute_get("Artist", &Spotify::get_artist);
    _attribute_get("Playlist", &Spotify::get_playlist);
    _attribute_get("SP_SIGNUP_PAGE", &Spotify::get_signup_page_enums);
    _attribute_get("SP_SIGNUP_FEATURE", &Spotify::get_signup_feature_enums);
    _attribute_get("SP_SIGNUP_ACTION", &Spotify::get_signup_action_enums);
    _attribute_get("SP_ERROR", &Spotify::get_error_enums);
    _attribute_get("SP_PLAYLIST_TYPE", &Spotify::get_playlist_type_enums);
    _attribute_get("SP_TRACK_AVAILABILITY", &Spotify::get_track_availability_enums);
    _attribute_get("SP_ARTISTBROWSE_TYPE", &Spotify::get_artistbrowse_type_enums);
    _attribute_get("SP_ALBUMTYPE", &Spotify::get_albumtype_enums);
    _attribute_get("SP_IMAGE_FORMAT", &Spotify::get_image_format_enums);
    _attribute_get("SP_RELATION_TYPE", &Spotify::get_relation_type_enums);
    _attribute_get("SP_TOPLIST_TYPE", &Spotify::get_toplist_type_enums);
    _attribute_get("SP_TOPLIST_REGION", &Spotify::get_toplist_region_enums);
    _attribute_get("SP_SEARCH_TYPE", &Spotify::get_search_type_enums);
    _attribute_get("SP_PLUGIN_ERROR", &Spotify::get_plugin_error_enums);
    _function("errorMessage", &Spotify::errorMessage, "n");

    logger.trace({"Spotify::Spotify", 275}, "Initializing the Spotify object");
}

void Spotify::errorMessage(jspp::function_context& context) const {
    const auto error = static_cast<sp_error>(context.integer(0));
    context.return_string(sp_error_message(error));
}

void Spotify::get_session(jspp::result_context& context) const {
    answer(session, context);
}

void Spotify::get_search(jspp::result_context& context) const {
    answer(search, context);
}

void Spotify::get_albumbrowse(jspp::result_context& context) const {
    answer(albumbrowse, context);
}

void Spotify::get_artistbrowse(jspp::result_context& context) const {
    answer(artistbrowse, context);
}

void Spotify::get_spimage(jspp::result_context& context) const {
    answer(spImage, context);
}

void Spotify::get_toplistbrowse(jspp::result_context& context) const {
    answer(toplistbrowse, context);
}

void Spotify::get_sessionconfig(jspp::result_context& context) const {
    answer(sessionConfig, context);
}

void Spotify::get_sonolet(jspp::result_context& context) const {
    answer(sonolet, context);
}

void Spotify::get_track(jspp::result_context& context) const {
    answer(track, context);
}

void Spotify::get_album(jspp::result_context& context) const {
    answer(album, context);
}

void Spotify::get_artist(jspp::result_context& context) const {
    answer(artist, context);
}

void Spotify::get_playlist(jspp::result_context& context) const {
    answer(playlist, context);
}

void Spotify::get_signup_page_enums(jspp::result_context& context) const {
    answer(spSignupPageEnums, context);
}

void Spotify::get_signup_feature_enums(jspp::result_context& context) const {
    answer(spSignupFeatureEnums, context);
}

void Spotify::get_signup_action_enums(jspp::result_context& context) const {
    answer(spSignupActionEnums, context);
}

void Spotify::get_error_enums(jspp::result_context& context) const {
    answer(spErrorEnums, context);
}

void Spotify::get_playlist_type_enums(jspp::result_context& context) const {
    answer(spPlaylistTypeEnums, context);
}

void Spotify::get_track_availability_enums(jspp::result_context& context) const {
    answer(spTrackAvailabilityEnums, context);
}

void Spotify::get_artistbrowse_type_enums(jspp::result_context& context) const {
    answer(spArtistbrowseTypeEnums, context);
}

void Spotify::get_albumtype_enums(jspp::result_context& context) const {
    answer(spAlbumTypeEnums, context);
}

void Spotify::get_image_format_enums(jspp::result_context& context) const {
    answer(spImageFormatEnums, context);
}

void Spotify::get_relation_type_enums(jspp::result_context& context) const {
    answer(spRelationTypeEnums, context);
}

void Spotify::get_toplist_type_enums(jspp::result_context& context) const {
    answer(spToplistTypeEnums, context);
}

void Spotify::get_toplist_region_enums(jspp::result_context& context) const {
    answer(spToplistRegionEnums, context);
}

void Spotify::get_search_type_enums(jspp::result_context& context) const {
    answer(spSearchTypeEnums, context);
}

void Spotify::get_plugin_error_enums(jspp::result_context& context) const {
    answer(spPluginErrorEnums, context);
}
