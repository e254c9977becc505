#ifndef SONOLET_PLATFORM_LIBSPOTIFY_API_H
#define SONOLET_PLATFORM_LIBSPOTIFY_API_H

// The music service's client library, libspotify.so.12.
//
// Threads: every function is called on one thread, the one that calls sp_session_process_events.
// The callbacks music_delivery, end_of_track, log_message and notify_main_thread may come from a
// thread of the library's own, also while a function is under way; every other callback comes from
// inside sp_session_process_events, never from inside the function that asked for it.
//
// Ownership: handles are counted. A function whose name has "create" in it returns a reference that
// the caller owns and gives back with the kind's release function; every other getter returns a
// borrowed handle, valid as long as what it was asked of, to be kept with the kind's add-ref
// function. The last release frees a handle and forgets its callbacks. Strings and arrays that a
// getter returns belong to the handle and are valid until it changes: in the next
// sp_session_process_events at the earliest. What is passed in is the caller's
// and is copied, but for the records of callbacks.
//
// Errors: functions that can fail return an sp_error, SP_ERROR_OK when they have done, or at least
// begun, what was asked. Getters of handles and arrays return NULL for an index out of range or for
// data that is not there, not yet for example; getters of numbers return 0, of flags false, of
// texts NULL or the empty text. A NULL handle may be given to no function.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

// A number of script or of a newer library may lie outside a list below, and a toplist region is
// meant to; in C++ that takes a fixed type. C has it as it is.
#ifdef __cplusplus
#define SP_ENUM_BASE : int
#else
#define SP_ENUM_BASE
#endif

#define SPOTIFY_API_VERSION 12

typedef unsigned char byte;
typedef uint64_t sp_uint64;

// Opaque to the client. All but the session are counted; a handle is valid up to its last release,
// and no handle beyond the session's.
typedef struct sp_session sp_session;
typedef struct sp_track sp_track;
typedef struct sp_album sp_album;
typedef struct sp_artist sp_artist;
typedef struct sp_user sp_user;
typedef struct sp_image sp_image;
typedef struct sp_search sp_search;
typedef struct sp_albumbrowse sp_albumbrowse;
typedef struct sp_artistbrowse sp_artistbrowse;
typedef struct sp_toplistbrowse sp_toplistbrowse;
typedef struct sp_playlist sp_playlist;
typedef struct sp_playlistcontainer sp_playlistcontainer;
typedef struct sp_link sp_link;

// What a function that can fail answers, and what callbacks tell. The values up to 3 are the
// caller's mistakes, 16 passes by itself, 30 and more are about keeping tracks without a
// connection.
typedef enum SP_ENUM_BASE {
    SP_ERROR_OK = 0,
    SP_ERROR_BAD_API_VERSION = 1,
    SP_ERROR_API_INITIALIZATION_FAILED = 2,
    SP_ERROR_TRACK_NOT_PLAYABLE = 3,
    SP_ERROR_BAD_APPLICATION_KEY = 5,
    SP_ERROR_BAD_USERNAME_OR_PASSWORD = 6,
    SP_ERROR_USER_BANNED = 7,
    SP_ERROR_UNABLE_TO_CONTACT_SERVER = 8,
    SP_ERROR_CLIENT_TOO_OLD = 9,
    SP_ERROR_OTHER_PERMANENT = 10,
    SP_ERROR_BAD_USER_AGENT = 11,
    SP_ERROR_MISSING_CALLBACK = 12,
    SP_ERROR_INVALID_INDATA = 13,
    SP_ERROR_INDEX_OUT_OF_RANGE = 14,
    SP_ERROR_USER_NEEDS_PREMIUM = 15,
    SP_ERROR_OTHER_TRANSIENT = 16,
    SP_ERROR_IS_LOADING = 17,
    SP_ERROR_NO_STREAM_AVAILABLE = 18,
    SP_ERROR_PERMISSION_DENIED = 19,
    SP_ERROR_INBOX_IS_FULL = 20,
    SP_ERROR_NO_CACHE = 21,
    SP_ERROR_NO_SUCH_USER = 22,
    SP_ERROR_NO_CREDENTIALS = 23,
    SP_ERROR_NETWORK_DISABLED = 24,
    SP_ERROR_INVALID_DEVICE_ID = 25,
    SP_ERROR_CANT_OPEN_TRACE_FILE = 26,
    SP_ERROR_APPLICATION_BANNED = 27,
    SP_ERROR_HOST_NOT_FOUND = 28,
    SP_ERROR_TIMEOUT = 29,
    SP_ERROR_ACCESS_DENIED = 30,
    SP_ERROR_OFFLINE_TOO_MANY_TRACKS = 31,
    SP_ERROR_OFFLINE_DISK_CACHE = 32,
    SP_ERROR_OFFLINE_EXPIRED = 33,
    SP_ERROR_OFFLINE_NOT_ALLOWED = 34,
    SP_ERROR_OFFLINE_LICENSE_LOST = 35,
    SP_ERROR_OFFLINE_LICENSE_ERROR = 36
} sp_error;

// Disconnected: logged in, but the service is out of reach. Offline: on purpose.
typedef enum SP_ENUM_BASE {
    SP_CONNECTION_STATE_LOGGED_OUT = 0,
    SP_CONNECTION_STATE_LOGGED_IN = 1,
    SP_CONNECTION_STATE_DISCONNECTED = 2,
    SP_CONNECTION_STATE_UNDEFINED = 3,
    SP_CONNECTION_STATE_OFFLINE = 4
} sp_connectionstate;

// Interleaved frames of signed 16-bit samples; there is no other type.
typedef enum SP_ENUM_BASE { SP_SAMPLETYPE_INT16_NATIVE_ENDIAN = 0 } sp_sampletype;

// What is asked of the service; it may deliver less.
typedef enum SP_ENUM_BASE {
    SP_BITRATE_160k = 0,
    SP_BITRATE_320k = 1,
    SP_BITRATE_96k = 2
} sp_bitrate;

// What an entry of a container is. A folder is everything between its start and its end.
typedef enum SP_ENUM_BASE {
    SP_PLAYLIST_TYPE_PLAYLIST = 0,
    SP_PLAYLIST_TYPE_START_FOLDER = 1,
    SP_PLAYLIST_TYPE_END_FOLDER = 2,
    SP_PLAYLIST_TYPE_PLACEHOLDER = 3
} sp_playlist_type;

// Only what is available plays.
typedef enum SP_ENUM_BASE {
    SP_TRACK_AVAILABILITY_UNAVAILABLE = 0,
    SP_TRACK_AVAILABILITY_AVAILABLE = 1,
    SP_TRACK_AVAILABILITY_NOT_STREAMABLE = 2,
    SP_TRACK_AVAILABILITY_BANNED_BY_ARTIST = 3
} sp_track_availability;

// What a browse leaves out.
typedef enum SP_ENUM_BASE {
    SP_ARTISTBROWSE_FULL = 0,
    SP_ARTISTBROWSE_NO_TRACKS = 1,
    SP_ARTISTBROWSE_NO_ALBUMS = 2
} sp_artistbrowse_type;

typedef enum SP_ENUM_BASE {
    SP_ALBUMTYPE_ALBUM = 0,
    SP_ALBUMTYPE_SINGLE = 1,
    SP_ALBUMTYPE_COMPILATION = 2,
    SP_ALBUMTYPE_UNKNOWN = 3
} sp_albumtype;

// Unknown until the image has loaded, and when it could not.
typedef enum SP_ENUM_BASE { SP_IMAGE_FORMAT_UNKNOWN = -1, SP_IMAGE_FORMAT_JPEG = 0 } sp_imageformat;

// Of the longer side: at most 300, 64 or 640 pixels.
typedef enum SP_ENUM_BASE {
    SP_IMAGE_SIZE_NORMAL = 0,
    SP_IMAGE_SIZE_SMALL = 1,
    SP_IMAGE_SIZE_LARGE = 2
} sp_image_size;

// Of another user to the one who is logged in.
typedef enum SP_ENUM_BASE {
    SP_RELATION_TYPE_UNKNOWN = 0,
    SP_RELATION_TYPE_NONE = 1,
    SP_RELATION_TYPE_UNIDIRECTIONAL = 2,
    SP_RELATION_TYPE_BIDIRECTIONAL = 3
} sp_relation_type;

typedef enum SP_ENUM_BASE {
    SP_TOPLIST_TYPE_ARTISTS = 0,
    SP_TOPLIST_TYPE_ALBUMS = 1,
    SP_TOPLIST_TYPE_TRACKS = 2
} sp_toplisttype;

// Any other region is a two-letter country code packed as 'A' << 8 | 'B'.
typedef enum SP_ENUM_BASE {
    SP_TOPLIST_REGION_EVERYWHERE = 0,
    SP_TOPLIST_REGION_USER = 1
} sp_toplistregion;

// A suggestion is for a word that is still being typed.
typedef enum SP_ENUM_BASE { SP_SEARCH_STANDARD = 0, SP_SEARCH_SUGGEST = 1 } sp_search_type;

// What a link leads to.
typedef enum SP_ENUM_BASE {
    SP_LINKTYPE_INVALID = 0,
    SP_LINKTYPE_TRACK = 1,
    SP_LINKTYPE_ALBUM = 2,
    SP_LINKTYPE_ARTIST = 3,
    SP_LINKTYPE_SEARCH = 4,
    SP_LINKTYPE_PLAYLIST = 5,
    SP_LINKTYPE_PROFILE = 6,
    SP_LINKTYPE_STARRED = 7,
    SP_LINKTYPE_LOCALTRACK = 8,
    SP_LINKTYPE_IMAGE = 9
} sp_linktype;

typedef enum SP_ENUM_BASE {
    SP_SIGNUP_PAGE_NONE = 0,
    SP_SIGNUP_PAGE_FACEBOOK_LOGIN = 1,
    SP_SIGNUP_PAGE_ENTER_CREDENTIALS = 2,
    SP_SIGNUP_PAGE_MERGING_ACCOUNTS = 3,
    SP_SIGNUP_PAGE_SPOTIFY_LOGIN = 4,
    SP_SIGNUP_PAGE_POST_TO_OPENGRAPH_OPTION = 5,
    SP_SIGNUP_PAGE_DONE = 6
} sp_signup_page;

// Bits of show_signup_page's features.
typedef enum SP_ENUM_BASE {
    SP_SIGNUP_FEATURE_CONNECT_TO_FACEBOOK = 1,
    SP_SIGNUP_FEATURE_MERGE_ACCOUNT = 2,
    SP_SIGNUP_FEATURE_SHOW_LICENSES = 4,
    SP_SIGNUP_FEATURE_SHOW_POST_OG_OPTION = 8
} sp_signup_feature;

typedef enum SP_ENUM_BASE {
    SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK = 0,
    SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK_COMPLETED = 1,
    SP_SIGNUP_ACTION_LOGIN_WITH_SPOTIFY = 2,
    SP_SIGNUP_ACTION_ACCEPT = 3,
    SP_SIGNUP_ACTION_CANCEL_FACEBOOK_CONNECT = 4,
    SP_SIGNUP_ACTION_MERGE_WITH_ACCOUNT = 5,
    SP_SIGNUP_ACTION_GO_BACK = 6,
    SP_SIGNUP_ACTION_CANCEL_SIGNUP = 7,
    SP_SIGNUP_ACTION_ACCEPT_LICENSES = 8
} sp_signup_action;

// ---- Library ----

// The library's version, for people. Never NULL; needs no session; any thread.
const char* sp_build_id(void);
// For people, in English; also for a number that is no sp_error. Never NULL; static; any thread.
const char* sp_error_message(sp_error error);

// ---- Session ----

// Valid during the delivery that brings it.
typedef struct sp_audioformat {
    sp_sampletype sample_type;
    int sample_rate;  // frames per second
    int channels;
} sp_audioformat;

// What a client may tell of its own buffer: frames in it, and how often it ran dry since last
// asked.
typedef struct sp_audio_buffer_stats {
    int samples;
    int stutter;
} sp_audio_buffer_stats;

// What the library tells its client. A NULL member is not called. Texts are the library's and valid
// during the call.
typedef struct sp_session_callbacks {
    // The outcome of a login or relogin.
    void (*logged_in)(sp_session* session, sp_error error);
    // After sp_session_logout, or when the service ends it.
    void (*logged_out)(sp_session* session);
    // Something that was not loaded may be now; which, is not told.
    void (*metadata_updated)(sp_session* session);
    // SP_ERROR_OK: the connection is back.
    void (*connection_error)(sp_session* session, sp_error error);
    // To be shown.
    void (*message_to_user)(sp_session* session, const char* message);
    // sp_session_process_events should be called soon. Any thread.
    void (*notify_main_thread)(sp_session* session);
    // Sound, paced by what is taken: answers the number of frames taken, from 0 to num_frames; the
    // rest is offered again. `frames` is valid during the call. Any thread, one call at a time.
    int (*music_delivery)(sp_session* session,
                          const sp_audioformat* format,
                          const void* frames,
                          int num_frames);
    // The account plays elsewhere; the sound has paused.
    void (*play_token_lost)(sp_session* session);
    // Any thread.
    void (*log_message)(sp_session* session, const char* data);
    // The last frame has been taken. Any thread.
    void (*end_of_track)(sp_session* session);
    // Nothing is loaded any more.
    void (*streaming_error)(sp_session* session, sp_error error);
    // Of the one who is logged in.
    void (*userinfo_updated)(sp_session* session);
    // The client may start its output, or is to stop it.
    void (*start_playback)(sp_session* session);
    void (*stop_playback)(sp_session* session);
    // To be filled in.
    void (*get_audio_buffer_stats)(sp_session* session, sp_audio_buffer_stats* stats);
    // These two are about tracks that are kept without a connection.
    void (*offline_status_updated)(sp_session* session);
    void (*offline_error)(sp_session* session, sp_error error);
    // For a later login in place of the password; secret.
    void (*credentials_blob_updated)(sp_session* session, const char* blob);
    // The sign-up flow: show this page, or what went wrong with it. `recent_user` may be NULL.
    void (*show_signup_page)(sp_session* session,
                             sp_signup_page page,
                             bool loading,
                             int features,
                             const char* recent_user);
    void (*show_signup_error_page)(sp_session* session, sp_signup_page page, sp_error error);
    // `permissions`: a list with commas.
    void (*connect_to_facebook)(sp_session* session, const char* permissions);
    void (*show_trial_welcome)(sp_session* session);
} sp_session_callbacks;

// Read during sp_session_create, which copies what it keeps; the callbacks must outlive the
// session.
typedef struct sp_session_config {
    int api_version;  // SPOTIFY_API_VERSION
    const char* cache_location;
    const char* settings_location;
    const void* application_key;
    size_t application_key_size;  // bytes
    const char* user_agent;
    const sp_session_callbacks* callbacks;
    void* userdata;
    bool compress_playlists;
    bool dont_save_metadata_for_playlists;
    bool initially_unload_playlists;
    const char* device_id;
    const char* proxy;
    const char* proxy_username;
    const char* proxy_password;
    const char* ca_certs_filename;
    const char* tracefile;
} sp_session_config;

// *session is the client's until sp_session_release, and is not written unless SP_ERROR_OK is
// answered. One session at a time; a library that already has one answers an error.
sp_error sp_session_create(const sp_session_config* config, sp_session** session);
// The last thing a session is asked: no callback comes once this has been called.
sp_error sp_session_release(sp_session* session);
// The outcome arrives as logged_in. `blob` may be NULL.
sp_error sp_session_login(sp_session* session,
                          const char* username,
                          const char* password,
                          bool remember_me,
                          const char* blob);
// Logs in who was remembered. SP_ERROR_NO_CREDENTIALS when nobody was; else as a login.
sp_error sp_session_relogin(sp_session* session);
// The name's length, which may exceed what fitted into `size` bytes, or -1 when there is none.
int sp_session_remembered_user(sp_session* session, char* buffer, size_t size);
// Nobody is remembered afterwards; who is logged in stays so.
sp_error sp_session_forget_me(sp_session* session);
// Borrowed. NULL while nobody is logged in.
sp_user* sp_session_user(sp_session* session);
// Arrives as logged_out. Handles stay valid, and show what they showed.
sp_error sp_session_logout(sp_session* session);
sp_connectionstate sp_session_connectionstate(sp_session* session);
// 0 lets the library choose.
sp_error sp_session_set_cache_size(sp_session* session, size_t megabytes);
// Runs what is due, callbacks included; not to be called from inside one. *next_timeout: the
// milliseconds after which it is to be called again, if not before.
sp_error sp_session_process_events(sp_session* session, int* next_timeout);
sp_error sp_session_preferred_bitrate(sp_session* session, sp_bitrate bitrate);
// A two-letter country code packed as 'A' << 8 | 'B'.
int sp_session_user_country(sp_session* session);
// 0 while nobody is logged in.
int sp_session_num_friends(sp_session* session);
sp_user* sp_session_friend(sp_session* session, int index);
// The userdata of the configuration.
void* sp_session_userdata(sp_session* session);

// ---- Player ----

// One track is loaded at a time. When load or unload returns, no delivery of the earlier track is
// in flight any more. Needs a login and a loaded track: SP_ERROR_PERMISSION_DENIED,
// SP_ERROR_IS_LOADING, SP_ERROR_TRACK_NOT_PLAYABLE. What was loaded before is gone either way.
// Delivers nothing yet.
sp_error sp_session_player_load(sp_session* session, sp_track* track);
// Milliseconds from the beginning. SP_ERROR_NO_STREAM_AVAILABLE when nothing is loaded,
// SP_ERROR_INVALID_INDATA for a place outside the track.
sp_error sp_session_player_seek(sp_session* session, int offset_ms);
// Starts or pauses the deliveries; SP_ERROR_NO_STREAM_AVAILABLE when nothing is loaded.
sp_error sp_session_player_play(sp_session* session, bool play);
sp_error sp_session_player_unload(sp_session* session);
// Makes a later load start sooner; never disturbs what plays.
sp_error sp_session_player_prefetch(sp_session* session, sp_track* track);

// ---- The session's lists ----

// All NULL while nobody is logged in, or when there is no such user.
sp_playlistcontainer* sp_session_playlistcontainer(sp_session* session);
// Of the one who is logged in; the caller owns the reference.
sp_playlist* sp_session_inbox_create(sp_session* session);
sp_playlist* sp_session_starred_create(sp_session* session);
sp_playlist* sp_session_starred_for_user_create(sp_session* session,
                                                const char* canonical_username);
sp_playlistcontainer* sp_session_publishedcontainer_for_user_create(sp_session* session,
                                                                    const char* canonical_username);

// ---- Sign-up ----

// A list of addresses with commas; NULL or empty when there is none to accept.
const char* sp_session_signup_get_unaccepted_licenses(sp_session* session);
// SP_ERROR_INVALID_INDATA for a number that is no action.
sp_error sp_session_signup_perform_action(sp_session* session, sp_signup_action action);

// ---- Links ----

// A link is made of text or of what it leads to; the caller owns the reference. NULL for a text
// that is no link, or for what is not loaded.
sp_link* sp_link_create_from_string(const char* link);
// A track's link may name a place in it; 0 names none.
sp_link* sp_link_create_from_track(sp_track* track, int offset_ms);
sp_link* sp_link_create_from_playlist(sp_playlist* playlist);
// The text's length; at most `size` bytes with the terminator are written.
int sp_link_as_string(sp_link* link, char* buffer, int size);
sp_linktype sp_link_type(sp_link* link);
// What the link leads to, borrowed from the link; NULL when that is of another kind.
sp_track* sp_link_as_track(sp_link* link);
sp_album* sp_link_as_album(sp_link* link);
sp_artist* sp_link_as_artist(sp_link* link);
sp_error sp_link_add_ref(sp_link* link);
sp_error sp_link_release(sp_link* link);

// ---- Tracks ----

// Before a track is loaded, everything else is empty.
bool sp_track_is_loaded(sp_track* track);
// SP_ERROR_IS_LOADING until the outcome is there.
sp_error sp_track_error(sp_track* track);
// Of the one who is logged in, as whether it is starred.
sp_track_availability sp_track_get_availability(sp_session* session, sp_track* track);
bool sp_track_is_local(sp_session* session, sp_track* track);
bool sp_track_is_placeholder(sp_track* track);
bool sp_track_is_starred(sp_session* session, sp_track* track);
// `count` tracks, all or none.
sp_error sp_track_set_starred(sp_session* session, sp_track* const* tracks, int count, bool star);
int sp_track_num_artists(sp_track* track);
sp_artist* sp_track_artist(sp_track* track, int index);
sp_album* sp_track_album(sp_track* track);
const char* sp_track_name(sp_track* track);
int sp_track_duration(sp_track* track);    // milliseconds
int sp_track_popularity(sp_track* track);  // 0 to 100
// Both count from 1; 0 is unknown.
int sp_track_disc(sp_track* track);
int sp_track_index(sp_track* track);
sp_error sp_track_add_ref(sp_track* track);
sp_error sp_track_release(sp_track* track);

// ---- Albums ----

// Before an album is loaded, everything else is empty.
bool sp_album_is_loaded(sp_album* album);
bool sp_album_is_available(sp_album* album);
sp_artist* sp_album_artist(sp_album* album);
// 20 bytes, for sp_image_create; NULL without a cover.
const byte* sp_album_cover(sp_album* album, sp_image_size size);
const char* sp_album_name(sp_album* album);
// 0 is unknown.
int sp_album_year(sp_album* album);
sp_albumtype sp_album_type(sp_album* album);
sp_error sp_album_add_ref(sp_album* album);
sp_error sp_album_release(sp_album* album);

// ---- Artists ----

const char* sp_artist_name(sp_artist* artist);
bool sp_artist_is_loaded(sp_artist* artist);
// 20 bytes, for sp_image_create; NULL without a portrait.
const byte* sp_artist_portrait(sp_artist* artist, sp_image_size size);
sp_error sp_artist_add_ref(sp_artist* artist);
sp_error sp_artist_release(sp_artist* artist);

// ---- Users ----

// The name of an account, which links and lists use. Known before the user is loaded.
const char* sp_user_canonical_name(sp_user* user);
// For people; the canonical name while there is no other.
const char* sp_user_display_name(sp_user* user);
const char* sp_user_full_name(sp_user* user);
// An address, or empty.
const char* sp_user_picture(sp_user* user);
bool sp_user_is_loaded(sp_user* user);
sp_relation_type sp_user_relation_type(sp_session* session, sp_user* user);
sp_error sp_user_add_ref(sp_user* user);
sp_error sp_user_release(sp_user* user);

// ---- Images ----

// The outcome is there, good or bad: sp_image_error tells. Once for each registration.
typedef void image_loaded_cb(sp_image* image, void* userdata);

// NULL without a session; an unknown id is an image that fails to load. Asking again for an id
// gives another reference to one handle.
sp_image* sp_image_create(sp_session* session, const byte image_id[20]);
// Also for an image that has loaded: then the callback comes with the next
// sp_session_process_events. A registration is taken away with the same two pointers.
sp_error sp_image_add_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata);
sp_error sp_image_remove_load_callback(sp_image* image, image_loaded_cb* callback, void* userdata);
bool sp_image_is_loaded(sp_image* image);
// SP_ERROR_IS_LOADING until the outcome is there.
sp_error sp_image_error(sp_image* image);
sp_imageformat sp_image_format(sp_image* image);
// The file's bytes; NULL and a size of 0 until it has loaded, or when it could not.
const void* sp_image_data(sp_image* image, size_t* size);
const byte* sp_image_image_id(sp_image* image);  // 20 bytes
sp_error sp_image_add_ref(sp_image* image);
sp_error sp_image_release(sp_image* image);

// ---- Search ----

// The answer of a query, or its error. Once, unless the query has been released before; `result` is
// borrowed. The same for the browses below.
typedef void search_complete_cb(sp_search* result, void* userdata);

// Offsets and counts say which part of what was found is wanted. NULL when the query cannot be
// started; what goes wrong later is told by the error of the query.
sp_search* sp_search_create(sp_session* session,
                            const char* query,
                            int track_offset,
                            int track_count,
                            int album_offset,
                            int album_count,
                            int artist_offset,
                            int artist_count,
                            int playlist_offset,
                            int playlist_count,
                            sp_search_type search_type,
                            search_complete_cb* callback,
                            void* userdata);
// Before the answer everything is empty, and the error SP_ERROR_IS_LOADING.
bool sp_search_is_loaded(sp_search* search);
sp_error sp_search_error(sp_search* search);
const char* sp_search_query(sp_search* search);
// Empty when there is nothing better.
const char* sp_search_did_you_mean(sp_search* search);
int sp_search_num_tracks(sp_search* search);
sp_track* sp_search_track(sp_search* search, int index);
int sp_search_num_albums(sp_search* search);
sp_album* sp_search_album(sp_search* search, int index);
int sp_search_num_artists(sp_search* search);
sp_artist* sp_search_artist(sp_search* search, int index);
int sp_search_num_playlists(sp_search* search);
sp_playlist* sp_search_playlist(sp_search* search, int index);
const char* sp_search_playlist_name(sp_search* search, int index);
const char* sp_search_playlist_uri(sp_search* search, int index);
const char* sp_search_playlist_image_uri(sp_search* search, int index);
// How many there are, whatever part was asked for.
int sp_search_total_tracks(sp_search* search);
int sp_search_total_albums(sp_search* search);
int sp_search_total_artists(sp_search* search);
int sp_search_total_playlists(sp_search* search);
sp_error sp_search_add_ref(sp_search* search);
sp_error sp_search_release(sp_search* search);

// ---- Album browse ----

typedef void albumbrowse_complete_cb(sp_albumbrowse* result, void* userdata);

// NULL when the browse cannot be started.
sp_albumbrowse* sp_albumbrowse_create(sp_session* session,
                                      sp_album* album,
                                      albumbrowse_complete_cb* callback,
                                      void* userdata);
bool sp_albumbrowse_is_loaded(sp_albumbrowse* browse);
sp_error sp_albumbrowse_error(sp_albumbrowse* browse);
sp_album* sp_albumbrowse_album(sp_albumbrowse* browse);
sp_artist* sp_albumbrowse_artist(sp_albumbrowse* browse);
int sp_albumbrowse_num_copyrights(sp_albumbrowse* browse);
const char* sp_albumbrowse_copyright(sp_albumbrowse* browse, int index);
int sp_albumbrowse_num_tracks(sp_albumbrowse* browse);
sp_track* sp_albumbrowse_track(sp_albumbrowse* browse, int index);
sp_error sp_albumbrowse_add_ref(sp_albumbrowse* browse);
sp_error sp_albumbrowse_release(sp_albumbrowse* browse);

// ---- Artist browse ----

typedef void artistbrowse_complete_cb(sp_artistbrowse* result, void* userdata);

// NULL when the browse cannot be started.
sp_artistbrowse* sp_artistbrowse_create(sp_session* session,
                                        sp_artist* artist,
                                        sp_artistbrowse_type type,
                                        artistbrowse_complete_cb* callback,
                                        void* userdata);
bool sp_artistbrowse_is_loaded(sp_artistbrowse* browse);
sp_error sp_artistbrowse_error(sp_artistbrowse* browse);
sp_artist* sp_artistbrowse_artist(sp_artistbrowse* browse);
int sp_artistbrowse_num_albums(sp_artistbrowse* browse);
sp_album* sp_artistbrowse_album(sp_artistbrowse* browse, int index);
int sp_artistbrowse_num_tophit_tracks(sp_artistbrowse* browse);
sp_track* sp_artistbrowse_tophit_track(sp_artistbrowse* browse, int index);
sp_error sp_artistbrowse_add_ref(sp_artistbrowse* browse);
sp_error sp_artistbrowse_release(sp_artistbrowse* browse);

// ---- Top lists ----

typedef void toplistbrowse_complete_cb(sp_toplistbrowse* result, void* userdata);

// `username` belongs to SP_TOPLIST_REGION_USER; NULL there is the one who is logged in. NULL when
// the browse cannot be started.
sp_toplistbrowse* sp_toplistbrowse_create(sp_session* session,
                                          sp_toplisttype type,
                                          sp_toplistregion region,
                                          const char* username,
                                          toplistbrowse_complete_cb* callback,
                                          void* userdata);
bool sp_toplistbrowse_is_loaded(sp_toplistbrowse* browse);
sp_error sp_toplistbrowse_error(sp_toplistbrowse* browse);
int sp_toplistbrowse_num_artists(sp_toplistbrowse* browse);
sp_artist* sp_toplistbrowse_artist(sp_toplistbrowse* browse, int index);
int sp_toplistbrowse_num_albums(sp_toplistbrowse* browse);
sp_album* sp_toplistbrowse_album(sp_toplistbrowse* browse, int index);
int sp_toplistbrowse_num_tracks(sp_toplistbrowse* browse);
sp_track* sp_toplistbrowse_track(sp_toplistbrowse* browse, int index);
sp_error sp_toplistbrowse_add_ref(sp_toplistbrowse* browse);
sp_error sp_toplistbrowse_release(sp_toplistbrowse* browse);

// ---- Playlists ----

// What changes in a playlist, by whomever. Positions are those before the change, new ones
// those after it; arrays are valid during the call. The record is the client's and must stay until
// it is removed. A NULL member is not called.
typedef struct sp_playlist_callbacks {
    void (*tracks_added)(
        sp_playlist* playlist, sp_track* const* tracks, int count, int position, void* userdata);
    void (*tracks_removed)(sp_playlist* playlist, const int* positions, int count, void* userdata);
    void (*tracks_moved)(
        sp_playlist* playlist, const int* positions, int count, int new_position, void* userdata);
    void (*playlist_renamed)(sp_playlist* playlist, void* userdata);
    // Loaded, collaborative or with pending changes, now or no more.
    void (*playlist_state_changed)(sp_playlist* playlist, void* userdata);
    void (*playlist_update_in_progress)(sp_playlist* playlist, bool done, void* userdata);
    // Its tracks are loaded, now or no more.
    void (*playlist_metadata_updated)(sp_playlist* playlist, void* userdata);
    void (*track_created_changed)(sp_playlist* playlist,
                                  int position,
                                  sp_user* user,
                                  int when,  // seconds since 1970
                                  void* userdata);
    void (*track_seen_changed)(sp_playlist* playlist, int position, bool seen, void* userdata);
    void (*description_changed)(sp_playlist* playlist, const char* description, void* userdata);
    // 20 bytes, or NULL when there is none any more.
    void (*image_changed)(sp_playlist* playlist, const byte* image_id, void* userdata);
    void (*track_message_changed)(sp_playlist* playlist,
                                  int position,
                                  const char* message,
                                  void* userdata);
    void (*subscribers_changed)(sp_playlist* playlist, void* userdata);
} sp_playlist_callbacks;

// `count` names follow, allocated behind the record.
typedef struct sp_subscribers {
    unsigned count;
    char* subscribers[1];
} sp_subscribers;

// The same link has the same handle. NULL for a link to something else, and while nobody is logged
// in.
sp_playlist* sp_playlist_create(sp_session* session, sp_link* link);
bool sp_playlist_is_loaded(sp_playlist* playlist);
// Registrations are told apart, and taken away, by both pointers.
sp_error
sp_playlist_add_callbacks(sp_playlist* playlist, sp_playlist_callbacks* callbacks, void* userdata);
sp_error sp_playlist_remove_callbacks(sp_playlist* playlist,
                                      sp_playlist_callbacks* callbacks,
                                      void* userdata);
int sp_playlist_num_tracks(sp_playlist* playlist);
sp_track* sp_playlist_track(sp_playlist* playlist, int index);
int sp_playlist_track_create_time(sp_playlist* playlist, int index);  // seconds since 1970
sp_user* sp_playlist_track_creator(sp_playlist* playlist, int index);
bool sp_playlist_track_seen(sp_playlist* playlist, int index);
// SP_ERROR_INDEX_OUT_OF_RANGE for a place that is not there, SP_ERROR_PERMISSION_DENIED for a list
// that is not to be changed. What was changed is told by the callbacks, too.
sp_error sp_playlist_track_set_seen(sp_playlist* playlist, int index, bool seen);
const char* sp_playlist_track_message(sp_playlist* playlist, int index);
const char* sp_playlist_name(sp_playlist* playlist);
sp_user* sp_playlist_owner(sp_playlist* playlist);
bool sp_playlist_is_collaborative(sp_playlist* playlist);
sp_error sp_playlist_set_autolink_tracks(sp_playlist* playlist, bool link);
const char* sp_playlist_get_description(sp_playlist* playlist);
// False, and nothing written, when there is none.
bool sp_playlist_get_image(sp_playlist* playlist, byte image[20]);
bool sp_playlist_has_pending_changes(sp_playlist* playlist);
// In front of the track at `position`; the number of tracks is the end. All or none.
sp_error sp_playlist_add_tracks(
    sp_playlist* playlist, sp_track* const* tracks, int count, int position, sp_session* session);
unsigned sp_playlist_num_subscribers(sp_playlist* playlist);
// The caller frees the record with sp_playlist_subscribers_free.
sp_subscribers* sp_playlist_subscribers(sp_playlist* playlist);
sp_error sp_playlist_subscribers_free(sp_subscribers* subscribers);
// The outcome arrives as subscribers_changed.
sp_error sp_playlist_update_subscribers(sp_session* session, sp_playlist* playlist);
// Whether the tracks are at hand; a list that is not keeps its name.
bool sp_playlist_is_in_ram(sp_session* session, sp_playlist* playlist);
sp_error sp_playlist_set_in_ram(sp_session* session, sp_playlist* playlist, bool in_ram);
sp_error sp_playlist_add_ref(sp_playlist* playlist);
sp_error sp_playlist_release(sp_playlist* playlist);

// ---- Playlist containers ----

// What changes in a container, as above. `playlist` is borrowed, of a folder's ends as well.
typedef struct sp_playlistcontainer_callbacks {
    void (*playlist_added)(sp_playlistcontainer* container,
                           sp_playlist* playlist,
                           int position,
                           void* userdata);
    void (*playlist_removed)(sp_playlistcontainer* container,
                             sp_playlist* playlist,
                             int position,
                             void* userdata);
    void (*playlist_moved)(sp_playlistcontainer* container,
                           sp_playlist* playlist,
                           int position,
                           int new_position,
                           void* userdata);
    // After each registration, once the container is loaded.
    void (*container_loaded)(sp_playlistcontainer* container, void* userdata);
} sp_playlistcontainer_callbacks;

sp_error sp_playlistcontainer_add_callbacks(sp_playlistcontainer* container,
                                            sp_playlistcontainer_callbacks* callbacks,
                                            void* userdata);
sp_error sp_playlistcontainer_remove_callbacks(sp_playlistcontainer* container,
                                               sp_playlistcontainer_callbacks* callbacks,
                                               void* userdata);
int sp_playlistcontainer_num_playlists(sp_playlistcontainer* container);
bool sp_playlistcontainer_is_loaded(sp_playlistcontainer* container);
sp_playlist* sp_playlistcontainer_playlist(sp_playlistcontainer* container, int index);
// SP_PLAYLIST_TYPE_PLACEHOLDER for an index out of range.
sp_playlist_type sp_playlistcontainer_playlist_type(sp_playlistcontainer* container, int index);
// At most `size` bytes with the terminator are written; nothing for what is no folder's start.
sp_error sp_playlistcontainer_playlist_folder_name(sp_playlistcontainer* container,
                                                   int index,
                                                   char* buffer,
                                                   int size);
// The same at both ends of a folder; 0 for what is no folder.
sp_uint64 sp_playlistcontainer_playlist_folder_id(sp_playlistcontainer* container, int index);
// Appends. Borrowed; NULL for a list that is there already and for a link to something else.
sp_playlist* sp_playlistcontainer_add_playlist(sp_playlistcontainer* container, sp_link* link);
// Borrowed.
sp_user* sp_playlistcontainer_owner(sp_playlistcontainer* container);
sp_error sp_playlistcontainer_add_ref(sp_playlistcontainer* container);
sp_error sp_playlistcontainer_release(sp_playlistcontainer* container);

#undef SP_ENUM_BASE

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
