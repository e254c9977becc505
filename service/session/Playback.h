#ifndef SONOLET_SERVICE_SESSION_PLAYBACK_H
#define SONOLET_SERVICE_SESSION_PLAYBACK_H

#include "faults/Faults.h"
#include "lists/Playlists.h"
#include "objects/Track.h"
#include "player/Player.h"
#include "session/Callbacks.h"
#include "source/Source.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// What the logged-in user hears: who may play what, whose turn it is to play, and which plays
// count.
//
// Threads: the operations belong to the session's owner. music_delivery and end_of_track are called
// on the player's thread; after load(), stop() and close() none of the earlier track follows.
// Units: milliseconds. Errors: numbers of the interface; what went wrong with a file is a line of
// the log.
class Playback final {
public:
    Playback(Callbacks& sessionCallbacks,
             std::shared_ptr<Playlists> sessionLists,
             std::shared_ptr<const Faults> shownFaults,
             Source& musicSource);

    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    // Paused at the track's start. What was loaded before is gone, whether this succeeds or not.
    sp_error load(Track& track);
    // Playing takes the account's token: other sessions that play for it stop. Without a track
    // SP_ERROR_NO_STREAM_AVAILABLE.
    sp_error play(bool on);
    // A place outside the track is SP_ERROR_INVALID_INDATA.
    sp_error seek(int offsetMs);
    // Opens what is likely to be loaded next, so that it starts at once.
    sp_error prefetch(Track& track);
    // Unloads.
    void stop();

    // Another session of the account plays: this one is paused and says so.
    void loseToken();
    // Looks whether that is so.
    void checkToken();
    bool isPlaying() const { return playing; }

    // Joins the player's thread. What has ended by then counts.
    void close();

private:
    PlayerEvents events();
    // The tracks that have ended by now.
    void countPlays();
    Accounts& accounts() const { return *lists->library()->accounts(); }
    const std::optional<Account>& account() const { return lists->account(); }
    std::string path(Track& track) const { return source.soundPath(track.path()); }
    sp_error playable(Track& track) const;

    // Constant after construction.
    Callbacks& callbacks;
    const std::shared_ptr<Playlists> lists;
    const std::shared_ptr<const Faults> faults;
    Source& source;
    const std::string token;  // names this session among those of an account

    // Before this the player's sound is still on its way.
    std::atomic<Faults::Clock::time_point> soundFrom{};

    // State below is the owner thread's.
    bool playing = false;
    bool begun = false;  // since it was loaded
    int loadedDurationMs = 0;

    // The track whose end the player may report; set once load() has returned.
    std::mutex loadedMutex;
    std::optional<Id> loaded;
    std::vector<Id> ended;  // not counted yet

    std::unique_ptr<Player> player;  // last: its thread uses the above
};

}  // namespace sonolet::service

#endif
