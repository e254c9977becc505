#ifndef SONOLET_SERVICE_LISTS_PLAYLISTS_H
#define SONOLET_SERVICE_LISTS_PLAYLISTS_H

#include "accounts/ListStore.h"
#include "objects/Library.h"
#include "objects/Link.h"
#include "objects/Shelf.h"

#include "libspotify/api.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// The lists of a session: the living handles, and what keeps them up to date.
//
// Everyone's changes come by one way: they are written to the store's log, and catchUp() hands the
// lines that are new to the handles, which post what their callbacks are told. While nobody is
// logged in the handles stay as they are; the next login catches up.
//
// Threads: the thread that uses the library; handles may go on any. Handles may outlive the
// session: they keep this object, which after close() changes and tells nothing.
class Playlists final : public std::enable_shared_from_this<Playlists> {
public:
    using Post = std::function<void(std::function<void()> event)>;

    Playlists(std::shared_ptr<Library> sessionLibrary, Post postEvent, bool keepInRam);
    ~Playlists();

    Playlists(const Playlists&) = delete;
    Playlists& operator=(const Playlists&) = delete;

    // Catches up with what has happened meanwhile, and opens the account's container.
    void logIn(const Account& account);
    void logOut();
    void close();
    // After the library has exchanged its accounts; those before must live until this returns.
    void reopen();

    // NULL after close().
    ListStore* store() const { return openStore.get(); }
    const std::shared_ptr<Library>& library() const { return shelves; }
    const std::optional<Account>& account() const { return user; }
    // Whether entries stay in memory that nobody has asked to keep there.
    bool keepsInRam() const { return inRam; }
    void post(std::function<void()> event) const;

    // Looks for changes, the session's own included.
    void catchUp();
    // The last change that was seen; another number: there are more.
    std::int64_t newest() const { return lastChange; }
    // Tells each list's listeners that tracks in it may say more now.
    void tellMetadata();

    // None: there is no such list, or it is not for this user to see.
    Ref<sp_playlist> open(const LinkTarget& link);
    // Whether there is such a list or not: a handle that is not loaded stands for none.
    Ref<sp_playlist> playlist(const Id& link);
    // Anybody's, by name; none while nobody is logged in.
    Ref<sp_playlist> starred(const std::string& userName);
    Ref<sp_playlist> inbox();
    // NULL while nobody is logged in.
    sp_playlistcontainer* container() const { return own.get(); }
    Ref<sp_playlistcontainer> published(const std::string& userName);

    // By whoever is logged in.
    bool isStarred(const Id& track) const;
    // SP_ERROR_PERMISSION_DENIED while nobody is logged in. The change is in the list at once.
    sp_error setStarred(const std::vector<Id>& tracks, bool star);

private:
    friend class Playlist;
    friend class Playlistcontainer;

    std::optional<ListRow> find(const LinkTarget& link) const;
    void apply(const ListChange& change);
    void reload();

    const std::shared_ptr<Library> shelves;
    const bool inRam;

    Post postToSession;
    std::unique_ptr<ListStore> openStore;
    std::optional<Account> user;
    Ref<sp_playlistcontainer> own;
    std::int64_t lastChange = 0;

    Shelf<Id, sp_playlist> playlistShelf;
    Shelf<Id, sp_playlistcontainer> containerShelf;
    Shelf<std::string, sp_playlistcontainer> publishedShelf;  // by the names of their owners
};

}  // namespace sonolet::service

#endif
