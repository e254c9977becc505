#ifndef SONOLET_SERVICE_LISTS_PLAYLIST_H
#define SONOLET_SERVICE_LISTS_PLAYLIST_H

#include "lists/ListContents.h"
#include "lists/Listeners.h"
#include "lists/Playlists.h"
#include "objects/Track.h"
#include "objects/User.h"

#include "libspotify/api.h"

#include <memory>
#include <string>
#include <vector>

namespace sonolet::service {

// A playlist, starred list or inbox. What it says of itself is read when the handle is made, its
// entries when they are first asked for; from then on it follows the log of changes. The handle
// of a list that is not there, which is what stands for a folder, is never loaded.
//
// A change is to be seen at once; its callbacks come from the session's events:
// playlist_update_in_progress (not done), the change, playlist_state_changed,
// playlist_update_in_progress (done). subscribers_changed and playlist_metadata_updated come alone.
//
// Threads: as for Handle. Ownership: keeps the session's playlists; entries, rows and handles that
// it hands out are borrowed until the next change. Errors: numbers of the interface for what the
// user may not do or what makes no sense, DatabaseError for the rest.
class Playlist : public Handle {
public:
    // For Playlists alone, which has one handle for each list.
    Playlist(std::shared_ptr<Playlists> owner, const Id& listLink);
    ~Playlist() override;

    const Id& link() const { return id; }
    bool isLoaded() const { return known.id != 0; }
    // Of the list; says nothing when it is not loaded.
    const ListRow& row() const { return known; }
    // NULL when it is not loaded.
    sp_user* owner();

    int trackCount();
    // NULL: out of range.
    sp_track* track(int index);
    sp_user* creator(int index);
    const ListEntry* entry(int index);

    // By whoever is logged in. Before the entry at `position`, or at the end for trackCount(); a
    // position outside is SP_ERROR_INDEX_OUT_OF_RANGE.
    sp_error addTracks(const std::vector<Id>& tracks, int position);
    sp_error setSeen(int index, bool seen);

    // Those who follow it, as they were when the handle last heard of them.
    const std::vector<std::string>& subscribers();
    sp_error updateSubscribers();

    bool isInRam() const { return inRam; }
    // Entries that are not to be kept in memory are read again when they are asked for.
    void setInRam(bool keep);

    Listeners<sp_playlist_callbacks>& listeners() { return callbacks; }
    // To be called before callbacks are added: they tell places.
    void follow();

    // To be called for a line of the log, and when the log was lost.
    void apply(const ListChange& change);
    void reload();
    // Some of the tracks may say more now.
    void tellMetadata();

private:
    using Contents = ListContents<sp_track>;
    using Effect = Contents::Effect;
    using Audience = Listeners<sp_playlist_callbacks>::Audience;

    sp_playlist* handle();
    void readRow();
    Contents& loadedContents();
    sp_error canChange() const;
    // Has the store changed, if the user is allowed to at that moment: another process may have
    // changed who is.
    template <typename Action>
    sp_error change(Action action);
    void added(std::int64_t before, std::vector<ListEntry> entries);
    void removed(const std::vector<std::int64_t>& entries);
    void moved(const std::vector<std::int64_t>& numbers);
    void changedEntry(int position, ListChangeKind kind, const ListEntry& now);
    void changedRow(ListChangeKind kind);
    // Has `change` called, between the callbacks that go with every change, from the events.
    template <typename Change>
    void tell(Change change);
    template <typename... Parameters, typename... Arguments>
    void raise(Audience audience,
               void (*sp_playlist_callbacks::*callback)(Parameters...),
               const Arguments&... arguments);

    // Constant after construction.
    const std::shared_ptr<Playlists> playlists;
    const Id id;

    ListRow known;
    Ref<sp_user> ownerHandle;
    Ref<sp_user> creatorHandle;  // the one that was asked for last
    std::int64_t rowChange = 0;  // up to which `known` tells
    bool contentsLoaded = false;
    std::int64_t contentsChange = 0;  // up to which `contents` tell
    Contents contents;
    bool subscribersLoaded = false;
    std::vector<std::string> subscriberNames;
    bool inRam;
    Listeners<sp_playlist_callbacks> callbacks;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_playlist final : sonolet::service::Playlist {  // NOLINT(readability-identifier-naming)
    using Playlist::Playlist;
};

#endif
