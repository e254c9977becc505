#ifndef SONOLET_SERVICE_LISTS_PLAYLISTCONTAINER_H
#define SONOLET_SERVICE_LISTS_PLAYLISTCONTAINER_H

#include "lists/ListContents.h"
#include "lists/Listeners.h"
#include "lists/Playlist.h"

#include "libspotify/api.h"

#include <memory>

namespace sonolet::service {

// A user's playlists and folders, or what others see of them: the playlists of his own that he
// publishes, without folders. Like a playlist it follows the log; container_loaded comes from the
// events that follow the registration of a callback.
//
// Threads: as for Handle. Ownership: keeps the session's playlists, and the handle of each entry
// that was asked for; entries are borrowed until the next change.
class Playlistcontainer : public Handle {
public:
    // As its owner sees it, or as others do.
    enum class View { own, published };

    // For Playlists alone, which has one handle for each container and view. Reads the entries.
    Playlistcontainer(std::shared_ptr<Playlists> owner, ListRow containerRow, View shownView);
    ~Playlistcontainer() override;

    int size() const { return contents.size(); }
    // NULL: out of range. Indexes are from 0, the two ends of a folder counted.
    const ListEntry* entry(int index);
    // Of a folder's ends a handle that is never loaded.
    sp_playlist* playlist(int index);
    // SP_PLAYLIST_TYPE_PLACEHOLDER for an index outside, and for a playlist that is there no more.
    sp_playlist_type type(int index);
    // Borrowed; never NULL.
    sp_user* owner() const { return ownerHandle.get(); }

    // Appends a playlist of this or another user; NULL when it is there already or nowhere, or when
    // this is not the container of the user.
    sp_playlist* add(const LinkTarget& link);

    void addCallbacks(const sp_playlistcontainer_callbacks* record, void* userdata);
    // False: that pair is not registered.
    bool removeCallbacks(const sp_playlistcontainer_callbacks* record, const void* userdata);

    // To be called for a line of the log, and when the log was lost. A line that this has seen
    // already is passed over; callbacks come from the events.
    void apply(const ListChange& change);
    void reload();

private:
    using Contents = ListContents<sp_playlist>;

    sp_playlistcontainer* handle();
    std::vector<ListEntry> read(ListStore& store) const;
    const Ref<sp_playlist>& handleOf(Contents::Place& place) const;
    void added(std::int64_t before, std::vector<ListEntry> entries);
    void removed(const std::vector<std::int64_t>& entries);
    void moved(const std::vector<std::int64_t>& numbers);
    // Has the callback called from the events.
    template <typename... Parameters, typename... Positions>
    void tell(void (*sp_playlistcontainer_callbacks::*callback)(Parameters...),
              const Ref<sp_playlist>& playlist,
              Positions... positions);

    // Constant after construction.
    const std::shared_ptr<Playlists> playlists;
    const ListRow row;
    const View view;

    Ref<sp_user> ownerHandle;
    std::int64_t contentsChange = 0;
    Contents contents;
    Listeners<sp_playlistcontainer_callbacks> callbacks;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_playlistcontainer final  // NOLINT(readability-identifier-naming)
    : sonolet::service::Playlistcontainer {
    using Playlistcontainer::Playlistcontainer;
};

#endif
