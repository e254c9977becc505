#include "lists/Playlistcontainer.h"

#include <utility>

namespace sonolet::service {

Playlistcontainer::Playlistcontainer(std::shared_ptr<Playlists> owner,
                                     ListRow containerRow,
                                     View shownView)
    : playlists(std::move(owner)), row(std::move(containerRow)), view(shownView),
      ownerHandle(playlists->library()->user(row.owner)) {
    ListStore& store = *playlists->store();
    store.atOneMoment([&] {
        contentsChange = store.log().newest();
        contents.load(read(store));
    });
}

Playlistcontainer::~Playlistcontainer() {
    if (view == View::own) {
        playlists->containerShelf.forget(row.link, this);
    } else {
        playlists->publishedShelf.forget(row.owner, this);
    }
}

sp_playlistcontainer* Playlistcontainer::handle() {
    return static_cast<sp_playlistcontainer*>(this);
}

std::vector<ListEntry> Playlistcontainer::read(ListStore& store) const {
    return view == View::own ? store.entries(row) : store.published(row);
}

const ListEntry* Playlistcontainer::entry(int index) {
    const Contents::Place* place = contents.at(index);
    return place == nullptr ? nullptr : &place->entry;
}

const Ref<sp_playlist>& Playlistcontainer::handleOf(Contents::Place& place) const {
    if (!place.handle) {
        place.handle = playlists->playlist(place.entry.item);
    }
    return place.handle;
}

sp_playlist* Playlistcontainer::playlist(int index) {
    Contents::Place* place = contents.at(index);
    return place == nullptr ? nullptr : handleOf(*place).get();
}

sp_playlist_type Playlistcontainer::type(int index) {
    const ListEntry* asked = entry(index);
    if (asked == nullptr) {
        return SP_PLAYLIST_TYPE_PLACEHOLDER;
    }
    switch (asked->kind) {
    case EntryKind::folderStart:
        return SP_PLAYLIST_TYPE_START_FOLDER;
    case EntryKind::folderEnd:
        return SP_PLAYLIST_TYPE_END_FOLDER;
    default:
        // The list may have gone with its owner.
        return playlist(index)->isLoaded() ? SP_PLAYLIST_TYPE_PLAYLIST
                                           : SP_PLAYLIST_TYPE_PLACEHOLDER;
    }
}

sp_playlist* Playlistcontainer::add(const LinkTarget& link) {
    ListStore* store = playlists->store();
    const std::optional<Account>& user = playlists->account();
    if (store == nullptr || !user || view != View::own || user->id != row.ownerId) {
        return nullptr;
    }
    const Ref<sp_playlist> wanted = playlists->open(link);
    if (!wanted || !wanted->isLoaded()) {
        return nullptr;
    }
    bool isNew = false;
    store->together([&] {
        isNew = !store->contains(row, wanted->link());
        if (isNew) {
            store->insert(row, 0, {{EntryKind::item, wanted->link(), std::nullopt}}, user->name);
        }
    });
    playlists->catchUp();
    for (int index = size() - 1; isNew && index >= 0; --index) {
        if (contents.at(index)->entry.item == wanted->link()) {
            // The container holds it from here on.
            return playlist(index);
        }
    }
    return nullptr;
}

void Playlistcontainer::addCallbacks(const sp_playlistcontainer_callbacks* record, void* userdata) {
    callbacks.add(record, userdata);
    playlists->post(
        [self = Ref<sp_playlistcontainer>::share(handle()), audience = callbacks.newest()] {
            if (self->playlists->store() != nullptr) {
                self->callbacks.raise(audience, &sp_playlistcontainer_callbacks::container_loaded,
                                      self.get());
            }
        });
}

bool Playlistcontainer::removeCallbacks(const sp_playlistcontainer_callbacks* record,
                                        const void* userdata) {
    return callbacks.remove(record, userdata);
}

// ---- What changed ----

void Playlistcontainer::apply(const ListChange& change) {
    if (change.id <= contentsChange || change.numbers.empty()) {
        return;
    }
    contentsChange = change.id;
    if (change.kind == ListChangeKind::added) {
        std::vector<ListEntry> entries;
        for (auto entryId = change.numbers.begin() + 1; entryId != change.numbers.end();
             ++entryId) {
            if (std::optional<ListEntry> found = playlists->store()->entry(*entryId)) {
                entries.push_back(std::move(*found));
            }
        }
        added(change.numbers.front(), std::move(entries));
    } else if (change.kind == ListChangeKind::removed) {
        removed(change.numbers);
    } else if (change.kind == ListChangeKind::moved) {
        moved(change.numbers);
    }
}

void Playlistcontainer::reload() {
    ListStore& store = *playlists->store();
    Contents::Difference difference;
    store.atOneMoment([&] {
        contentsChange = store.log().newest();
        difference = contents.compare(read(store));
    });
    removed(difference.gone);
    added(difference.before, std::move(difference.come));
}

template <typename... Parameters, typename... Positions>
void Playlistcontainer::tell(void (*sp_playlistcontainer_callbacks::*callback)(Parameters...),
                             const Ref<sp_playlist>& playlist,
                             Positions... positions) {
    playlists->post([self = Ref<sp_playlistcontainer>::share(handle()), audience = callbacks.all(),
                     callback, playlist, positions...] {
        if (self->playlists->store() != nullptr) {
            self->callbacks.raise(audience, callback, self.get(), playlist.get(), positions...);
        }
    });
}

void Playlistcontainer::added(std::int64_t before, std::vector<ListEntry> entries) {
    const Contents::Effect effect = contents.insert(before, std::move(entries));
    for (const int position : effect.positions) {
        if (!callbacks.empty()) {
            tell(&sp_playlistcontainer_callbacks::playlist_added, handleOf(*contents.at(position)),
                 position);
        }
    }
}

// The last goes first, so that every place is right when it is told.
void Playlistcontainer::removed(const std::vector<std::int64_t>& entries) {
    Contents::Effect effect = contents.remove(entries);
    for (std::size_t index = effect.positions.size(); index-- > 0;) {
        if (!callbacks.empty()) {
            tell(&sp_playlistcontainer_callbacks::playlist_removed, handleOf(effect.gone[index]),
                 effect.positions[index]);
        }
    }
}

// One by one, as their callbacks tell it.
void Playlistcontainer::moved(const std::vector<std::int64_t>& numbers) {
    for (auto entryId = numbers.begin() + 1; entryId != numbers.end(); ++entryId) {
        const Contents::Effect effect = contents.move({numbers.front(), *entryId});
        if (!effect.positions.empty() && !callbacks.empty()) {
            tell(&sp_playlistcontainer_callbacks::playlist_moved,
                 handleOf(*contents.at(effect.position)), effect.positions.front(),
                 effect.position);
        }
    }
}

}  // namespace sonolet::service
