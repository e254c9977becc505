#ifndef SONOLET_SERVICE_SERVER_LIST_SYNC_H
#define SONOLET_SERVICE_SERVER_LIST_SYNC_H

#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "music/MusicFile.h"
#include "server/ListSender.h"
#include "server/SeenWriter.h"
#include "server/ServerStore.h"
#include "source/Source.h"
#include "store/Files.h"
#include "subsonic/Subsonic.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sonolet::service {

// Makes a user's playlists and stars the same here and at the server. How both were when they were
// the same is kept, so what either side has changed since is known, and goes to the other side; of
// a list that both have changed each side's changes are kept, of a name the one given here.
//
// Playlists of others that the server shows are read alone. Folders, the order of the playlists and
// what is said of entries stay here, since servers know nothing of them.
//
// Threads: belongs to one at a time. Errors: ServerError when nothing more can be learnt now, after
// which the next pass goes on; DatabaseError. What the server refuses for good is a line of the
// log, and the list is then as the server has it.
class ListSync final {
public:
    using Log = std::function<void(std::string line)>;

    // Borrows the client and the flag.
    ListSync(Subsonic& client,
             const std::string& storeFile,
             const Kept& kept,
             Account account,
             Log logLine,
             const StopFlag& stopFlag);

    // One pass over all lists. Waits for the server; the flag ends it between two lists. Does
    // nothing while another process is at it, unless that is to be waited for.
    void run(FileLock::Wait wait);
    // Whether something was changed here since the last pass began, or was not done in it.
    bool hasChanges();

private:
    using Base = ServerStore::Base;
    using Ids = std::vector<Id>;

    // A list on its way: what it is like at the server, and which it is here.
    struct Meeting {
        Id link;
        PlaylistItem theirs;
        std::string version;  // as the overview of all playlists says it
        bool isOwn = false;
        bool wasThere = false;  // in the user's container, before the server was asked for it
    };

    void agreePlaylists();
    // `readAnyway`: though nothing tells that either side has changed it.
    void agree(Meeting meeting, bool readAnyway);
    // Writes here first, in one transaction, and sends what the server lacks after it.
    void merge(const Meeting& meeting, std::optional<Base> base);
    // `known`: what the server had before, so that the new one is told from them.
    void publish(const ListRow& row, const std::vector<PlaylistItem>& known);
    // It is gone at the server: here too, unless it was changed here meanwhile.
    void lose(const Id& link);
    void agreeStars();

    Ids linksOf(const std::vector<SongItem>& songs);
    bool isOwn(const PlaylistItem& item) const;
    Base stateOf(const ListRow& row);
    bool isChanged(const ListRow& row, const Base& base);
    // What a list meets a refusal with is tried again; then the server's word counts.
    template <typename Action>
    void orRefused(const Id& list, Action action);
    bool isGivenUp(const Id& list);
    void sayOnce(const std::string& line);

    Subsonic& server;
    const Account user;
    const Log log;
    const StopFlag& stop;
    const std::string lockFile;

    Accounts accounts;
    ListStore lists;
    ServerStore links;
    ListSender sender;
    SeenWriter writer;
    const ListRow container;
    const ListRow starred;

    std::int64_t seen = -1;  // up to which line of the log all was done
    std::size_t turn = 0;    // whose playlist is read though nothing tells that it has changed
    std::map<Id, int> refusals;
    std::set<std::string> said;
};

}  // namespace sonolet::service

#endif
