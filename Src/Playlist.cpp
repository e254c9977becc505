#include "Playlist.h"

#include "Factory.h"
#include "ImageId.h"
#include "Logger.h"
#include "Playlistcontainer.h"
#include "Session.h"
#include "Track.h"
#include "TrackArray.h"
#include "User.h"
#include "jspp/number_array.h"
#include "jspp/string_array.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Playlist");

// The text of a link, cut at the size of the buffer. The link is deliberately never released, as
// in namedBy().
std::string textOf(sp_link* link) {
    std::array<char, 100> buffer{};
    sp_link_as_string(retrieved(link), buffer.data(), static_cast<int>(buffer.size()));
    buffer.back() = '\0';
    return buffer.data();
}

orvo::shared_ptr<jspp::number_array> arrayOf(const int* positions, int count) {
    return orvo::make_shared<jspp::number_array>(
        std::vector<double>(positions, positions + std::max(count, 0)));
}

}  // namespace

std::vector<PlaylistInstanceEntry>& Playlist::instances() {
    static auto& living = *new std::vector<PlaylistInstanceEntry>;
    return living;
}

Playlist::Playlist() {
    _function("create", &Playlist::create, "s");
}

Playlist::Playlist(sp_session* librarySession,
                   sp_playlist* playlist,
                   const orvo::shared_ptr<LibWrapper>& libraryShare,
                   const orvo::shared_ptr<Playlistcontainer>& madeThrough)
    : Wrapper(librarySession, playlist, libraryShare), container(madeThrough) {
    init();
}

void Playlist::init() {
    static const function_row members[] = {
        {"isInRam", &Playlist::reads<&sp_playlist_is_in_ram>, ""},
        {"getImage", &Playlist::getImage, ""},
        {"trackCreateTime", &Playlist::reads<&sp_playlist_track_create_time>, "n"},
        {"hasPendingChanges", &Playlist::reads<&sp_playlist_has_pending_changes>, ""},
        {"track", &Playlist::reads<&sp_playlist_track>, "n"},
        {"numSubscribers", &Playlist::reads<&sp_playlist_num_subscribers>, ""},
        {"updateSubscribers", &Playlist::does<&sp_playlist_update_subscribers>, ""},
        {"getDescription", &Playlist::reads<&sp_playlist_get_description>, ""},
        {"trackSeen", &Playlist::reads<&sp_playlist_track_seen>, "n"},
        {"numTracks", &Playlist::reads<&sp_playlist_num_tracks>, ""},
        {"setAutolinkTracks", &Playlist::does<&sp_playlist_set_autolink_tracks>, "b"},
        {"trackCreator", &Playlist::reads<&sp_playlist_track_creator>, "n"},
        {"subscribers", &Playlist::subscribers, ""},
        {"setInRam", &Playlist::does<&sp_playlist_set_in_ram>, "b"},
        {"owner", &Playlist::reads<&sp_playlist_owner>, ""},
        {"trackSetSeen", &Playlist::does<&sp_playlist_track_set_seen>, "nb"},
        {"isLoaded", &Playlist::reads<&sp_playlist_is_loaded>, ""},
        {"isCollaborative", &Playlist::reads<&sp_playlist_is_collaborative>, ""},
        {"trackMessage", &Playlist::reads<&sp_playlist_track_message>, "n"},
        {"name", &Playlist::reads<&sp_playlist_name>, ""},
        {"uri", &Playlist::uri, ""},
        {"addTracks", &Playlist::addTracks, ""},            // takes a track and a position
        {"placeholderUri", &Playlist::placeholderUri, ""},  // takes an index
        {"release", &Playlist::release, ""},
    };
    static const attribute_row events[] = {
        JSPP_EVENT_ROW(Playlist, SubscribersChanged),
        JSPP_EVENT_ROW(Playlist, PlaylistRenamed),
        JSPP_EVENT_ROW(Playlist, PlaylistUpdateInProgress),
        JSPP_EVENT_ROW(Playlist, TracksMoved),
        JSPP_EVENT_ROW(Playlist, DescriptionChanged),
        JSPP_EVENT_ROW(Playlist, TrackCreatedChanged),
        JSPP_EVENT_ROW(Playlist, TracksRemoved),
        JSPP_EVENT_ROW(Playlist, PlaylistStateChanged),
        JSPP_EVENT_ROW(Playlist, TrackSeenChanged),
        JSPP_EVENT_ROW(Playlist, TracksAdded),
        JSPP_EVENT_ROW(Playlist, PlaylistMetadataUpdated),
        JSPP_EVENT_ROW(Playlist, ImageChanged),
        JSPP_EVENT_ROW(Playlist, TrackMessageChanged),
    };
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), members, events);
    _class(names);
    loseNamesAtLogout();
    // Last: a constructor that throws leaves no callback behind.
    if (handle) {
        place = instances().size();
        instances().push_back({handle.get(), this});
        callbacks = libraryCallbacks();
        sp_playlist_add_callbacks(handle.get(), &callbacks, this);
    }
}

Playlist::~Playlist() {
    releaseHandle();
}

void Playlist::releaseHandle() noexcept {
    if (!handle) {
        return;
    }
    // Nobody asks for the order.
    std::vector<PlaylistInstanceEntry>& living = instances();
    living[place] = living.back();
    living[place].owner->place = place;
    living.pop_back();
    sp_playlist_remove_callbacks(handle.get(), &callbacks, this);
    handle.release();
}

void Playlist::create(jspp::function_context& context) {
    const std::string text = context.string(0);
    logger.trace("Playlist::create", "uri = ", text);
    sp_session* const session = Session::requireLibrarySession();
    // Deliberately never released, as in namedBy().
    sp_link* const link = retrieved(sp_link_create_from_string(text.c_str()));
    answer(Created<sp_playlist>(sp_playlist_create(session, link)), context);
}

// ---- Script functions ----

void Playlist::getImage(jspp::function_context& context) const {
    std::array<byte, imageIdSize> id{};
    if (sp_playlist_get_image(handle.get(), id.data())) {
        context.return_string(imageIdText(id.data()));
        return;
    }
    logger.error("Playlist::getImage", "Failed to retrieve image id from libspotify");
    context.return_string("");
}

void Playlist::subscribers(jspp::function_context& context) const {
    std::unique_ptr<sp_subscribers, decltype(&sp_playlist_subscribers_free)> list(
        sp_playlist_subscribers(handle.get()), &sp_playlist_subscribers_free);
    __detail::string_array_c subscribed;
    if (list) {
        for (unsigned i = 0; i < list->count; ++i) {
            const char* const name = list->subscribers[i];
            subscribed.emplace_back(name ? name : "");
        }
    }
    list.reset();
    context.return_interface(orvo::make_shared<string_array>(std::move(subscribed)), false);
}

void Playlist::uri(jspp::function_context& context) const {
    context.return_string(textOf(sp_link_create_from_playlist(handle.get())));
}

void Playlist::addTracks(jspp::function_context& context) const {
    const orvo::shared_ptr<Track> track = context.interface_of<Track>(0);
    const int position = context.integer(1);
    sp_track* const tracks[] = {track->getHandle()};
    // The outcome shows in the events.
    sp_playlist_add_tracks(handle.get(), tracks, 1, position, session);
}

void Playlist::placeholderUri(jspp::function_context& context) const {
    const int index = context.integer(0);
    sp_track* const track = retrieved(sp_playlist_track(handle.get(), index));
    context.return_string(textOf(sp_link_create_from_track(track, 0)));
}

// ---- libspotify's callbacks ----

template <auto Handler, class... Arguments>
void Playlist::route(sp_playlist* playlist, Arguments... arguments, void* userData) noexcept {
    const std::vector<PlaylistInstanceEntry>& living = instances();
    const auto entry =
        std::find_if(living.begin(), living.end(), [&](const PlaylistInstanceEntry& instance) {
            return instance.playlist == playlist && instance.owner == userData;
        });
    if (entry == living.end()) {
        return;
    }
    try {
        // Nothing that the handler does takes the wrapper away from under it.
        const orvo::shared_ptr<Playlist> owner = entry->owner->shared_from_this();
        if (owner) {
            (owner.get()->*Handler)(arguments...);
        }
    } catch (...) {
        logger.error("Playlist::route", ": out of memory, an event is lost");
    }
}

sp_playlist_callbacks Playlist::libraryCallbacks() {
    sp_playlist_callbacks table{};
    table.tracks_added = &route<&Playlist::handleTracksAddedEvent, sp_track* const*, int, int>;
    table.tracks_removed = &route<&Playlist::handleTracksRemovedEvent, const int*, int>;
    table.tracks_moved = &route<&Playlist::handleTracksMovedEvent, const int*, int, int>;
    table.playlist_renamed = &route<&Playlist::handlePlaylistRenamedEvent>;
    table.playlist_state_changed = &route<&Playlist::handlePlaylistStateChangedEvent>;
    table.playlist_update_in_progress =
        &route<&Playlist::handlePlaylistUpdateInProgressEvent, bool>;
    table.playlist_metadata_updated = &route<&Playlist::handlePlaylistMetadataUpdatedEvent>;
    table.track_created_changed =
        &route<&Playlist::handleTrackCreatedChangedEvent, int, sp_user*, int>;
    table.track_seen_changed = &route<&Playlist::handleTrackSeenChangedEvent, int, bool>;
    table.description_changed = &route<&Playlist::handleDescriptionChangedEvent, const char*>;
    table.image_changed = &route<&Playlist::handleImageChangedEvent, const byte*>;
    table.track_message_changed =
        &route<&Playlist::handleTrackMessageChangedEvent, int, const char*>;
    table.subscribers_changed = &route<&Playlist::handleSubscribersChangedEvent>;
    return table;
}

void Playlist::handleTracksAddedEvent(sp_track* const* tracks, int count, int position) {
    logger.trace("Playlist::handleTracksAddedEvent");
    std::vector<orvo::shared_ptr<Track>> added;
    added.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        added.push_back(Factory::getInstance().createTrack(tracks[i]));
    }
    dispatch_event("TracksAddedEvent", shared_from_this(),
                   orvo::make_shared<track_array>(std::move(added)), position);
}

void Playlist::handleTracksRemovedEvent(const int* positions, int count) {
    logger.trace("Playlist::handleTracksRemovedEvent");
    dispatch_event("TracksRemoved", shared_from_this(), arrayOf(positions, count));
}

void Playlist::handleTracksMovedEvent(const int* positions, int count, int newPosition) {
    logger.trace("Playlist::handleTracksMovedEvent");
    dispatch_event("TracksMoved", shared_from_this(), arrayOf(positions, count), newPosition);
}

void Playlist::handlePlaylistRenamedEvent() {
    logger.trace("Playlist::handlePlaylistRenamedEvent");
    dispatch_event("PlaylistRenamed", shared_from_this());
}

void Playlist::handlePlaylistStateChangedEvent() {
    logger.trace("Playlist::handlePlaylistStateChangedEvent");
    dispatch_event("PlaylistStateChanged", shared_from_this());
}

void Playlist::handlePlaylistUpdateInProgressEvent(bool done) {
    logger.trace("Playlist::handlePlaylistUpdateInProgressEvent");
    dispatch_event("PlaylistUpdateInProgress", shared_from_this(), done);
}

void Playlist::handlePlaylistMetadataUpdatedEvent() {
    logger.trace("Playlist::handlePlaylistMetadataUpdatedEvent");
    dispatch_event("PlaylistMetadataUpdated", shared_from_this());
}

void Playlist::handleTrackCreatedChangedEvent(int position, sp_user* user, int when) {
    logger.trace("Playlist::handleTrackCreatedChangedEvent");
    dispatch_event("TrackCreatedChanged", shared_from_this(), position,
                   Factory::getInstance().createUser(user), when);
}

void Playlist::handleTrackSeenChangedEvent(int position, bool seen) {
    logger.trace("Playlist::handleTrackSeenChangedEvent");
    dispatch_event("TrackSeenChanged", shared_from_this(), position, seen);
}

void Playlist::handleDescriptionChangedEvent(const char* text) {
    logger.trace("Playlist::handleDescriptionChangedEvent");
    dispatch_event("DescriptionChanged", shared_from_this(), text);
}

void Playlist::handleImageChangedEvent(const byte* id) {
    const std::string text = id ? imageIdText(id) : std::string();
    logger.trace("Playlist::handleImageChangedEvent", "id = ", id ? text : "NULL");
    dispatch_event("ImageChanged", shared_from_this(), text);
}

void Playlist::handleTrackMessageChangedEvent(int position, const char* text) {
    logger.trace("Playlist::handleTrackMessageChangedEvent");
    dispatch_event("TrackMessageChanged", shared_from_this(), position, text);
}

void Playlist::handleSubscribersChangedEvent() {
    logger.trace("Playlist::handleSubscribersChangedEvent");
    dispatch_event("SubscribersChanged", shared_from_this());
}
