#include "api/Api.h"
#include "lists/Playlistcontainer.h"
#include "objects/Link.h"

#include <cstring>

using namespace sonolet::service;

sp_playlistcontainer* sp_session_playlistcontainer(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? nullptr : living->playlists().container();
}

sp_playlistcontainer*
sp_session_publishedcontainer_for_user_create(sp_session* session,
                                              // NOLINTNEXTLINE(readability-identifier-naming)
                                              const char* canonical_username) {
    return guardedOr<sp_playlistcontainer*>(nullptr, [&]() -> sp_playlistcontainer* {
        const std::shared_ptr<Session> living = sessionOf(session);
        return living == nullptr || canonical_username == nullptr
                   ? nullptr
                   : living->playlists().published(canonical_username).detach();
    });
}

sp_error sp_playlistcontainer_add_callbacks(sp_playlistcontainer* container,
                                            sp_playlistcontainer_callbacks* callbacks,
                                            void* userdata) {
    if (container == nullptr || callbacks == nullptr) {
        return SP_ERROR_INVALID_INDATA;
    }
    return guarded([&] {
        container->addCallbacks(callbacks, userdata);
        return SP_ERROR_OK;
    });
}

sp_error sp_playlistcontainer_remove_callbacks(sp_playlistcontainer* container,
                                               sp_playlistcontainer_callbacks* callbacks,
                                               void* userdata) {
    return container != nullptr && container->removeCallbacks(callbacks, userdata)
               ? SP_ERROR_OK
               : SP_ERROR_INVALID_INDATA;
}

int sp_playlistcontainer_num_playlists(sp_playlistcontainer* container) {
    return container == nullptr ? 0 : container->size();
}

bool sp_playlistcontainer_is_loaded(sp_playlistcontainer* container) {
    return container != nullptr;
}

sp_playlist* sp_playlistcontainer_playlist(sp_playlistcontainer* container, int index) {
    return ask<sp_playlist*>(container, nullptr,
                             [&](Playlistcontainer& asked) { return asked.playlist(index); });
}

sp_playlist_type sp_playlistcontainer_playlist_type(sp_playlistcontainer* container, int index) {
    return ask(container, SP_PLAYLIST_TYPE_PLACEHOLDER,
               [&](Playlistcontainer& asked) { return asked.type(index); });
}

sp_error sp_playlistcontainer_playlist_folder_name(sp_playlistcontainer* container,
                                                   int index,
                                                   char* buffer,
                                                   int size) {
    if (buffer == nullptr || size <= 0) {
        return SP_ERROR_INVALID_INDATA;
    }
    *buffer = '\0';
    const ListEntry* entry = container == nullptr ? nullptr : container->entry(index);
    if (entry == nullptr) {
        return container == nullptr ? SP_ERROR_INVALID_INDATA : SP_ERROR_INDEX_OUT_OF_RANGE;
    }
    if (entry->kind == EntryKind::item) {
        return SP_ERROR_INVALID_INDATA;
    }
    copyText(entry->text.value_or(""), buffer, static_cast<std::size_t>(size));
    return SP_ERROR_OK;
}

sp_uint64 sp_playlistcontainer_playlist_folder_id(sp_playlistcontainer* container, int index) {
    const ListEntry* entry = container == nullptr ? nullptr : container->entry(index);
    sp_uint64 id = 0;
    if (entry != nullptr && entry->kind != EntryKind::item) {
        std::memcpy(&id, entry->item.bytes.data(), sizeof(id));
        // Script's numbers are exact up to here.
        constexpr int exactBits = 53;
        id &= (sp_uint64{1} << exactBits) - 1;
    }
    return id;
}

sp_playlist* sp_playlistcontainer_add_playlist(sp_playlistcontainer* container, sp_link* link) {
    return ask<sp_playlist*>(container, nullptr, [&](Playlistcontainer& changed) {
        return link == nullptr ? nullptr : changed.add(link->where());
    });
}

sp_user* sp_playlistcontainer_owner(sp_playlistcontainer* container) {
    return container == nullptr ? nullptr : container->owner();
}

sp_error sp_playlistcontainer_add_ref(sp_playlistcontainer* container) {
    return addRef(container);
}

sp_error sp_playlistcontainer_release(sp_playlistcontainer* container) {
    return release(container);
}
