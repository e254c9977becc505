#ifndef SONOLET_SERVICE_PLAYER_PLAYER_H
#define SONOLET_SERVICE_PLAYER_PLAYER_H

#include "music/MusicFile.h"

#include "libspotify/api.h"

#include <functional>
#include <memory>
#include <string>

namespace sonolet::service {

// Interleaved 16-bit samples in the machine's byte order; always 44,100 Hz and two channels.
struct AudioFormat {
    int sampleRate;
    int channels;
};

// What a player tells its owner. All are called on the player's own thread with no lock held, and
// none may call the player back. An empty member is not called.
struct PlayerEvents {
    // Answers how many of the frames were taken. What was refused is offered again.
    std::function<int(const AudioFormat&, const void* frames, int count)> deliver;
    // Once for each run to the end, after the last frame was taken.
    std::function<void()> endOfTrack;
    // The loaded track gives no more sound; `why` says what is missing or broken, and where.
    std::function<void(sp_error, std::string why)> streamingError;
    std::function<void(std::string line)> log;
};

// Opens what a path names, without waiting for its bytes. Throws UnreadableFile.
using OpenSound = std::function<std::shared_ptr<const Sound>(const std::string& path)>;

inline std::shared_ptr<const Sound> openMusicFile(const std::string& path) {
    return std::make_shared<const MusicFile>(path);
}

// Plays one file at a time: decodes it on a thread of its own and delivers it in blocks of 2,048
// frames (the last of a track is shorter), as fast as they are taken.
//
// Threads: the operations may be called from any thread but the player's own; the caller holds no
// lock that an event takes. When load() and unload() return, no event of the earlier track is in
// flight and none will follow. After seek() too, no frame from before the seek is delivered.
class Player final {
public:
    explicit Player(PlayerEvents events, OpenSound openSound = openMusicFile);

    // Stops within one event and joins the thread.
    ~Player();

    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Takes the file in, paused at its start. A file that cannot be read is refused here and
    // leaves nothing loaded; one that cannot be decoded ends in streamingError.
    sp_error load(const std::string& path);

    // Delivers or rests. After the end of a track nothing follows until seek() or load().
    sp_error play(bool on);

    // Goes on from `offsetMs`, playing or paused as before; behind the end lies the end of track.
    sp_error seek(int offsetMs);

    // Silent from here on; there need not be anything loaded.
    sp_error unload();

    // Opens the file that load() is likely to be given next, so that it starts at once.
    sp_error prefetch(const std::string& path);

private:
    class Engine;
    const std::unique_ptr<Engine> engine;
};

}  // namespace sonolet::service

#endif
