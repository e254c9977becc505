#include "Spotify.h"

#include "Logger.h"

#include "libspotify/api.h"

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Spotify");

constexpr char scriptApiVersion[] = "12.8";

}  // namespace

Spotify::Spotify() {
    session = orvo::make_shared<Session>(sonolet);

    static const attribute_row objects[] = {
        {"Session", &Spotify::gives<&Spotify::session>, {}},
        {"Search", &Spotify::gives<&Spotify::search>, {}},
        {"Albumbrowse", &Spotify::gives<&Spotify::albumbrowse>, {}},
        {"Artistbrowse", &Spotify::gives<&Spotify::artistbrowse>, {}},
        {"SpImage", &Spotify::gives<&Spotify::spImage>, {}},
        {"Toplistbrowse", &Spotify::gives<&Spotify::toplistbrowse>, {}},
        {"SessionConfig", &Spotify::gives<&Spotify::sessionConfig>, {}},
        {"Sonolet", &Spotify::gives<&Spotify::sonolet>, {}},
        {"Track", &Spotify::gives<&Spotify::track>, {}},
        {"Album", &Spotify::gives<&Spotify::album>, {}},
        {"Artist", &Spotify::gives<&Spotify::artist>, {}},
        {"Playlist", &Spotify::gives<&Spotify::playlist>, {}},
        {"SP_SIGNUP_PAGE", &Spotify::gives<&Spotify::spSignupPageEnums>, {}},
        {"SP_SIGNUP_FEATURE", &Spotify::gives<&Spotify::spSignupFeatureEnums>, {}},
        {"SP_SIGNUP_ACTION", &Spotify::gives<&Spotify::spSignupActionEnums>, {}},
        {"SP_ERROR", &Spotify::gives<&Spotify::spErrorEnums>, {}},
        {"SP_PLAYLIST_TYPE", &Spotify::gives<&Spotify::spPlaylistTypeEnums>, {}},
        {"SP_TRACK_AVAILABILITY", &Spotify::gives<&Spotify::spTrackAvailabilityEnums>, {}},
        {"SP_ARTISTBROWSE_TYPE", &Spotify::gives<&Spotify::spArtistbrowseTypeEnums>, {}},
        {"SP_ALBUMTYPE", &Spotify::gives<&Spotify::spAlbumTypeEnums>, {}},
        {"SP_IMAGE_FORMAT", &Spotify::gives<&Spotify::spImageFormatEnums>, {}},
        {"SP_RELATION_TYPE", &Spotify::gives<&Spotify::spRelationTypeEnums>, {}},
        {"SP_TOPLIST_TYPE", &Spotify::gives<&Spotify::spToplistTypeEnums>, {}},
        {"SP_TOPLIST_REGION", &Spotify::gives<&Spotify::spToplistRegionEnums>, {}},
        {"SP_SEARCH_TYPE", &Spotify::gives<&Spotify::spSearchTypeEnums>, {}},
        {"SP_PLUGIN_ERROR", &Spotify::gives<&Spotify::spPluginErrorEnums>, {}},
    };
    static const function_row functions[] = {{"errorMessage", &Spotify::errorMessage, "n"}};
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), objects, functions);
    _class(names);
    _enum("SPOTIFY_API_VERSION", SPOTIFY_API_VERSION);
    _string("SPOTIFY_JS_API_VERSION", scriptApiVersion);

    logger.trace({"Spotify::Spotify", 275}, "Initializing the Spotify object");
}

void Spotify::errorMessage(jspp::function_context& context) const {
    const auto error = static_cast<sp_error>(context.integer(0));
    context.return_string(sp_error_message(error));
}
