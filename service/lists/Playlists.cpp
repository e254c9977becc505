#include "lists/Playlists.h"

#include "lists/Playlist.h"
#include "lists/Playlistcontainer.h"

#include <utility>

namespace sonolet::service {

Playlists::Playlists(std::shared_ptr<Library> sessionLibrary, Post postEvent, bool keepInRam)
    : shelves(std::move(sessionLibrary)), inRam(keepInRam), postToSession(std::move(postEvent)),
      openStore(std::make_unique<ListStore>(shelves->accounts()->connection())),
      lastChange(openStore->log().newest()) {}

Playlists::~Playlists() = default;

void Playlists::logIn(const Account& account) {
    user = account;
    own = {};
    catchUp();
    if (const auto row = openStore->ofAccount(account.id, ListKind::container)) {
        own = containerShelf.get(row->link, [&] {
            return new sp_playlistcontainer(shared_from_this(), *row, Playlistcontainer::View::own);
        });
    }
}

void Playlists::logOut() {
    user.reset();
    own = {};
}

void Playlists::close() {
    logOut();
    postToSession = {};
    openStore.reset();
}

void Playlists::reopen() {
    openStore = std::make_unique<ListStore>(shelves->accounts()->connection());
    reload();
    if (user) {
        const std::optional<Account> again = shelves->accounts()->find(user->name);
        again ? logIn(*again) : logOut();
    }
}

void Playlists::post(std::function<void()> event) const {
    if (postToSession) {
        postToSession(std::move(event));
    }
}

// ---- The log ----

void Playlists::catchUp() {
    if (openStore == nullptr || !user) {
        return;
    }
    const std::optional<std::vector<ListChange>> changes = openStore->log().since(lastChange);
    if (!changes) {
        reload();
        return;
    }
    for (const ListChange& change : *changes) {
        apply(change);
        lastChange = change.id;
    }
}

void Playlists::apply(const ListChange& change) {
    if (change.listKind != ListKind::container) {
        if (const Ref<sp_playlist> playlist = playlistShelf.find(change.link)) {
            playlist->apply(change);
        }
    } else if (const Ref<sp_playlistcontainer> container = containerShelf.find(change.link)) {
        container->apply(change);
    }
    if (change.listKind == ListKind::container || change.kind == ListChangeKind::shared) {
        if (const Ref<sp_playlistcontainer> seen = publishedShelf.find(change.owner)) {
            seen->reload();
        }
    }
}

void Playlists::reload() {
    lastChange = openStore->log().newest();
    for (const Ref<sp_playlist>& playlist : playlistShelf.all()) {
        playlist->reload();
    }
    for (const Ref<sp_playlistcontainer>& container : containerShelf.all()) {
        container->reload();
    }
    for (const Ref<sp_playlistcontainer>& container : publishedShelf.all()) {
        container->reload();
    }
}

void Playlists::tellMetadata() {
    if (user) {
        for (const Ref<sp_playlist>& playlist : playlistShelf.all()) {
            playlist->tellMetadata();
        }
    }
}

// ---- The handles ----

Ref<sp_playlist> Playlists::playlist(const Id& link) {
    return playlistShelf.get(link, [&] { return new sp_playlist(shared_from_this(), link); });
}

std::optional<ListRow> Playlists::find(const LinkTarget& link) const {
    std::optional<ListRow> found;
    if (openStore == nullptr || !user) {
        return found;
    }
    if (link.type == SP_LINKTYPE_STARRED) {
        return openStore->ofUser(link.user, ListKind::starred);
    }
    if (link.type == SP_LINKTYPE_PLAYLIST) {
        found = openStore->find(link.id);
        const bool hidden =
            found && (found->owner != link.user || found->kind == ListKind::container ||
                      (found->kind == ListKind::inbox && found->ownerId != user->id));
        if (hidden) {
            found.reset();
        }
    }
    return found;
}

Ref<sp_playlist> Playlists::open(const LinkTarget& link) {
    const std::optional<ListRow> found = find(link);
    return found ? playlist(found->link) : Ref<sp_playlist>();
}

Ref<sp_playlist> Playlists::starred(const std::string& userName) {
    if (openStore == nullptr || !user) {
        return {};
    }
    const auto row = openStore->ofUser(normalised(userName), ListKind::starred);
    return row ? playlist(row->link) : Ref<sp_playlist>();
}

Ref<sp_playlist> Playlists::inbox() {
    if (openStore == nullptr || !user) {
        return {};
    }
    const auto row = openStore->ofAccount(user->id, ListKind::inbox);
    return row ? playlist(row->link) : Ref<sp_playlist>();
}

Ref<sp_playlistcontainer> Playlists::published(const std::string& userName) {
    if (openStore == nullptr || !user) {
        return {};
    }
    const auto row = openStore->ofUser(normalised(userName), ListKind::container);
    if (!row) {
        return {};
    }
    return publishedShelf.get(row->owner, [&] {
        return new sp_playlistcontainer(shared_from_this(), *row,
                                        Playlistcontainer::View::published);
    });
}

// ---- Stars ----

bool Playlists::isStarred(const Id& track) const {
    if (openStore == nullptr || !user) {
        return false;
    }
    const auto row = openStore->ofAccount(user->id, ListKind::starred);
    return row && openStore->contains(*row, track);
}

sp_error Playlists::setStarred(const std::vector<Id>& tracks, bool star) {
    const auto row =
        user ? openStore->ofAccount(user->id, ListKind::starred) : std::optional<ListRow>();
    if (!row) {
        return SP_ERROR_PERMISSION_DENIED;
    }
    if (star) {
        std::vector<NewEntry> entries;
        entries.reserve(tracks.size());
        for (const Id& track : tracks) {
            entries.push_back({EntryKind::item, track, std::nullopt});
        }
        openStore->insert(*row, 0, entries, user->name);
    } else {
        openStore->removeItems(*row, tracks);
    }
    catchUp();
    return SP_ERROR_OK;
}

}  // namespace sonolet::service
