#include "api/Api.h"
#include "lists/Playlist.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

using namespace sonolet::service;

namespace {

// A reference for the caller to what `find` finds among the living session's lists.
template <typename Find>
auto create(const sp_session* session, Find find) {
    using Handle = decltype(find(std::declval<Playlists&>()).get());
    return guardedOr<Handle>(nullptr, [&]() -> Handle {
        const std::shared_ptr<Session> living = sessionOf(session);
        return living == nullptr ? nullptr : find(living->playlists()).detach();
    });
}

// An entry's answer, or `otherwise` for a place that is not there.
template <typename Result, typename Question>
Result askEntry(sp_playlist* playlist, int index, Result otherwise, Question question) {
    return ask(playlist, otherwise, [&](Playlist& asked) -> Result {
        const ListEntry* entry = asked.entry(index);
        return entry == nullptr ? otherwise : question(*entry);
    });
}

// guarded() for an operation of a playlist of a living session.
template <typename Action>
sp_error change(sp_playlist* playlist, Action action) {
    return playlist == nullptr ? SP_ERROR_INVALID_INDATA
                               : guarded([&] { return action(*playlist); });
}

}  // namespace

sp_playlist* sp_session_inbox_create(sp_session* session) {
    return create(session, [](Playlists& lists) { return lists.inbox(); });
}

sp_playlist* sp_session_starred_create(sp_session* session) {
    return create(session, [](Playlists& lists) {
        return lists.account() ? lists.starred(lists.account()->name) : Ref<sp_playlist>();
    });
}

sp_playlist* sp_session_starred_for_user_create(sp_session* session,
                                                // NOLINTNEXTLINE(readability-identifier-naming)
                                                const char* canonical_username) {
    return create(session, [&](Playlists& lists) {
        return canonical_username == nullptr ? Ref<sp_playlist>()
                                             : lists.starred(canonical_username);
    });
}

sp_link* sp_link_create_from_playlist(sp_playlist* playlist) {
    return ask<sp_link*>(playlist, nullptr, [](Playlist& from) -> sp_link* {
        if (!from.isLoaded()) {
            return nullptr;
        }
        const ListRow& row = from.row();
        return Link::to(row.kind == ListKind::starred ? LinkTarget::starred(row.owner)
                                                      : LinkTarget::playlist(row.owner, row.link))
            .detach();
    });
}

sp_playlist* sp_playlist_create(sp_session* session, sp_link* link) {
    return create(session, [&](Playlists& lists) {
        return link == nullptr ? Ref<sp_playlist>() : lists.open(link->where());
    });
}

bool sp_playlist_is_loaded(sp_playlist* playlist) {
    return playlist != nullptr && playlist->isLoaded();
}

sp_error
sp_playlist_add_callbacks(sp_playlist* playlist, sp_playlist_callbacks* callbacks, void* userdata) {
    return change(playlist, [&](Playlist& changed) {
        if (callbacks == nullptr) {
            return SP_ERROR_INVALID_INDATA;
        }
        changed.follow();
        changed.listeners().add(callbacks, userdata);
        return SP_ERROR_OK;
    });
}

sp_error sp_playlist_remove_callbacks(sp_playlist* playlist,
                                      sp_playlist_callbacks* callbacks,
                                      void* userdata) {
    return change(playlist, [&](Playlist& changed) {
        return changed.listeners().remove(callbacks, userdata) ? SP_ERROR_OK
                                                               : SP_ERROR_INVALID_INDATA;
    });
}

int sp_playlist_num_tracks(sp_playlist* playlist) {
    return ask(playlist, 0, [](Playlist& asked) { return asked.trackCount(); });
}

sp_track* sp_playlist_track(sp_playlist* playlist, int index) {
    return ask<sp_track*>(playlist, nullptr, [&](Playlist& asked) { return asked.track(index); });
}

int sp_playlist_track_create_time(sp_playlist* playlist, int index) {
    return askEntry(playlist, index, 0,
                    [](const ListEntry& entry) { return static_cast<int>(entry.created); });
}

sp_user* sp_playlist_track_creator(sp_playlist* playlist, int index) {
    return ask<sp_user*>(playlist, nullptr, [&](Playlist& asked) { return asked.creator(index); });
}

bool sp_playlist_track_seen(sp_playlist* playlist, int index) {
    return askEntry(playlist, index, false, [](const ListEntry& entry) { return entry.seen; });
}

sp_error sp_playlist_track_set_seen(sp_playlist* playlist, int index, bool seen) {
    return change(playlist, [&](Playlist& changed) { return changed.setSeen(index, seen); });
}

const char* sp_playlist_track_message(sp_playlist* playlist, int index) {
    return askEntry<const char*>(playlist, index, nullptr, [](const ListEntry& entry) {
        return entry.text ? entry.text->c_str() : nullptr;
    });
}

const char* sp_playlist_name(sp_playlist* playlist) {
    return playlist == nullptr ? "" : playlist->row().name.c_str();
}

sp_user* sp_playlist_owner(sp_playlist* playlist) {
    return ask<sp_user*>(playlist, nullptr, [](Playlist& asked) { return asked.owner(); });
}

bool sp_playlist_is_collaborative(sp_playlist* playlist) {
    return playlist != nullptr && playlist->row().collaborative;
}

sp_error sp_playlist_set_autolink_tracks(sp_playlist* playlist, bool) {
    // A track that is not there has no other that could stand in for it.
    return playlist == nullptr ? SP_ERROR_INVALID_INDATA : SP_ERROR_OK;
}

const char* sp_playlist_get_description(sp_playlist* playlist) {
    return playlist == nullptr ? "" : playlist->row().description.c_str();
}

bool sp_playlist_get_image(sp_playlist* playlist, byte image[20]) {
    constexpr std::size_t imageSize = 20;
    if (playlist == nullptr || image == nullptr || playlist->row().image.size() != imageSize) {
        return false;
    }
    std::memcpy(image, playlist->row().image.data(), imageSize);
    return true;
}

bool sp_playlist_has_pending_changes(sp_playlist*) {
    // A change is kept when its call returns.
    return false;
}

sp_error sp_playlist_add_tracks(
    sp_playlist* playlist, sp_track* const* tracks, int count, int position, sp_session* session) {
    return change(playlist, [&](Playlist& changed) {
        if (sessionOf(session) == nullptr || count < 0 || (tracks == nullptr && count > 0)) {
            return SP_ERROR_INVALID_INDATA;
        }
        std::vector<Id> ids;
        ids.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index) {
            if (tracks[index] == nullptr) {
                return SP_ERROR_INVALID_INDATA;
            }
            ids.push_back(tracks[index]->id());
        }
        return changed.addTracks(ids, position);
    });
}

unsigned sp_playlist_num_subscribers(sp_playlist* playlist) {
    return ask(playlist, 0U,
               [](Playlist& asked) { return static_cast<unsigned>(asked.subscribers().size()); });
}

// One block: the record, its pointers, their texts.
sp_subscribers* sp_playlist_subscribers(sp_playlist* playlist) {
    return ask<sp_subscribers*>(playlist, nullptr, [](Playlist& asked) -> sp_subscribers* {
        const std::vector<std::string>& names = asked.subscribers();
        std::size_t texts = 0;
        for (const std::string& name : names) {
            texts += name.size() + 1;
        }
        const std::size_t head = sizeof(sp_subscribers) + names.size() * sizeof(char*);
        auto* record = static_cast<sp_subscribers*>(std::calloc(1, head + texts));
        if (record == nullptr) {
            throw std::bad_alloc();
        }
        record->count = static_cast<unsigned>(names.size());
        char** pointers = record->subscribers;
        char* text = reinterpret_cast<char*>(record) + head;
        for (const std::string& name : names) {
            *pointers++ = text;
            std::memcpy(text, name.c_str(), name.size() + 1);
            text += name.size() + 1;
        }
        return record;
    });
}

sp_error sp_playlist_subscribers_free(sp_subscribers* subscribers) {
    std::free(subscribers);
    return subscribers == nullptr ? SP_ERROR_INVALID_INDATA : SP_ERROR_OK;
}

sp_error sp_playlist_update_subscribers(sp_session* session, sp_playlist* playlist) {
    return change(playlist, [&](Playlist& changed) {
        return sessionOf(session) == nullptr ? SP_ERROR_INVALID_INDATA
                                             : changed.updateSubscribers();
    });
}

bool sp_playlist_is_in_ram(sp_session* session, sp_playlist* playlist) {
    return sessionOf(session) != nullptr && playlist != nullptr && playlist->isInRam();
}

sp_error sp_playlist_set_in_ram(sp_session* session,
                                sp_playlist* playlist,
                                bool in_ram) {  // NOLINT(readability-identifier-naming)
    return change(playlist, [&](Playlist& changed) {
        if (sessionOf(session) == nullptr) {
            return SP_ERROR_INVALID_INDATA;
        }
        changed.setInRam(in_ram);
        return SP_ERROR_OK;
    });
}

sp_error sp_playlist_add_ref(sp_playlist* playlist) {
    return addRef(playlist);
}

sp_error sp_playlist_release(sp_playlist* playlist) {
    return release(playlist);
}
