#include "lists/Playlist.h"

#include <utility>

namespace sonolet::service {

Playlist::Playlist(std::shared_ptr<Playlists> owner, const Id& listLink)
    : playlists(std::move(owner)), id(listLink), inRam(playlists->keepsInRam()) {
    readRow();
}

Playlist::~Playlist() {
    playlists->playlistShelf.forget(id, this);
}

sp_playlist* Playlist::handle() {
    return static_cast<sp_playlist*>(this);
}

void Playlist::readRow() {
    ListStore* store = playlists->store();
    if (store == nullptr) {
        return;
    }
    store->atOneMoment([&] {
        rowChange = store->log().newest();
        if (std::optional<ListRow> found = store->find(id)) {
            known = std::move(*found);
        }
    });
}

Playlist::Contents& Playlist::loadedContents() {
    ListStore* store = playlists->store();
    if (!contentsLoaded && store != nullptr && isLoaded()) {
        store->atOneMoment([&] {
            contentsChange = store->log().newest();
            contents.load(store->entries(known));
        });
        contentsLoaded = true;
    }
    return contents;
}

sp_user* Playlist::owner() {
    if (!ownerHandle && isLoaded()) {
        ownerHandle = playlists->library()->user(known.owner);
    }
    return ownerHandle.get();
}

int Playlist::trackCount() {
    return loadedContents().size();
}

const ListEntry* Playlist::entry(int index) {
    const Contents::Place* place = loadedContents().at(index);
    return place == nullptr ? nullptr : &place->entry;
}

sp_track* Playlist::track(int index) {
    Contents::Place* place = loadedContents().at(index);
    if (place == nullptr) {
        return nullptr;
    }
    if (!place->handle) {
        place->handle = playlists->library()->track(place->entry.item);
    }
    return place->handle.get();
}

sp_user* Playlist::creator(int index) {
    const ListEntry* asked = entry(index);
    if (asked == nullptr) {
        return nullptr;
    }
    if (!creatorHandle || creatorHandle->canonicalName() != asked->creator) {
        creatorHandle = playlists->library()->user(asked->creator);
    }
    return creatorHandle.get();
}

// ---- Changing it ----

sp_error Playlist::canChange() const {
    if (playlists->store() == nullptr || !playlists->account()) {
        return SP_ERROR_PERMISSION_DENIED;
    }
    return isLoaded() ? SP_ERROR_OK : SP_ERROR_IS_LOADING;
}

template <typename Action>
sp_error Playlist::change(Action action) {
    ListStore& store = *playlists->store();
    bool allowed = false;
    store.together([&] {
        const std::optional<ListRow> now = store.find(id);
        allowed = now && now->mayBeChangedBy(playlists->account()->id);
        if (allowed) {
            action(store);
        }
    });
    playlists->catchUp();
    return allowed ? SP_ERROR_OK : SP_ERROR_PERMISSION_DENIED;
}

sp_error Playlist::addTracks(const std::vector<Id>& tracks, int position) {
    if (const sp_error error = canChange(); error != SP_ERROR_OK) {
        return error;
    }
    if (position < 0 || position > trackCount()) {
        return SP_ERROR_INDEX_OUT_OF_RANGE;
    }
    std::vector<NewEntry> entries;
    entries.reserve(tracks.size());
    for (const Id& track : tracks) {
        entries.push_back({EntryKind::item, track, std::nullopt});
    }
    const ListEntry* before = entry(position);
    return change([&](ListStore& store) {
        store.insert(known, before == nullptr ? 0 : before->id, entries,
                     playlists->account()->name);
    });
}

sp_error Playlist::setSeen(int index, bool seen) {
    if (const sp_error error = canChange(); error != SP_ERROR_OK) {
        return error;
    }
    const ListEntry* changed = entry(index);
    if (changed == nullptr) {
        return SP_ERROR_INDEX_OUT_OF_RANGE;
    }
    return change([&](ListStore& store) {
        if (changed->seen != seen) {
            store.setSeen(known, changed->id, seen);
        }
    });
}

const std::vector<std::string>& Playlist::subscribers() {
    if (ListStore* store = playlists->store();
        !subscribersLoaded && store != nullptr && isLoaded()) {
        subscriberNames = store->subscribers(known);
        subscribersLoaded = true;
    }
    return subscriberNames;
}

sp_error Playlist::updateSubscribers() {
    if (const sp_error error = canChange(); error != SP_ERROR_OK) {
        return error;
    }
    changedRow(ListChangeKind::subscribed);
    return SP_ERROR_OK;
}

void Playlist::setInRam(bool keep) {
    inRam = keep;
    if (!keep && callbacks.empty()) {
        contents.load({});
        contentsLoaded = false;
    }
}

void Playlist::follow() {
    loadedContents();
}

// ---- What changed ----

void Playlist::apply(const ListChange& change) {
    switch (change.kind) {
    case ListChangeKind::renamed:
    case ListChangeKind::described:
    case ListChangeKind::pictured:
    case ListChangeKind::shared:
        if (change.id > rowChange) {
            readRow();
            rowChange = change.id;
            changedRow(change.kind);
        }
        return;
    case ListChangeKind::subscribed:
        changedRow(change.kind);
        return;
    default:
        break;
    }
    if (!contentsLoaded || change.id <= contentsChange || change.numbers.empty()) {
        return;
    }
    contentsChange = change.id;
    switch (change.kind) {
    case ListChangeKind::added: {
        std::vector<ListEntry> entries;
        for (auto entryId = change.numbers.begin() + 1; entryId != change.numbers.end();
             ++entryId) {
            if (std::optional<ListEntry> found = playlists->store()->entry(*entryId)) {
                entries.push_back(std::move(*found));
            }
        }
        added(change.numbers.front(), std::move(entries));
        return;
    }
    case ListChangeKind::removed:
        removed(change.numbers);
        return;
    case ListChangeKind::moved:
        moved(change.numbers);
        return;
    default:
        break;
    }
    const int position = contents.find(change.numbers.front());
    const std::optional<ListEntry> now = playlists->store()->entry(change.numbers.front());
    if (position >= 0 && now) {
        changedEntry(position, change.kind, *now);
    }
}

// The row and the entries as they are now, told as few changes.
void Playlist::reload() {
    ListStore* store = playlists->store();
    if (store == nullptr || !isLoaded()) {
        return;
    }
    const ListRow before = known;
    readRow();
    if (known.name != before.name) {
        changedRow(ListChangeKind::renamed);
    }
    if (known.description != before.description) {
        changedRow(ListChangeKind::described);
    }
    if (known.image != before.image) {
        changedRow(ListChangeKind::pictured);
    }
    if (known.collaborative != before.collaborative || known.published != before.published) {
        changedRow(ListChangeKind::shared);
    }
    changedRow(ListChangeKind::subscribed);
    if (!contentsLoaded) {
        return;
    }
    std::vector<ListEntry> now;
    store->atOneMoment([&] {
        contentsChange = store->log().newest();
        now = store->entries(known);
    });
    Contents::Difference difference = contents.compare(now);
    removed(difference.gone);
    added(difference.before, std::move(difference.come));
    // The entries are the same from here on.
    for (int position = 0; position < contents.size(); ++position) {
        const ListEntry& shown = contents.at(position)->entry;
        const ListEntry& entry = now[static_cast<std::size_t>(position)];
        if (shown.seen != entry.seen) {
            changedEntry(position, ListChangeKind::seen, entry);
        }
        if (shown.text != entry.text) {
            changedEntry(position, ListChangeKind::messaged, entry);
        }
    }
}

void Playlist::tellMetadata() {
    if (!callbacks.empty() && trackCount() > 0) {
        playlists->post([self = Ref<sp_playlist>::share(handle()), audience = callbacks.all()] {
            self->raise(audience, &sp_playlist_callbacks::playlist_metadata_updated);
        });
    }
}

template <typename... Parameters, typename... Arguments>
void Playlist::raise(Audience audience,
                     void (*sp_playlist_callbacks::*callback)(Parameters...),
                     const Arguments&... arguments) {
    if (playlists->store() != nullptr) {
        callbacks.raise(audience, callback, handle(), arguments...);
    }
}

template <typename Change>
void Playlist::tell(Change change) {
    if (callbacks.empty()) {
        return;
    }
    // A callback may let the last reference go.
    playlists->post([self = Ref<sp_playlist>::share(handle()), audience = callbacks.all(),
                     change = std::move(change)] {
        self->raise(audience, &sp_playlist_callbacks::playlist_update_in_progress, false);
        change(*self.get(), audience);
        self->raise(audience, &sp_playlist_callbacks::playlist_state_changed);
        self->raise(audience, &sp_playlist_callbacks::playlist_update_in_progress, true);
    });
}

void Playlist::added(std::int64_t before, std::vector<ListEntry> entries) {
    if (entries.empty()) {
        return;
    }
    const Effect effect = contents.insert(before, std::move(entries));
    if (callbacks.empty()) {
        return;
    }
    std::vector<Ref<sp_track>> tracks;
    tracks.reserve(effect.positions.size());
    for (const int position : effect.positions) {
        track(position);
        tracks.push_back(contents.at(position)->handle);
    }
    tell([tracks = std::move(tracks), position = effect.position](Playlist& self,
                                                                  Audience audience) {
        std::vector<sp_track*> handles;
        handles.reserve(tracks.size());
        for (const Ref<sp_track>& track : tracks) {
            handles.push_back(track.get());
        }
        self.raise(audience, &sp_playlist_callbacks::tracks_added, handles.data(),
                   static_cast<int>(handles.size()), position);
    });
}

void Playlist::removed(const std::vector<std::int64_t>& entries) {
    const Effect effect = contents.remove(entries);
    if (effect.positions.empty()) {
        return;
    }
    tell([positions = effect.positions](Playlist& self, Audience audience) {
        self.raise(audience, &sp_playlist_callbacks::tracks_removed, positions.data(),
                   static_cast<int>(positions.size()));
    });
}

void Playlist::moved(const std::vector<std::int64_t>& numbers) {
    const Effect effect = contents.move(numbers);
    if (effect.positions.empty()) {
        return;
    }
    tell([positions = effect.positions, position = effect.position](Playlist& self,
                                                                    Audience audience) {
        self.raise(audience, &sp_playlist_callbacks::tracks_moved, positions.data(),
                   static_cast<int>(positions.size()), position);
    });
}

void Playlist::changedEntry(int position, ListChangeKind kind, const ListEntry& now) {
    ListEntry& shown = contents.at(position)->entry;
    if (kind == ListChangeKind::seen) {
        shown.seen = now.seen;
        tell([position, seen = now.seen](Playlist& self, Audience audience) {
            self.raise(audience, &sp_playlist_callbacks::track_seen_changed, position, seen);
        });
    } else {
        shown.text = now.text;
        tell([position, text = now.text.value_or("")](Playlist& self, Audience audience) {
            self.raise(audience, &sp_playlist_callbacks::track_message_changed, position,
                       text.c_str());
        });
    }
}

void Playlist::changedRow(ListChangeKind kind) {
    if (kind == ListChangeKind::subscribed) {
        subscribersLoaded = false;
        if (!callbacks.empty()) {
            playlists->post([self = Ref<sp_playlist>::share(handle()), audience = callbacks.all()] {
                self->raise(audience, &sp_playlist_callbacks::subscribers_changed);
            });
        }
        return;
    }
    tell([kind, description = known.description, image = known.image](Playlist& self,
                                                                      Audience audience) {
        if (kind == ListChangeKind::renamed) {
            self.raise(audience, &sp_playlist_callbacks::playlist_renamed);
        } else if (kind == ListChangeKind::described) {
            self.raise(audience, &sp_playlist_callbacks::description_changed, description.c_str());
        } else if (kind == ListChangeKind::pictured) {
            const auto* bytes = reinterpret_cast<const byte*>(image.data());
            self.raise(audience, &sp_playlist_callbacks::image_changed,
                       image.empty() ? nullptr : bytes);
        }
    });
}

}  // namespace sonolet::service
