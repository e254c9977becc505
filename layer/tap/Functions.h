#ifndef SONOLET_LAYER_TAP_FUNCTIONS_H
#define SONOLET_LAYER_TAP_FUNCTIONS_H

// Every function that crosses the border of the plug-in, by name, in one table: who calls it and
// who is called. Signatures are not repeated here, they are those of the platform's headers.

#include <cstdint>
#include <string_view>
#include <unordered_map>

// Who stands at an end of a call.
enum class Party : std::uint8_t { Host, Plugin, Library, Backend, Log, System };

// Of jsplugin.h: what the host calls of the plug-in. The two getters and traces: a document's has
// the longer name.
//
// X gets each name as it stands in the header. The lists make the numbers of Fn and the table
// below; of the library also the layer's functions themselves, out of the header's signatures
// (LibraryTap.cpp), so a function that the plug-in begins to call is one line here. Findings and
// traces have the names: numbers may change from one build to the next.
#define SONOLET_HOST_CALLS(X)                                                                      \
    X(allow_access)                                                                                \
    X(init)                                                                                        \
    X(destroy)                                                                                     \
    X(global_getter)                                                                               \
    X(global_setter)                                                                               \
    X(handle_object)                                                                               \
    X(document_gc_trace)                                                                           \
    X(getter)                                                                                      \
    X(setter)                                                                                      \
    X(call)                                                                                        \
    X(destructor)                                                                                  \
    X(gc_trace)                                                                                    \
    X(poll)                                                                                        \
    X(unload)

// And what it gives to the plug-in.
#define SONOLET_HOST_CALLBACKS(X)                                                                  \
    X(create_function)                                                                             \
    X(create_object)                                                                               \
    X(add_poll_function)                                                                           \
    X(call_function)                                                                               \
    X(add_unload_listener)                                                                         \
    X(gc_mark)

// Of libspotify/api.h: the records of callbacks, and the functions that queries end with. The
// session's are looked up in the plug-in's own record at each call; one that is null when the
// session is made stays null for the library.
#define SONOLET_SESSION_CALLBACKS(X)                                                               \
    X(logged_in)                                                                                   \
    X(logged_out)                                                                                  \
    X(metadata_updated)                                                                            \
    X(connection_error)                                                                            \
    X(message_to_user)                                                                             \
    X(notify_main_thread)                                                                          \
    X(music_delivery)                                                                              \
    X(play_token_lost)                                                                             \
    X(log_message)                                                                                 \
    X(end_of_track)                                                                                \
    X(streaming_error)                                                                             \
    X(userinfo_updated)                                                                            \
    X(start_playback)                                                                              \
    X(stop_playback)                                                                               \
    X(get_audio_buffer_stats)                                                                      \
    X(offline_status_updated)                                                                      \
    X(offline_error)                                                                               \
    X(credentials_blob_updated)                                                                    \
    X(show_signup_page)                                                                            \
    X(show_signup_error_page)                                                                      \
    X(connect_to_facebook)                                                                         \
    X(show_trial_welcome)

// Of a playlist, by sp_playlist_add_callbacks. Their last argument is the user data, by which the
// layer finds the plug-in's own record.
#define SONOLET_PLAYLIST_CALLBACKS(X)                                                              \
    X(tracks_added)                                                                                \
    X(tracks_removed)                                                                              \
    X(tracks_moved)                                                                                \
    X(playlist_renamed)                                                                            \
    X(playlist_state_changed)                                                                      \
    X(playlist_update_in_progress)                                                                 \
    X(playlist_metadata_updated)                                                                   \
    X(track_created_changed)                                                                       \
    X(track_seen_changed)                                                                          \
    X(description_changed)                                                                         \
    X(image_changed)                                                                               \
    X(track_message_changed)                                                                       \
    X(subscribers_changed)

// Of a container, likewise.
#define SONOLET_CONTAINER_CALLBACKS(X)                                                             \
    X(playlist_added)                                                                              \
    X(playlist_removed)                                                                            \
    X(playlist_moved)                                                                              \
    X(container_loaded)

// With a handle and the user data of the query. An image is asked for by registration, which is
// taken away again; the others end with their answer.
#define SONOLET_COMPLETIONS(X)                                                                     \
    X(image_loaded)                                                                                \
    X(search_complete)                                                                             \
    X(albumbrowse_complete)                                                                        \
    X(artistbrowse_complete)                                                                       \
    X(toplistbrowse_complete)

// Its functions, in the order of the header. One that the plug-in does not import is never asked
// for. What their names say is relied on: _create and _add_ref give a reference, _release takes one
// back, _remove_ ends a registration.
#define SONOLET_LIBRARY_FUNCTIONS(X)                                                               \
    X(sp_build_id)                                                                                 \
    X(sp_error_message)                                                                            \
    X(sp_session_create)                                                                           \
    X(sp_session_release)                                                                          \
    X(sp_session_login)                                                                            \
    X(sp_session_relogin)                                                                          \
    X(sp_session_remembered_user)                                                                  \
    X(sp_session_forget_me)                                                                        \
    X(sp_session_user)                                                                             \
    X(sp_session_logout)                                                                           \
    X(sp_session_connectionstate)                                                                  \
    X(sp_session_set_cache_size)                                                                   \
    X(sp_session_process_events)                                                                   \
    X(sp_session_preferred_bitrate)                                                                \
    X(sp_session_user_country)                                                                     \
    X(sp_session_num_friends)                                                                      \
    X(sp_session_friend)                                                                           \
    X(sp_session_userdata)                                                                         \
    X(sp_session_player_load)                                                                      \
    X(sp_session_player_seek)                                                                      \
    X(sp_session_player_play)                                                                      \
    X(sp_session_player_unload)                                                                    \
    X(sp_session_player_prefetch)                                                                  \
    X(sp_session_playlistcontainer)                                                                \
    X(sp_session_inbox_create)                                                                     \
    X(sp_session_starred_create)                                                                   \
    X(sp_session_starred_for_user_create)                                                          \
    X(sp_session_publishedcontainer_for_user_create)                                               \
    X(sp_session_signup_get_unaccepted_licenses)                                                   \
    X(sp_session_signup_perform_action)                                                            \
    X(sp_link_create_from_string)                                                                  \
    X(sp_link_create_from_track)                                                                   \
    X(sp_link_create_from_playlist)                                                                \
    X(sp_link_as_string)                                                                           \
    X(sp_link_type)                                                                                \
    X(sp_link_as_track)                                                                            \
    X(sp_link_as_album)                                                                            \
    X(sp_link_as_artist)                                                                           \
    X(sp_link_add_ref)                                                                             \
    X(sp_link_release)                                                                             \
    X(sp_track_is_loaded)                                                                          \
    X(sp_track_error)                                                                              \
    X(sp_track_get_availability)                                                                   \
    X(sp_track_is_local)                                                                           \
    X(sp_track_is_placeholder)                                                                     \
    X(sp_track_is_starred)                                                                         \
    X(sp_track_set_starred)                                                                        \
    X(sp_track_num_artists)                                                                        \
    X(sp_track_artist)                                                                             \
    X(sp_track_album)                                                                              \
    X(sp_track_name)                                                                               \
    X(sp_track_duration)                                                                           \
    X(sp_track_popularity)                                                                         \
    X(sp_track_disc)                                                                               \
    X(sp_track_index)                                                                              \
    X(sp_track_add_ref)                                                                            \
    X(sp_track_release)                                                                            \
    X(sp_album_is_loaded)                                                                          \
    X(sp_album_is_available)                                                                       \
    X(sp_album_artist)                                                                             \
    X(sp_album_cover)                                                                              \
    X(sp_album_name)                                                                               \
    X(sp_album_year)                                                                               \
    X(sp_album_type)                                                                               \
    X(sp_album_add_ref)                                                                            \
    X(sp_album_release)                                                                            \
    X(sp_artist_name)                                                                              \
    X(sp_artist_is_loaded)                                                                         \
    X(sp_artist_portrait)                                                                          \
    X(sp_artist_add_ref)                                                                           \
    X(sp_artist_release)                                                                           \
    X(sp_user_canonical_name)                                                                      \
    X(sp_user_display_name)                                                                        \
    X(sp_user_full_name)                                                                           \
    X(sp_user_picture)                                                                             \
    X(sp_user_is_loaded)                                                                           \
    X(sp_user_relation_type)                                                                       \
    X(sp_user_add_ref)                                                                             \
    X(sp_user_release)                                                                             \
    X(sp_image_create)                                                                             \
    X(sp_image_add_load_callback)                                                                  \
    X(sp_image_remove_load_callback)                                                               \
    X(sp_image_is_loaded)                                                                          \
    X(sp_image_error)                                                                              \
    X(sp_image_format)                                                                             \
    X(sp_image_data)                                                                               \
    X(sp_image_image_id)                                                                           \
    X(sp_image_add_ref)                                                                            \
    X(sp_image_release)                                                                            \
    X(sp_search_create)                                                                            \
    X(sp_search_is_loaded)                                                                         \
    X(sp_search_error)                                                                             \
    X(sp_search_query)                                                                             \
    X(sp_search_did_you_mean)                                                                      \
    X(sp_search_num_tracks)                                                                        \
    X(sp_search_track)                                                                             \
    X(sp_search_num_albums)                                                                        \
    X(sp_search_album)                                                                             \
    X(sp_search_num_artists)                                                                       \
    X(sp_search_artist)                                                                            \
    X(sp_search_num_playlists)                                                                     \
    X(sp_search_playlist)                                                                          \
    X(sp_search_playlist_name)                                                                     \
    X(sp_search_playlist_uri)                                                                      \
    X(sp_search_playlist_image_uri)                                                                \
    X(sp_search_total_tracks)                                                                      \
    X(sp_search_total_albums)                                                                      \
    X(sp_search_total_artists)                                                                     \
    X(sp_search_total_playlists)                                                                   \
    X(sp_search_add_ref)                                                                           \
    X(sp_search_release)                                                                           \
    X(sp_albumbrowse_create)                                                                       \
    X(sp_albumbrowse_is_loaded)                                                                    \
    X(sp_albumbrowse_error)                                                                        \
    X(sp_albumbrowse_album)                                                                        \
    X(sp_albumbrowse_artist)                                                                       \
    X(sp_albumbrowse_num_copyrights)                                                               \
    X(sp_albumbrowse_copyright)                                                                    \
    X(sp_albumbrowse_num_tracks)                                                                   \
    X(sp_albumbrowse_track)                                                                        \
    X(sp_albumbrowse_add_ref)                                                                      \
    X(sp_albumbrowse_release)                                                                      \
    X(sp_artistbrowse_create)                                                                      \
    X(sp_artistbrowse_is_loaded)                                                                   \
    X(sp_artistbrowse_error)                                                                       \
    X(sp_artistbrowse_artist)                                                                      \
    X(sp_artistbrowse_num_albums)                                                                  \
    X(sp_artistbrowse_album)                                                                       \
    X(sp_artistbrowse_num_tophit_tracks)                                                           \
    X(sp_artistbrowse_tophit_track)                                                                \
    X(sp_artistbrowse_add_ref)                                                                     \
    X(sp_artistbrowse_release)                                                                     \
    X(sp_toplistbrowse_create)                                                                     \
    X(sp_toplistbrowse_is_loaded)                                                                  \
    X(sp_toplistbrowse_error)                                                                      \
    X(sp_toplistbrowse_num_artists)                                                                \
    X(sp_toplistbrowse_artist)                                                                     \
    X(sp_toplistbrowse_num_albums)                                                                 \
    X(sp_toplistbrowse_album)                                                                      \
    X(sp_toplistbrowse_num_tracks)                                                                 \
    X(sp_toplistbrowse_track)                                                                      \
    X(sp_toplistbrowse_add_ref)                                                                    \
    X(sp_toplistbrowse_release)                                                                    \
    X(sp_playlist_create)                                                                          \
    X(sp_playlist_is_loaded)                                                                       \
    X(sp_playlist_add_callbacks)                                                                   \
    X(sp_playlist_remove_callbacks)                                                                \
    X(sp_playlist_num_tracks)                                                                      \
    X(sp_playlist_track)                                                                           \
    X(sp_playlist_track_create_time)                                                               \
    X(sp_playlist_track_creator)                                                                   \
    X(sp_playlist_track_seen)                                                                      \
    X(sp_playlist_track_set_seen)                                                                  \
    X(sp_playlist_track_message)                                                                   \
    X(sp_playlist_name)                                                                            \
    X(sp_playlist_owner)                                                                           \
    X(sp_playlist_is_collaborative)                                                                \
    X(sp_playlist_set_autolink_tracks)                                                             \
    X(sp_playlist_get_description)                                                                 \
    X(sp_playlist_get_image)                                                                       \
    X(sp_playlist_has_pending_changes)                                                             \
    X(sp_playlist_add_tracks)                                                                      \
    X(sp_playlist_num_subscribers)                                                                 \
    X(sp_playlist_subscribers)                                                                     \
    X(sp_playlist_subscribers_free)                                                                \
    X(sp_playlist_update_subscribers)                                                              \
    X(sp_playlist_is_in_ram)                                                                       \
    X(sp_playlist_set_in_ram)                                                                      \
    X(sp_playlist_add_ref)                                                                         \
    X(sp_playlist_release)                                                                         \
    X(sp_playlistcontainer_add_callbacks)                                                          \
    X(sp_playlistcontainer_remove_callbacks)                                                       \
    X(sp_playlistcontainer_num_playlists)                                                          \
    X(sp_playlistcontainer_is_loaded)                                                              \
    X(sp_playlistcontainer_playlist)                                                               \
    X(sp_playlistcontainer_playlist_type)                                                          \
    X(sp_playlistcontainer_playlist_folder_name)                                                   \
    X(sp_playlistcontainer_playlist_folder_id)                                                     \
    X(sp_playlistcontainer_add_playlist)                                                           \
    X(sp_playlistcontainer_owner)                                                                  \
    X(sp_playlistcontainer_add_ref)                                                                \
    X(sp_playlistcontainer_release)

// Of uva.h: what the plug-in calls, and what the backend calls of its client. Of the factory's
// functions the layer knows the mangled names, BackendTap.cpp has them.
#define SONOLET_BACKEND_CALLS(X)                                                                   \
    X(requestBackend)                                                                              \
    X(releaseBackend)                                                                              \
    X(setSource)                                                                                   \
    X(play)                                                                                        \
    X(pause)                                                                                       \
    X(getPosition)                                                                                 \
    X(writeData)

#define SONOLET_CLIENT_CALLS(X)                                                                    \
    X(handleEvent)                                                                                 \
    X(getDRMBackend)

// Of the log, and where the plug-in may wait for another of its threads; of these only what the
// course of a whole recording depends on.
#define SONOLET_LOG_CALLS(X)                                                                       \
    X(KlogPrintf)                                                                                  \
    X(threshold)

#define SONOLET_SYSTEM_CALLS(X)                                                                    \
    X(pthread_mutex_lock)                                                                          \
    X(pthread_cond_wait)

#define SONOLET_ENUMERATOR(name) name,

// A function by its place in the table.
// clang-format off
enum class Fn : std::uint16_t {
    SONOLET_HOST_CALLS(SONOLET_ENUMERATOR)
    SONOLET_HOST_CALLBACKS(SONOLET_ENUMERATOR)
    SONOLET_SESSION_CALLBACKS(SONOLET_ENUMERATOR)
    SONOLET_PLAYLIST_CALLBACKS(SONOLET_ENUMERATOR)
    SONOLET_CONTAINER_CALLBACKS(SONOLET_ENUMERATOR)
    SONOLET_COMPLETIONS(SONOLET_ENUMERATOR)
    SONOLET_LIBRARY_FUNCTIONS(SONOLET_ENUMERATOR)
    SONOLET_BACKEND_CALLS(SONOLET_ENUMERATOR)
    SONOLET_CLIENT_CALLS(SONOLET_ENUMERATOR)
    SONOLET_LOG_CALLS(SONOLET_ENUMERATOR)
    SONOLET_SYSTEM_CALLS(SONOLET_ENUMERATOR)
    count
};
// clang-format on

#undef SONOLET_ENUMERATOR

// Who calls whom. Names are never freed.
struct FunctionInfo {
    const char* name;
    Party caller;
    Party callee;
};

#define SONOLET_FROM_HOST(name) {#name, Party::Host, Party::Plugin},
#define SONOLET_TO_HOST(name) {#name, Party::Plugin, Party::Host},
#define SONOLET_FROM_LIBRARY(name) {#name, Party::Library, Party::Plugin},
#define SONOLET_TO_LIBRARY(name) {#name, Party::Plugin, Party::Library},
#define SONOLET_FROM_BACKEND(name) {#name, Party::Backend, Party::Plugin},
#define SONOLET_TO_BACKEND(name) {#name, Party::Plugin, Party::Backend},
#define SONOLET_TO_LOG(name) {#name, Party::Plugin, Party::Log},
#define SONOLET_TO_SYSTEM(name) {#name, Party::Plugin, Party::System},

// clang-format off
constexpr FunctionInfo functionTable[] = {
    SONOLET_HOST_CALLS(SONOLET_FROM_HOST)
    SONOLET_HOST_CALLBACKS(SONOLET_TO_HOST)
    SONOLET_SESSION_CALLBACKS(SONOLET_FROM_LIBRARY)
    SONOLET_PLAYLIST_CALLBACKS(SONOLET_FROM_LIBRARY)
    SONOLET_CONTAINER_CALLBACKS(SONOLET_FROM_LIBRARY)
    SONOLET_COMPLETIONS(SONOLET_FROM_LIBRARY)
    SONOLET_LIBRARY_FUNCTIONS(SONOLET_TO_LIBRARY)
    SONOLET_BACKEND_CALLS(SONOLET_TO_BACKEND)
    SONOLET_CLIENT_CALLS(SONOLET_FROM_BACKEND)
    SONOLET_LOG_CALLS(SONOLET_TO_LOG)
    SONOLET_SYSTEM_CALLS(SONOLET_TO_SYSTEM)
};
// clang-format on
static_assert(sizeof functionTable / sizeof *functionTable == static_cast<int>(Fn::count));

#undef SONOLET_FROM_HOST
#undef SONOLET_TO_HOST
#undef SONOLET_FROM_LIBRARY
#undef SONOLET_TO_LIBRARY
#undef SONOLET_FROM_BACKEND
#undef SONOLET_TO_BACKEND
#undef SONOLET_TO_LOG
#undef SONOLET_TO_SYSTEM

// REQUIRES: not Fn::count, which stands for a mark.
constexpr const FunctionInfo& infoOf(Fn function) {
    return functionTable[static_cast<int>(function)];
}

// Fn::count for a name that is not in the table.
inline Fn functionNamed(std::string_view name) {
    static const auto all = [] {
        std::unordered_map<std::string_view, Fn> names;
        for (int i = 0; i < static_cast<int>(Fn::count); ++i) {
            names.emplace(functionTable[i].name, static_cast<Fn>(i));
        }
        return names;
    }();
    const auto found = all.find(name);
    return found != all.end() ? found->second : Fn::count;
}

// A search or a browse, which completesQuery() answers later.
constexpr bool startsQuery(Fn function) {
    return function == Fn::sp_search_create || function == Fn::sp_albumbrowse_create ||
           function == Fn::sp_artistbrowse_create || function == Fn::sp_toplistbrowse_create;
}

constexpr bool completesQuery(Fn function) {
    return function == Fn::search_complete || function == Fn::albumbrowse_complete ||
           function == Fn::artistbrowse_complete || function == Fn::toplistbrowse_complete;
}

#endif
