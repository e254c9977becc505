#ifndef SONOLET_SERVICE_ACCOUNTS_PLAYLIST_FILES_H
#define SONOLET_SERVICE_ACCOUNTS_PLAYLIST_FILES_H

#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "music/MusicFile.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// Makes playlists of the user "listener" of the playlist files in a folder of music.
//
// A file is taken again when what it leads to has changed; until then the playlist is the user's
// to change. When the file is gone the playlist leaves the user's container, and comes back with
// it. Entries are looked up in the catalogue, so nothing but the playlist files is opened.
//
// Threads: belongs to one, usually the scan's, once the catalogue is complete. Errors:
// DatabaseError; what is wrong with a file is one line of the log.
class PlaylistFiles final {
public:
    using Log = std::function<void(std::string line)>;

    // The catalogue and the accounts are opened here, as connections of this object's own. Borrows
    // the flag.
    PlaylistFiles(std::string musicFolder,
                  const std::string& catalogueFile,
                  const std::string& accountsFile,
                  Log logLine,
                  const StopFlag& stopFlag);

    // `files`: all there are, relative to the folder of music. Stops between two of them, and
    // leaves the playlist under way as it was, once the flag is set.
    void update(const std::vector<std::string>& files);

private:
    struct Wanted {
        std::string name;
        std::vector<Id> tracks;
        std::string digest;
    };

    // None: it is not to be a playlist, which was told.
    std::optional<Wanted> read(const std::string& file);
    std::optional<Id> track(const std::string& path);
    void take(const std::string& source, const Wanted& wanted);
    void lose(const ListStore::Source& source);
    void setTracks(const ListRow& list, const std::vector<Id>& tracks);

    // Constant after construction.
    const std::string music;
    const std::vector<std::string> roots;
    const Log log;
    const StopFlag& stop;

    Database catalogue;
    Accounts accounts;
    ListStore store;
    Statement findTrack;
    std::optional<ListRow> container;
};

}  // namespace sonolet::service

#endif
