#include "Enumerations.h"

#include "libspotify/api.h"

// A constant under its own name.
#define CONSTANT(name)                                                                             \
    Constant {                                                                                     \
#name, name                                                                                \
    }

Enumeration::Enumeration(std::initializer_list<Constant> constants) {
    for (const Constant& constant : constants) {
        _enum(constant.name, constant.value);
    }
}

SpSignupPageEnums::SpSignupPageEnums()
    : Enumeration({
          CONSTANT(SP_SIGNUP_PAGE_NONE),
          CONSTANT(SP_SIGNUP_PAGE_FACEBOOK_LOGIN),
          CONSTANT(SP_SIGNUP_PAGE_ENTER_CREDENTIALS),
          CONSTANT(SP_SIGNUP_PAGE_MERGING_ACCOUNTS),
          CONSTANT(SP_SIGNUP_PAGE_SPOTIFY_LOGIN),
          CONSTANT(SP_SIGNUP_PAGE_POST_TO_OPENGRAPH_OPTION),
          CONSTANT(SP_SIGNUP_PAGE_DONE),
      }) {}

SpSignupFeatureEnums::SpSignupFeatureEnums()
    : Enumeration({
          CONSTANT(SP_SIGNUP_FEATURE_CONNECT_TO_FACEBOOK),
          CONSTANT(SP_SIGNUP_FEATURE_MERGE_ACCOUNT),
          CONSTANT(SP_SIGNUP_FEATURE_SHOW_LICENSES),
          CONSTANT(SP_SIGNUP_FEATURE_SHOW_POST_OG_OPTION),
      }) {}

SpSignupActionEnums::SpSignupActionEnums()
    : Enumeration({
          CONSTANT(SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK),
          CONSTANT(SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK_COMPLETED),
          CONSTANT(SP_SIGNUP_ACTION_LOGIN_WITH_SPOTIFY),
          CONSTANT(SP_SIGNUP_ACTION_ACCEPT),
          CONSTANT(SP_SIGNUP_ACTION_CANCEL_FACEBOOK_CONNECT),
          CONSTANT(SP_SIGNUP_ACTION_MERGE_WITH_ACCOUNT),
          CONSTANT(SP_SIGNUP_ACTION_GO_BACK),
          CONSTANT(SP_SIGNUP_ACTION_CANCEL_SIGNUP),
          CONSTANT(SP_SIGNUP_ACTION_ACCEPT_LICENSES),
      }) {}

SpErrorEnums::SpErrorEnums()
    : Enumeration({
          CONSTANT(SP_ERROR_OK),
          CONSTANT(SP_ERROR_BAD_API_VERSION),
          CONSTANT(SP_ERROR_API_INITIALIZATION_FAILED),
          CONSTANT(SP_ERROR_TRACK_NOT_PLAYABLE),
          CONSTANT(SP_ERROR_BAD_APPLICATION_KEY),
          CONSTANT(SP_ERROR_BAD_USERNAME_OR_PASSWORD),
          CONSTANT(SP_ERROR_USER_BANNED),
          CONSTANT(SP_ERROR_UNABLE_TO_CONTACT_SERVER),
          CONSTANT(SP_ERROR_CLIENT_TOO_OLD),
          CONSTANT(SP_ERROR_OTHER_PERMANENT),
          CONSTANT(SP_ERROR_BAD_USER_AGENT),
          CONSTANT(SP_ERROR_MISSING_CALLBACK),
          CONSTANT(SP_ERROR_INVALID_INDATA),
          CONSTANT(SP_ERROR_INDEX_OUT_OF_RANGE),
          CONSTANT(SP_ERROR_USER_NEEDS_PREMIUM),
          CONSTANT(SP_ERROR_OTHER_TRANSIENT),
          CONSTANT(SP_ERROR_IS_LOADING),
          CONSTANT(SP_ERROR_NO_STREAM_AVAILABLE),
          CONSTANT(SP_ERROR_PERMISSION_DENIED),
          CONSTANT(SP_ERROR_INBOX_IS_FULL),
          CONSTANT(SP_ERROR_NO_CACHE),
          CONSTANT(SP_ERROR_NO_SUCH_USER),
          CONSTANT(SP_ERROR_NO_CREDENTIALS),
          CONSTANT(SP_ERROR_NETWORK_DISABLED),
          CONSTANT(SP_ERROR_INVALID_DEVICE_ID),
          CONSTANT(SP_ERROR_CANT_OPEN_TRACE_FILE),
          CONSTANT(SP_ERROR_APPLICATION_BANNED),
          CONSTANT(SP_ERROR_HOST_NOT_FOUND),
          CONSTANT(SP_ERROR_TIMEOUT),
          CONSTANT(SP_ERROR_ACCESS_DENIED),
          CONSTANT(SP_ERROR_OFFLINE_TOO_MANY_TRACKS),
          CONSTANT(SP_ERROR_OFFLINE_DISK_CACHE),
          CONSTANT(SP_ERROR_OFFLINE_EXPIRED),
          CONSTANT(SP_ERROR_OFFLINE_NOT_ALLOWED),
          CONSTANT(SP_ERROR_OFFLINE_LICENSE_LOST),
          CONSTANT(SP_ERROR_OFFLINE_LICENSE_ERROR),
      }) {}

SpPlaylistTypeEnums::SpPlaylistTypeEnums()
    : Enumeration({
          CONSTANT(SP_PLAYLIST_TYPE_PLAYLIST),
          CONSTANT(SP_PLAYLIST_TYPE_START_FOLDER),
          CONSTANT(SP_PLAYLIST_TYPE_END_FOLDER),
          CONSTANT(SP_PLAYLIST_TYPE_PLACEHOLDER),
      }) {}

SpTrackAvailabilityEnums::SpTrackAvailabilityEnums()
    : Enumeration({
          CONSTANT(SP_TRACK_AVAILABILITY_UNAVAILABLE),
          CONSTANT(SP_TRACK_AVAILABILITY_AVAILABLE),
          CONSTANT(SP_TRACK_AVAILABILITY_NOT_STREAMABLE),
          CONSTANT(SP_TRACK_AVAILABILITY_BANNED_BY_ARTIST),
      }) {}

SpArtistbrowseTypeEnums::SpArtistbrowseTypeEnums()
    : Enumeration({
          CONSTANT(SP_ARTISTBROWSE_FULL),
          CONSTANT(SP_ARTISTBROWSE_NO_TRACKS),
          CONSTANT(SP_ARTISTBROWSE_NO_ALBUMS),
      }) {}

SpAlbumTypeEnums::SpAlbumTypeEnums()
    : Enumeration({
          CONSTANT(SP_ALBUMTYPE_ALBUM),
          CONSTANT(SP_ALBUMTYPE_SINGLE),
          CONSTANT(SP_ALBUMTYPE_COMPILATION),
          CONSTANT(SP_ALBUMTYPE_UNKNOWN),
      }) {}

SpImageFormatEnums::SpImageFormatEnums()
    : Enumeration({
          CONSTANT(SP_IMAGE_FORMAT_UNKNOWN),
          CONSTANT(SP_IMAGE_FORMAT_JPEG),
      }) {}

SpRelationTypeEnums::SpRelationTypeEnums()
    : Enumeration({
          CONSTANT(SP_RELATION_TYPE_UNKNOWN),
          CONSTANT(SP_RELATION_TYPE_NONE),
          CONSTANT(SP_RELATION_TYPE_UNIDIRECTIONAL),
          CONSTANT(SP_RELATION_TYPE_BIDIRECTIONAL),
      }) {}

SpToplistTypeEnums::SpToplistTypeEnums()
    : Enumeration({
          CONSTANT(SP_TOPLIST_TYPE_ARTISTS),
          CONSTANT(SP_TOPLIST_TYPE_ALBUMS),
          CONSTANT(SP_TOPLIST_TYPE_TRACKS),
      }) {}

SpToplistRegionEnums::SpToplistRegionEnums()
    : Enumeration({
          CONSTANT(SP_TOPLIST_REGION_EVERYWHERE),
          CONSTANT(SP_TOPLIST_REGION_USER),
      }) {}

SpSearchTypeEnums::SpSearchTypeEnums() : Enumeration({}) {}

SpPluginErrorEnums::SpPluginErrorEnums()
    : Enumeration({
          CONSTANT(SP_PLUGIN_ERROR_OK),
          CONSTANT(SP_PLUGIN_ERROR_GENERAL),
          CONSTANT(SP_PLUGIN_ERROR_NO_AUDIO),
      }) {}
